#include "compare/comparison_table.h"
#include "compare/scan_comparison.h"
#include "support/sanitizer.h"
#include "support/virtual_microscope.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <numeric>
#include <string>
#include <vector>

// A scan of the simulated microscope, held against what truly lies on the wafer.

namespace tessaro {
namespace {

// On the wafers of the seeds 1 to 10 all grains of all fields are single layers. Those of 150 um^2 or more
// score 36 to 49, smaller ones and parts of some that the border of a field cuts 25 and more.
constexpr float threshold = 35.0F;
constexpr std::int32_t rangeMm = 2;
constexpr std::int32_t originUm = 600;
constexpr double outOfFocusUm = 3.0;      // where the operator has left Z
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

/// What the link and the image files tell of every step is wanted only where a test fails.
class OutputKept {
public:
    OutputKept() {
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
    }
    ~OutputKept() {
        const std::string told =
            testing::internal::GetCapturedStdout() + testing::internal::GetCapturedStderr();
        if (testing::Test::HasFailure())
            std::fputs(told.c_str(), stdout);
    }
    OutputKept(const OutputKept&) = delete;
    OutputKept& operator=(const OutputKept&) = delete;
};

/// The program at the origin of a scan, with the settings of an operator who knows what flakes score.
class ScanOnTwin : public testing::TestWithParam<std::uint64_t> {
protected:
    ScanOnTwin()
        : wafer({.seed = GetParam(), .tiltUmPerUm = tilt}), microscope(wafer, SetUp(wafer, recorder)) {
        Globals& globals = *microscope.globals;
        recorder.globals = &globals;
        globals.grainTable = std::make_unique<GrainTable>();
        globals.settings.xRange = rangeMm;
        globals.settings.yRange = rangeMm;
        globals.settings.scoreThreshold = threshold;
        globals.scan.originX = originUm;
        globals.scan.originY = originUm;
        microscope.camera.noiseSeed = GetParam() * 100'000U;
    }

    static MicroscopeSetUp SetUp(const Wafer& wafer, FieldRecorder& recorder) {
        MicroscopeSetUp setUp;
        setUp.start = {originUm, originUm, wafer.FocusZ(originUm, originUm) + outOfFocusUm};
        setUp.limits = UsualLimitsAround(setUp.start);
        setUp.scanListener = &recorder;
        return setUp;
    }

    OutputKept output;
    const Wafer wafer;
    FieldRecorder recorder;
    VirtualMicroscope microscope;
};

TEST_P(ScanOnTwin, FindsNineOfTenSingleLayersAndHardlyAnythingElse) {
    microscope.services.scanRun.RunScan();
    ASSERT_EQ(recorder.ends, std::vector<ScanEnd>{ScanEnd::Completed});
    ASSERT_EQ(recorder.fields.size(), 30U) << "5 columns; 5 rows, and one that makes them even";

    const std::vector<TrueFlake> truth = TruthOf(wafer);
    const ScanComparison comparison = CompareScan(recorder.fields, truth);
    const std::string table = ComparisonTable({}, comparison, {}) + ComparisonList(comparison);
    // 30 fields of 0.16 mm^2 with some 9 a mm^2.
    EXPECT_GE(comparison.wanted.size(), 25U) << table;
    EXPECT_GE(comparison.Found(), 0.9 * static_cast<double>(comparison.wanted.size())) << table;
    EXPECT_LE(comparison.Wrong(), 0.1 * static_cast<double>(comparison.reported.size())) << table;
    EXPECT_EQ(comparison.Again(), 0) << table;
}

/// Three wafers, or as many as the variable says. With a sanitizer one takes as long as three without.
std::vector<std::uint64_t> Seeds() {
    const char* const wanted = std::getenv("TESSARO_SCAN_SEEDS");
    const std::uint64_t usual = addressSanitizer ? 1 : 3;
    std::vector<std::uint64_t> seeds(wanted != nullptr ? std::strtoull(wanted, nullptr, 10) : usual);
    std::iota(seeds.begin(), seeds.end(), std::uint64_t{1});
    return seeds;
}

INSTANTIATE_TEST_SUITE_P(Wafers, ScanOnTwin, testing::ValuesIn(Seeds()));

} // namespace
} // namespace tessaro
