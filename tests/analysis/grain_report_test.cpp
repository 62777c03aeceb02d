#include "analysis/candidates.h"
#include "analysis/decision.h"
#include "analysis/grain_report.h"
#include "analysis/grouping.h"
#include "support/analysis_fixture.h"

#include <memory>

namespace tessaro {
namespace {

TEST(ReportedGrains, AreThoseThatRefinementLeftByTheirNumbers) {
    const auto grains = std::make_unique<GrainTable>();
    const auto findings = std::make_unique<GrainFindings>();
    findings->groupCount = 3;
    grains->grains[1].count = 800;
    grains->grains[3].count = 16; // behind the last
    findings->reducedPixels = {60, 50, 40, 1};
    findings->edges.EdgeLeft[1] = {199, 5};
    findings->edges.EdgeRight[1] = {241, 6};
    findings->edges.EdgeMinRow[1] = {7, 20};
    findings->edges.EdgeMaxRow[1] = {8, 63};
    findings->scores[1] = 45.5F;
    findings->subScores[1].PR = -20.0F;
    findings->singleLayer[1] = 1;

    const std::vector<GrainReport> reports = ReportGrains(*grains, *findings);
    ASSERT_EQ(reports.size(), 1U);
    EXPECT_EQ(reports[0].grain, 1);
    EXPECT_EQ(reports[0].reducedPixels, 50);
    EXPECT_EQ(reports[0].pixels, 800);
    EXPECT_EQ(reports[0].left, 199);
    EXPECT_EQ(reports[0].right, 241);
    EXPECT_EQ(reports[0].minRow, 20);
    EXPECT_EQ(reports[0].maxRow, 63);
    EXPECT_EQ(reports[0].score, 45.5F);
    EXPECT_EQ(reports[0].subScores.PR, -20.0F);
    EXPECT_TRUE(reports[0].single);
}

TEST(CentreOfAGrain, IsTheMeanOfThePixelsMiddles) {
    const auto grain = std::make_unique<Grain>();
    grain->count = 3; // an L: its box's middle would be (12, 21)
    grain->pixels[0] = {10, 20};
    grain->pixels[1] = {10, 21};
    grain->pixels[2] = {13, 20};
    const auto [right, up] = GrainCentre(*grain);
    EXPECT_DOUBLE_EQ(right, 11.5);          // (10.5 + 10.5 + 13.5) / 3
    EXPECT_DOUBLE_EQ(up, 61.0 / 3.0 + 0.5); // (20.5 + 21.5 + 20.5) / 3
}

class DecidedGrain : public AnalysisFixture {};

TEST_F(DecidedGrain, HasItsPixelsBeforeAndAfterRefinement) {
    painter.Fill(substrate100);
    painter.Rectangle(200, 300, 40, 48, singleLayer100); // whole reduced pixels
    Measure();
    FindCandidates(field, false);
    RejectNoise(field.analyzer);
    GroupGrains(field);
    DecideSingleLayers(field);
    const std::vector<GrainReport> reports = ReportGrains(field.grains, field.findings);
    ASSERT_EQ(reports.size(), 1U);
    EXPECT_EQ(reports[0].reducedPixels, 10 * 12);
    EXPECT_EQ(reports[0].pixels, 40 * 48 - 4) << "corners have too few neighbours";
    const auto [right, up] = GrainCentre(field.grains.grains[0]);
    EXPECT_DOUBLE_EQ(right, 220.0);
    EXPECT_DOUBLE_EQ(up, 324.0);
}

} // namespace
} // namespace tessaro
