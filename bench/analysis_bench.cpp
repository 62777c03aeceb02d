#include "analysis/background_model.h"
#include "analysis/candidates.h"
#include "analysis/decision.h"
#include "analysis/field_analysis.h"
#include "analysis/frame_statistics.h"
#include "analysis/grouping.h"
#include "analysis/pixel_access.h"
#include "reference/plain_analysis.h"
#include "simulated_field/pattern_fields.h"
#include "simulated_field/random_field.h"
#include "simulated_field/simulated_field.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <numeric>
#include <random>
#include <string>

// Speed of the analysis on one core. Every program figure ("fast") has the plain transcription's ("plain")
// beside it; one read of the frame's bytes gives the scale.

namespace tessaro {
namespace {

FrameBuffer DrawnField(int singleLayers, int otherFlakes) {
    FrameBuffer frame;
    DrawField(RandomField(1, singleLayers, otherFlakes), 1, frame);
    return frame;
}

void PaintBlock(FrameBuffer& frame, int x4, int y4) {
    for (int y = reduction * y4; y < reduction * (y4 + 1); ++y) {
        for (int x = reduction * x4; x < reduction * (x4 + 1); ++x)
            frame.SetPixel(x, y, patternMatch[red], patternMatch[green], patternMatch[blue]);
    }
}

/// Grains with few pixels in large boxes and many edges: chains of 2 x 2 blocks that climb diagonally.
FrameBuffer DiagonalChains(int links, int pitchBlocks) {
    FrameBuffer frame = EvenField();
    for (int y4 = 2; y4 + 2 * links < reducedHeight - 2; y4 += 2 * links + 2) {
        for (int x4 = 27; x4 + 2 * links < reducedWidth - 27; x4 += pitchBlocks) {
            for (int link = 0; link < links; ++link) {
                for (int block = 0; block < 4; ++block)
                    PaintBlock(frame, x4 + 2 * link + block % 2, y4 + 2 * link + block / 2);
            }
        }
    }
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
        {"297 squares", [] { return GridOfSquares(297); }},
        {"two blobs at the limit", [] { return HugeBlobs(); }},
        {"two blobs beyond the list", [] { return HugeBlobs(maximumBlobSideBlocks); }},
        {"diagonal chains", [] { return DiagonalChains(16, 5); }},
        {"short diagonal chains", [] { return DiagonalChains(10, 7); }},
        {"speckle 10 %", [] { return SpeckleField(1, 0.10); }},
        {"speckle 30 %", [] { return SpeckleField(1, 0.30); }},
        {"speckle 38 %", [] { return SpeckleField(1, 0.38); }},
    };
    return scenes;
}

void AnalyseFast(FieldAnalysis& field) {
    ComputeFrameStatistics(field.frame, field.frame, field.measured);
    FindCandidates(field, false);
    RejectNoise(field.analyzer);
    GroupGrains(field);
    benchmark::DoNotOptimize(DecideSingleLayers(field));
}

void AnalysePlain(reference::PlainAnalysis& plain) {
    reference::ComputeFrameStatistics(plain, plain.frame);
    reference::FindCandidates(plain, false);
    reference::RejectNoise(plain);
    reference::GroupCandidates(plain, plain.analyzer.candidates.data(), plain.analyzer.candidateCount,
                               plain.grains, plain.findings.groupCount,
                               reference::MinimumReducedPixels(plain.settings.minimumFlakeArea),
                               maximumGrainPixels);
    reference::ComputeGrainEdges(plain.grains, plain.findings.groupCount, plain.findings.edges);
    benchmark::DoNotOptimize(reference::DecideSingleLayers(plain));
}

void CountScene(benchmark::State& state, const FlakeAnalyzer& analyzer, const GrainFindings& findings) {
    state.counters["candidates"] = analyzer.candidateCount;
    state.counters["groups"] = findings.groupCount;
}

void FieldFast(benchmark::State& state, const Scene& scene) {
    const FrameBuffer frame = scene.make();
    const Settings settings;
    const auto memory = std::make_unique<AnalysisMemory>();
    FieldAnalysis field = memory->Bind(settings);
    field.frame.pixels = frame.Data();
    for (auto _ : state)
        AnalyseFast(field);
    CountScene(state, field.analyzer, field.findings);
}

void FieldPlain(benchmark::State& state, const Scene& scene) {
    const FrameBuffer frame = scene.make();
    const auto plain = std::make_unique<reference::PlainAnalysis>();
    plain->frame.pixels = frame.Data();
    for (auto _ : state)
        AnalysePlain(*plain);
    CountScene(state, plain->analyzer, plain->findings);
}

void StatisticsFast(benchmark::State& state) {
    const FrameBuffer frame = DrawnField(40, 0);
    const auto memory = std::make_unique<AnalysisMemory>();
    memory->frame.pixels = frame.Data();
    for (auto _ : state)
        ComputeFrameStatistics(memory->frame, memory->frame, memory->measured);
}

void StatisticsPlain(benchmark::State& state) {
    const FrameBuffer frame = DrawnField(40, 0);
    const auto plain = std::make_unique<reference::PlainAnalysis>();
    plain->frame.pixels = frame.Data();
    for (auto _ : state)
        reference::ComputeFrameStatistics(*plain, plain->frame);
}

/// What a background is made of: a dome with its top at (7, 9) that is `fall` lower at 10 blocks from there,
/// and noise.
struct Light {
    const char* name;
    double fall;
    int noise;
};

constexpr Light lights[] = {
    {"flat", 0, 0}, {"flat and noisy", 0, 3}, {"vignetted", 8, 0}, {"vignetted and noisy", 8, 3}};

void Illuminate(const Light& light, BackgroundGrid& background, FrameRecord& frame) {
    std::mt19937 random(1);
    for (int channel = 0; channel < channelCount; ++channel) {
        frame.bgPeak[static_cast<std::size_t>(channel)] = 150;
        for (int gx = 0; gx < gridSize; ++gx) {
            for (int gy = 0; gy < gridSize; ++gy) {
                const int distance = (gx - 7) * (gx - 7) + (gy - 9) * (gy - 9);
                const auto noise = static_cast<int>(random() % static_cast<unsigned>(2 * light.noise + 1));
                const double value = 150 - light.fall * distance / 100 + noise - light.noise;
                background.SetMeasured(channel, gx, gy, static_cast<float>(std::trunc(value)));
            }
        }
    }
}

void FitFast(benchmark::State& state, const Light& light) {
    const auto memory = std::make_unique<AnalysisMemory>();
    Illuminate(light, memory->measured.background, memory->frame);
    for (auto _ : state) {
        ResetBackgroundModel(memory->analyzer.backgroundModel, memory->frame);
        for (int sweep = 0; sweep < 3; ++sweep)
            FitBackgroundModel(memory->analyzer.backgroundModel, memory->measured.background);
    }
}

void FitPlain(benchmark::State& state, const Light& light) {
    const auto plain = std::make_unique<reference::PlainAnalysis>();
    Illuminate(light, plain->measured.background, plain->frame);
    for (auto _ : state) {
        reference::ResetBackgroundModel(*plain);
        for (int sweep = 0; sweep < 3; ++sweep)
            reference::FitBackgroundModel(*plain);
    }
}

void ReadFrame(benchmark::State& state) {
    const FrameBuffer frame = DrawnField(0, 0);
    for (auto _ : state) {
        const auto* words = reinterpret_cast<const std::uint32_t*>(frame.Data());
        benchmark::DoNotOptimize(std::accumulate(words, words + framePixelCount, std::uint32_t{0}));
    }
}

} // namespace
} // namespace tessaro

int main(int argc, char** argv) {
    using namespace tessaro;
    const auto add = [](const std::string& name, auto run) {
        benchmark::RegisterBenchmark(name.c_str(), run)->Unit(benchmark::kMillisecond);
    };
    add("read the frame once", ReadFrame);
    add("ComputeFrameStatistics fast", StatisticsFast);
    add("ComputeFrameStatistics plain", StatisticsPlain);
    for (const Light& light : lights) {
        const std::string name = std::string("reset and three sweeps of FitBackgroundModel, ") + light.name;
        add(name + " fast", [&light](benchmark::State& state) { FitFast(state, light); });
        add(name + " plain", [&light](benchmark::State& state) { FitPlain(state, light); });
    }
    for (const Scene& scene : Scenes()) {
        add("field, " + scene.name + " fast", [&scene](benchmark::State& state) { FieldFast(state, scene); });
        add("field, " + scene.name + " plain",
            [&scene](benchmark::State& state) { FieldPlain(state, scene); });
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
