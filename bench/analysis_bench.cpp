#include "analysis/candidates.h"
#include "analysis/decision.h"
#include "analysis/detection.h"
#include "analysis/field_analysis.h"
#include "analysis/frame_statistics.h"
#include "analysis/grouping.h"
#include "analysis/pixel_access.h"
#include "reference/plain_analysis.h"
#include "simulated_field/pattern_fields.h"
#include "simulated_field/random_field.h"
#include "simulated_field/simulated_field.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <numeric>
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
                               reference::MinimumPixels(plain.settings.minimumFlakeArea), maximumGrainPixels);
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
