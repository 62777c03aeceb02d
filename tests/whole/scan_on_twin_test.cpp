#include "compare/scan_comparison.h"
#include "support/virtual_microscope.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <vector>

// A scan of the simulated microscope, held against what truly lies on the wafer.

namespace tessaro {
namespace {

constexpr float threshold = 35.0F;
constexpr std::int32_t rangeMm = 2;
constexpr std::int32_t originUm = 600;
constexpr Vertex tilt = {0.002, -0.0015}; // um of Z per um

/// Keeps what every field showed, as the program's own report would.
class FieldRecorder : public ScanListener {
public:
    void ScanBegins() override {}
    void FieldFinished(const ScannedField& field) override {
        ReportedField kept;
        kept.field = static_cast<int>(fields.size()) + 1;
        kept.row = field.row;
        kept.column = field.column;
        kept.position = {field.position[0], field.position[1]};
        for (int g = 0; g < globals->findings.groupCount; ++g)
            if (globals->grainTable->grains[static_cast<std::size_t>(g)].count > 0)
                kept.grains.push_back(GrainOf(static_cast<std::size_t>(g), kept.position));
        for (const ReportedGrain& grain : kept.grains)
            kept.found += grain.single ? 1 : 0;
        fields.push_back(kept);
    }
    void ScanEnds(ScanEnd why) override { ends.push_back(why); }

    const Globals* globals = nullptr;
    std::vector<ReportedField> fields;
    std::vector<ScanEnd> ends;

private:
    ReportedGrain GrainOf(std::size_t g, Vertex position) const {
        const GrainFindings& findings = globals->findings;
        ReportedGrain grain;
        grain.box = {findings.edges.EdgeLeft[g].x, findings.edges.EdgeRight[g].x,
                     findings.edges.EdgeMinRow[g].y, findings.edges.EdgeMaxRow[g].y};
        const Vertex middle = {(grain.box.left + grain.box.right + 1) / 2.0,
                               (grain.box.minRow + grain.box.maxRow + 1) / 2.0};
        grain.centre = {position.x + (middle.x - frameWidth / 2.0) / framePixelsPerUm,
                        position.y + (middle.y - frameHeight / 2.0) / framePixelsPerUm};
        grain.pixels = globals->grainTable->grains[g].count;
        grain.score = static_cast<double>(findings.scores[g]);
        grain.single = findings.singleLayer[g] == 1;
        return grain;
    }
};

std::vector<TrueFlake> TruthOf(const Wafer& wafer) {
    std::vector<TrueFlake> flakes;
    for (const WaferFlake& flake : wafer.Flakes())
        flakes.push_back({flake.layers, flake.AreaUm2(), OutlineCentre(flake.outline), flake.outline});
    return flakes;
}

class ScanOnTwin : public testing::TestWithParam<std::uint64_t> {
protected:
    ScanOnTwin() { testing::internal::CaptureStdout(); }
    ~ScanOnTwin() override {
        const std::string told = testing::internal::GetCapturedStdout();
        if (HasFailure())
            std::fputs(told.c_str(), stdout);
    }
};

TEST_P(ScanOnTwin, FindsNineOfTenSingleLayersAndHardlyAnythingElse) {
    const Wafer wafer({.seed = GetParam(), .tiltUmPerUm = tilt});
    const std::vector<TrueFlake> truth = TruthOf(wafer);
    FieldRecorder recorder;
    MicroscopeSetUp setUp;
    setUp.start = {originUm, originUm, wafer.FocusZ(originUm, originUm) + 3.0};
    setUp.limits = UsualLimitsAround(setUp.start);
    setUp.scanListener = &recorder;
    VirtualMicroscope microscope(wafer, setUp);
    recorder.globals = microscope.globals.get();
    microscope.camera.noiseSeed = GetParam() * 100'000U;
    Settings& settings = microscope.globals->settings;
    settings.xRange = rangeMm;
    settings.yRange = rangeMm;
    settings.scoreThreshold = threshold;
    microscope.globals->scan.originX = originUm;
    microscope.globals->scan.originY = originUm;
    microscope.globals->grainTable = std::make_unique<GrainTable>();

    microscope.services.scanRun.RunScan();

    ASSERT_EQ(recorder.ends, std::vector<ScanEnd>{ScanEnd::Completed});
    EXPECT_EQ(recorder.fields.size(), 30U) << "5 columns, and 5 rows with the one that makes them even";
    const ScanComparison comparison = CompareScan(recorder.fields, truth);
    std::fprintf(stderr, "seed %d: found %d of %zu, wrong %d of %zu, again %d, tilt %.5f %.5f, z %d %d %d (true %.2f %.2f %.2f), %.1f s\n",
                 (int)GetParam(), comparison.Found(), comparison.wanted.size(), comparison.Wrong(), comparison.reported.size(),
                 comparison.Again(), microscope.globals->focusControl.xTilt, microscope.globals->focusControl.yTilt,
                 microscope.globals->scan.zOrigin, microscope.globals->scan.zXmax, microscope.globals->scan.zYmax,
                 wafer.FocusZ(600,600), wafer.FocusZ(2600,600), wafer.FocusZ(600,2600), static_cast<double>(microscope.ui.clock.now)/1000.0);
    for (auto& w : comparison.wanted) std::fprintf(stderr, "  S %.1f %s grains %d area %.0f\n", w.bestScore, w.found ? "" : "MISS", w.grains, w.flake.areaUm2);
    for (auto& f : recorder.fields) for (auto& g : f.grains) {
        const TrueFlake* t = nullptr;
        for (auto& x : truth) if (SignedDistance(g.centre, x.outline) < 3) t = &x;
        if (!t || t->layers != 1) std::fprintf(stderr, "  O %.1f layers %d px %d\n", g.score, t ? t->layers : 0, g.pixels);
    }
    EXPECT_GE(comparison.Found(), 0.9 * static_cast<double>(comparison.wanted.size()));
    EXPECT_LE(comparison.Wrong(), 0.1 * static_cast<double>(comparison.reported.size()));
    EXPECT_EQ(comparison.Again(), 0);
}

INSTANTIATE_TEST_SUITE_P(Seeds, ScanOnTwin, testing::Values(1U, 2U, 3U));

} // namespace
} // namespace tessaro
