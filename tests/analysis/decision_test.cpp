#include "analysis/candidates.h"
#include "analysis/decision.h"
#include "analysis/grouping.h"
#include "support/analysis_fixture.h"

#include <cmath>
#include <limits>

namespace tessaro {
namespace {

class Decision : public AnalysisFixture {
protected:
    Decision() {
        painter.Fill(substrate100);
        settings.scoreThreshold = 60;
    }

    /// Everything up to the decision, as at a field of a scan.
    void Prepare() {
        Measure();
        FindCandidates(field, false);
        RejectNoise(field.analyzer);
        GroupGrains(field);
    }

    int Decide() {
        Prepare();
        return DecideSingleLayers(field);
    }
};

TEST_F(Decision, OfAFieldWithoutGrainsFindsNothing) {
    EXPECT_EQ(Decide(), 0);
    EXPECT_TRUE(surface.calls.empty());
    EXPECT_TRUE(status.lines.empty());
}

TEST_F(Decision, CountsAFlakeThatReachesTheThreshold) {
    painter.Rectangle(200, 200, 40, 40, singleLayer100);
    EXPECT_EQ(Decide(), 1);
    EXPECT_EQ(field.findings.singleLayer[0], 1);
    EXPECT_EQ(field.findings.totalFound, 1);
    EXPECT_EQ(status.lines, (std::vector<std::string>{"total 1", "1 single layer detected!"}));
}

TEST_F(Decision, CountsAScoreOfExactlyTheThreshold) {
    painter.Rectangle(200, 200, 40, 40, singleLayer100);
    Decide();
    settings.scoreThreshold = field.findings.scores[0];
    EXPECT_EQ(Decide(), 1);
}

TEST_F(Decision, LeavesOutAFlakeBelowTheThresholdButLabelsIt) {
    settings.scoreThreshold = 70;
    painter.Rectangle(200, 200, 40, 40, singleLayer100);
    field.findings.singleLayer[0] = 1;
    EXPECT_EQ(Decide(), 0);
    EXPECT_EQ(field.findings.singleLayer[0], 0);
    EXPECT_TRUE(status.lines.empty());
    EXPECT_EQ(surface.All<RecordingSurface::Text>().size(), 5U);
    EXPECT_TRUE(surface.All<RecordingSurface::Frame>().empty());
}

TEST_F(Decision, AddsOneThenTwoToTheTotalForTwoFlakesInOneField) {
    painter.Rectangle(200, 200, 40, 40, singleLayer100);
    painter.Rectangle(400, 400, 40, 40, singleLayer100);
    EXPECT_EQ(Decide(), 2);
    EXPECT_EQ(field.findings.totalFound, 3);
    EXPECT_EQ(status.lines, (std::vector<std::string>{"total 1", "1 single layer detected!", "total 3",
                                                      "2 single layer detected!"}));
    EXPECT_EQ(Decide(), 2);
    EXPECT_EQ(field.findings.totalFound, 6) << "the total only grows";
}

TEST_F(Decision, KeepsTheTotalAtTheLargestNumberThereIs) {
    constexpr std::int32_t largest = std::numeric_limits<std::int32_t>::max();
    painter.Rectangle(200, 200, 40, 40, singleLayer100);
    painter.Rectangle(400, 400, 40, 40, singleLayer100);
    field.findings.totalFound = largest - 2; // plus 1, plus 2
    EXPECT_EQ(Decide(), 2);
    EXPECT_EQ(field.findings.totalFound, largest);
    EXPECT_EQ(Decide(), 2);
    EXPECT_EQ(field.findings.totalFound, largest);
}

TEST_F(Decision, FramesTheFlakeInRedAtFullResolution) {
    painter.Rectangle(200, 200, 40, 40, singleLayer100);
    Decide();
    EXPECT_EQ(field.findings.edges.EdgeLeft[0].x, 199);
    EXPECT_EQ(field.findings.edges.EdgeRight[0].x, 241);
    EXPECT_EQ(field.findings.edges.EdgeMinRow[0].y, 199);
    EXPECT_EQ(field.findings.edges.EdgeMaxRow[0].y, 241);
    const auto frames = surface.All<RecordingSurface::Frame>();
    ASSERT_EQ(frames.size(), 1U);
    EXPECT_EQ(frames[0], (RecordingSurface::Frame{{199, 829, 241, 787}, 2, pureRed}));
}

TEST_F(Decision, WritesTheScoreAboveTheFlake) {
    painter.Rectangle(200, 200, 40, 40, singleLayer100);
    Decide();
    const auto texts = surface.All<RecordingSurface::Text>();
    ASSERT_EQ(texts.size(), 5U);
    // Middle of 199 and 241; 14 rows above 1028 - 241.
    EXPECT_EQ(texts[4],
              (RecordingSurface::Text{"Score:62", {210, 773, 230, 773}, TextAlignment::Centre, black}));
}

TEST_F(Decision, SkipsGrainsThatRefinementEmpties) {
    painter.Rectangle(200, 200, 26, 24, singleLayer100); // 42 reduced pixels, too few at full resolution
    Prepare();
    ASSERT_EQ(GrainAt(0).count, 42);
    EXPECT_EQ(DecideSingleLayers(field), 0);
    EXPECT_EQ(GrainAt(0).count, 0);
    EXPECT_TRUE(surface.calls.empty());
}

TEST_F(Decision, SkipsEmptyGrainsAndClearsTheirFlags) {
    painter.Rectangle(200, 200, 12, 12, singleLayer100); // emptied by the size filter
    painter.Rectangle(400, 400, 40, 40, singleLayer100);
    field.findings.singleLayer[0] = 1;
    EXPECT_EQ(Decide(), 1);
    EXPECT_EQ(field.findings.groupCount, 2);
    EXPECT_EQ(field.findings.singleLayer[0], 0);
    EXPECT_EQ(field.findings.singleLayer[1], 1);
}

TEST_F(Decision, NeverCountsAScoreThatIsNoNumber) {
    settings.scoreThreshold = -1e30F;
    settings.minimumFlakeArea = 0;
    painter.Rectangle(200, 200, 40, 40, singleLayer100);
    Prepare();
    field.measured.background.SetMeasured(2, 2, 3, 0.0F); // blue of the flake's block: 0 / 0 inside the sums
    painter.Rectangle(190, 190, 60, 60, {88, 92, 0});
    settings.targetContrast = {-12, -8, -100};
    EXPECT_EQ(DecideSingleLayers(field), 0);
    EXPECT_TRUE(std::isnan(field.findings.scores[0]));
}

TEST_F(Decision, LooksAtTheFramesCornerAnewInEachField) {
    painter.Rectangle(200, 200, 40, 40, singleLayer100);
    Decide();
    EXPECT_EQ(field.findings.subScores[0].PR, -20.0F);
    painter.Rectangle(4, 4, 40, 40, singleLayer100); // in the margin, so that it is no candidate itself
    Decide();
    EXPECT_GT(field.findings.subScores[0].PR, 15.0F);
}

TEST_F(Decision, RunTwiceFindsNothingBecauseThePixelsAreThoseOfTheFrameByThen) {
    painter.Rectangle(200, 200, 40, 40, singleLayer100);
    EXPECT_EQ(Decide(), 1);
    EXPECT_EQ(DecideSingleLayers(field), 0);
    EXPECT_EQ(DecideSingleLayers(field), 0);
    EXPECT_EQ(field.findings.totalFound, 1);
}

TEST_F(Decision, IsTheSameWithNothingToDrawOnAndNobodyToTell) {
    painter.Rectangle(200, 200, 40, 40, singleLayer100);
    Decide();
    const float score = field.findings.scores[0];
    field.surface = nullptr;
    field.status = nullptr;
    EXPECT_EQ(Decide(), 1);
    EXPECT_EQ(field.findings.scores[0], score);
}

} // namespace
} // namespace tessaro
