#include "camera/bayer_reduction.h"
#include "camera/exposure_mean.h"
#include "camera/frame_grabber.h"
#include "camera/test_pattern.h"
#include "platform/fake/virtual_clock.h"
#include "reference/plain_camera.h"

#include <benchmark/benchmark.h>

#include <memory>
#include <numeric>
#include <random>
#include <string>
#include <vector>

// Speed of taking a frame on one core, from images that are there already. Every program figure ("fast") has
// the plain transcription's ("plain") beside it; one read of the same exposures' bytes gives the scale.

namespace tessaro {
namespace {

std::vector<std::vector<std::uint8_t>> Exposures(int count) {
    std::mt19937 random(1);
    std::vector<std::vector<std::uint8_t>> exposures;
    for (int k = 0; k < count; ++k) {
        std::vector<std::uint8_t>& samples = exposures.emplace_back(sensorByteCount);
        for (std::uint8_t& sample : samples)
            sample = static_cast<std::uint8_t>(random());
    }
    return exposures;
}

constexpr int bufferCount = 10; // as a camera has, more than a cache holds

/// Images without end, at no cost, in one buffer after another.
class EndlessCamera : public CameraDevice {
public:
    void Open() override {}
    bool IsOpen() const override { return true; }
    bool IsReadable(std::string_view) override { return false; }
    bool IsWritable(std::string_view) override { return false; }
    std::string GetEnumeration(std::string_view) override { throw CameraError("none"); }
    void SetEnumeration(std::string_view, std::string_view) override { throw CameraError("none"); }
    std::vector<std::string> SettableValues(std::string_view) override { throw CameraError("none"); }
    double GetFloat(std::string_view) override { throw CameraError("none"); }
    void SetFloat(std::string_view, double) override { throw CameraError("none"); }
    std::int64_t GetInteger(std::string_view) override { throw CameraError("none"); }
    void SetInteger(std::string_view, std::int64_t) override { throw CameraError("none"); }
    IntegerRange GetIntegerRange(std::string_view) override { throw CameraError("none"); }
    void SetBoolean(std::string_view, bool) override { throw CameraError("none"); }
    void SetMaxNumBuffer(int) override {}
    void StartGrabbing(int) override {}
    bool IsGrabbing() const override { return true; }
    GrabResult RetrieveResult(std::uint32_t) override {
        return {
            {true, sensorWidth, sensorHeight, m_exposures[m_next++ % m_exposures.size()]}, nullptr, nullptr};
    }
    GrabResult GrabOne(std::uint32_t timeoutMilliseconds) override {
        return RetrieveResult(timeoutMilliseconds);
    }
    void RegisterConfiguration(Acquisition) override {}

private:
    std::vector<std::vector<std::uint8_t>> m_exposures = Exposures(bufferCount);
    std::size_t m_next = 0;
};

void GrabFast(benchmark::State& state, int frames) {
    const auto session = std::make_unique<CameraSession>();
    session->camera = std::make_unique<EndlessCamera>();
    VirtualClock clock;
    for (auto _ : state) {
        FrameGrabber(*session, clock, frames).Grab();
        benchmark::DoNotOptimize(session->workingFrame.Data());
    }
}

void GrabPlain(benchmark::State& state, int frames) {
    const auto plain = std::make_unique<reference::PlainCamera>();
    EndlessCamera camera;
    plain->camera = &camera;
    plain->present = 1;
    VirtualClock clock;
    for (auto _ : state) {
        plain->GrabFrame(frames, clock);
        benchmark::DoNotOptimize(plain->working.data());
    }
}

void ConvertFast(benchmark::State& state) {
    const auto session = std::make_unique<CameraSession>();
    session->rawFrame = Exposures(1).front();
    for (auto _ : state)
        ConvertBayerFrame(*session, session->rawFrame.data(), session->convertedFrame.Data());
}

void ConvertPlain(benchmark::State& state) {
    const auto plain = std::make_unique<reference::PlainCamera>();
    plain->raw = Exposures(1).front();
    for (auto _ : state)
        plain->ConvertBayerFrame();
}

void TestPatternFast(benchmark::State& state) {
    const auto session = std::make_unique<CameraSession>();
    for (auto _ : state)
        DrawTestPattern(*session);
}

void TestPatternPlain(benchmark::State& state) {
    const auto plain = std::make_unique<reference::PlainCamera>();
    VirtualClock clock;
    for (auto _ : state)
        plain->GrabFrame(1, clock);
}

void ReadExposures(benchmark::State& state, int frames) {
    const auto buffers = Exposures(bufferCount);
    std::size_t next = 0;
    for (auto _ : state) {
        for (int k = 0; k < frames; ++k) {
            const auto& samples = buffers[next++ % buffers.size()];
            const auto* words = reinterpret_cast<const std::uint32_t*>(samples.data());
            benchmark::DoNotOptimize(std::accumulate(words, words + sensorByteCount / 4, std::uint32_t{0}));
        }
    }
}

} // namespace
} // namespace tessaro

int main(int argc, char** argv) {
    using namespace tessaro;
    const auto add = [](const std::string& name, auto run) {
        benchmark::RegisterBenchmark(name.c_str(), run)->Unit(benchmark::kMillisecond);
    };
    for (const int frames : {1, 4}) {
        const std::string exposures = std::to_string(frames) + (frames == 1 ? " exposure" : " exposures");
        add("read " + exposures + " once",
            [frames](benchmark::State& state) { ReadExposures(state, frames); });
        add("frame of " + exposures + " fast",
            [frames](benchmark::State& state) { GrabFast(state, frames); });
        add("frame of " + exposures + " plain",
            [frames](benchmark::State& state) { GrabPlain(state, frames); });
    }
    add("ConvertBayerFrame fast", ConvertFast);
    add("ConvertBayerFrame plain", ConvertPlain);
    add("test pattern fast", TestPatternFast);
    add("test pattern plain", TestPatternPlain);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
