#include "app/program_windows.h"
#include "app/resource_ids.h"
#include "app/status_lines.h"
#include "focus/focus_measures.h"
#include "focus/focus_meter.h"
#include "platform/fake/fake_user_interface.h"
#include "reference/plain_analysis.h"
#include "reference/plain_focus.h"
#include "simulated_field/pattern_fields.h"
#include "simulated_field/random_field.h"
#include "simulated_field/simulated_field.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <numeric>
#include <string>
#include <vector>

// Speed of the focus measures on one core. Every program figure ("fast") has the plain transcription's
// ("plain") beside it; one read of the same bytes gives the scale.

namespace tessaro {
namespace {

FrameBuffer DrawnField(int singleLayers, int otherFlakes) {
    FrameBuffer frame;
    DrawField(RandomField(1, singleLayers, otherFlakes), 1, frame);
    return frame;
}

struct Scene {
    std::string name;
    std::function<FrameBuffer()> make;
};

const std::vector<Scene>& Scenes() {
    static const std::vector<Scene> scenes = {
        {"quiet", [] { return DrawnField(0, 0); }},
        {"40 flakes", [] { return DrawnField(40, 0); }},
        {"speckle 30 %", [] { return SpeckleField(1, 0.30); }},
    };
    return scenes;
}

/// The meter with an open panel.
class MeasuredField {
public:
    explicit MeasuredField(const Scene& scene) : m_pixels(scene.make()) {
        m_frame.pixels = m_pixels.Data();
        m_windows.controlPanel =
            m_dialogs.CreateModeless(resource::controlPanel, WindowHandle::None, m_silent);
    }

    float Score() {
        m_dialogs.textsSet.clear();
        return m_meter.FocusScore(m_frame);
    }

    float Update() {
        m_dialogs.textsSet.clear();
        m_meter.UpdateFocusMeasures(m_frame);
        return m_focusValue;
    }

    const ReducedImage& Measure() {
        Score();
        return m_measured->reduced;
    }

private:
    class SilentDialog : public DialogProcedure {
    public:
        void Initialize(WindowHandle) override {}
        void Command(WindowHandle, int, Notification) override {}
    };

    FrameBuffer m_pixels;
    FrameRecord m_frame;
    std::unique_ptr<FrameMeasurements> m_measured = std::make_unique<FrameMeasurements>();
    float m_focusValue = 10.0F;
    SilentDialog m_silent;
    FakeDialogs m_dialogs;
    ProgramWindows m_windows;
    StageLink m_stage;
    ShownPosition m_shown;
    StatusLines m_status{m_dialogs, m_windows, m_stage, m_shown};
    FocusMeter m_meter{*m_measured, m_focusValue, m_status};
};

void ScoreFast(benchmark::State& state, const Scene& scene) {
    MeasuredField field(scene);
    for (auto _ : state)
        benchmark::DoNotOptimize(field.Score());
    state.counters["score"] = static_cast<double>(field.Score());
}

void UpdateFast(benchmark::State& state, const Scene& scene) {
    MeasuredField field(scene);
    for (auto _ : state)
        benchmark::DoNotOptimize(field.Update());
    state.counters["focus"] = static_cast<double>(field.Update());
}

/// The statistics pass of the transcription and what is measured after it.
template<typename Measure>
void AfterPlainStatistics(benchmark::State& state, const Scene& scene, Measure measure) {
    const FrameBuffer frame = scene.make();
    const auto plain = std::make_unique<reference::PlainAnalysis>();
    plain->frame.pixels = frame.Data();
    for (auto _ : state) {
        reference::ComputeFrameStatistics(*plain, plain->frame);
        benchmark::DoNotOptimize(measure(plain->measured.reduced.Plane(0)));
    }
}

/// One measure of the first plane.
template<typename Measure>
void OfPlane(benchmark::State& state, const Scene& scene, Measure measure) {
    MeasuredField field(scene);
    const float* plane = field.Measure().Plane(0);
    for (auto _ : state) {
        benchmark::DoNotOptimize(plane);
        benchmark::ClobberMemory();
        benchmark::DoNotOptimize(measure(plane));
    }
}

std::uint32_t SumOfWords(const void* bytes, int count) {
    const auto* words = static_cast<const std::uint32_t*>(bytes);
    return std::accumulate(words, words + count, std::uint32_t{0});
}

void ReadFrame(benchmark::State& state) {
    const FrameBuffer frame = DrawnField(0, 0);
    for (auto _ : state)
        benchmark::DoNotOptimize(SumOfWords(frame.Data(), framePixelCount));
}

void AddFrameMeasures(const Scene& scene) {
    const auto add = [&scene](const std::string& name, auto run) {
        benchmark::RegisterBenchmark((name + ", " + scene.name).c_str(), [&scene,
                                                                          run](benchmark::State& state) {
            run(state, scene);
        })->Unit(benchmark::kMillisecond);
    };
    add("FocusScore fast", ScoreFast);
    add("FocusScore plain", [](benchmark::State& state, const Scene& drawn) {
        AfterPlainStatistics(state, drawn, reference::MeasureScore);
    });
    add("UpdateFocusMeasures fast", UpdateFast);
    add("UpdateFocusMeasures plain", [](benchmark::State& state, const Scene& drawn) {
        AfterPlainStatistics(state, drawn, reference::MeasurePlanes);
    });
}

void AddPlaneMeasures(const Scene& scene) {
    const auto add = [&scene](const std::string& name, auto measure) {
        benchmark::RegisterBenchmark((name + ", " + scene.name).c_str(), [&scene,
                                                                          measure](benchmark::State& state) {
            OfPlane(state, scene, measure);
        })->Unit(benchmark::kMicrosecond);
    };
    add("PlaneDeviation fast", PlaneDeviation);
    add("PlaneDeviation plain", reference::PlaneDeviation);
    for (const int distance : {1, 5}) {
        const std::string name = "PlaneLaplacian at " + std::to_string(distance);
        add(name + " fast", [distance](const float* plane) { return PlaneLaplacian(plane, distance); });
        add(name + " plain",
            [distance](const float* plane) { return reference::PlaneLaplacian(plane, distance); });
    }
    add("read the plane once", [](const float* plane) { return SumOfWords(plane, reducedPixelCount); });
}

} // namespace
} // namespace tessaro

int main(int argc, char** argv) {
    using namespace tessaro;
    benchmark::RegisterBenchmark("read the frame once", ReadFrame)->Unit(benchmark::kMillisecond);
    for (const Scene& scene : Scenes()) {
        AddFrameMeasures(scene);
        AddPlaneMeasures(scene);
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
