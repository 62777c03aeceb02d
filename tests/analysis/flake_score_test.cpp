#include "analysis/flake_score.h"
#include "analysis/grain_edges.h"
#include "support/analysis_fixture.h"

#include <cmath>
#include <limits>
#include <string>

namespace tessaro {
namespace {

using Rgb = FramePainter::Rgb;

class Scoring : public AnalysisFixture {
protected:
    Scoring() { painter.Fill(substrate100); }

    /// Makes grain 0 of these pixels of the frame, with edges as they were found on the reduced image.
    void MakeGrain(int left, int low, int width, int height) {
        SetPixels(GrainAt(0), left / reduction, low / reduction, width / reduction, height / reduction);
        ComputeGrainEdges(field.grains, 1, field.findings.edges);
        SetPixels(GrainAt(0), left, low, width, height);
    }

    float Score() {
        Measure();
        return FlakeScorer(field).Score(0);
    }

    const SubScores& Scores() const { return field.findings.subScores[0]; }

    EdgeSums Edge(int x, int y, EdgeDirection direction) {
        Measure();
        EdgeSums sums;
        EdgeContrast(field, x, y, direction, sums);
        return sums;
    }
};

TEST_F(Scoring, AddsUpTheSubScoresOfAnIdealFlake) {
    painter.Rectangle(200, 200, 40, 40, singleLayer100);
    MakeGrain(200, 200, 40, 40);
    const float score = Score();
    EXPECT_EQ(Scores().BG, 20.0F);
    EXPECT_NEAR(Scores().EgSp, 30.0F, 1e-4F);
    EXPECT_EQ(Scores().Size, 10.0F);
    EXPECT_EQ(Scores().PR, -20.0F) << "the frame's corner is bare";
    EXPECT_NEAR(Scores().Cont, 20 - 40 * 156.0F / 1'600, 1e-4F); // 4 * 39 boundary pixels
    EXPECT_NEAR(Scores().HST, 10 - (4 + 6 + 0) / 3.0F, 1e-4F);   // green - red, blue - green, blue - blue
    EXPECT_EQ(Scores().DfNx, 10.0F);
    EXPECT_NEAR(score, 20 + 16.1F + 10 + 30 - 20 + 20 / 3.0F, 1e-3F);
}

TEST_F(Scoring, GivesFullPrWhenTheFramesCornerMatches) {
    painter.Rectangle(4, 4, 40, 40, singleLayer100); // where the box's own coordinates of the inside point
    painter.Rectangle(200, 200, 40, 40, singleLayer100);
    MakeGrain(200, 200, 40, 40);
    Score();
    EXPECT_EQ(Scores().PR, 20.0F);
}

TEST_F(Scoring, LooksAtTheFramesCornerAnewForEachCall) {
    painter.Rectangle(200, 200, 40, 40, singleLayer100);
    MakeGrain(200, 200, 40, 40);
    Score();
    EXPECT_EQ(Scores().PR, -20.0F);
    painter.Rectangle(4, 4, 40, 40, singleLayer100);
    Score();
    EXPECT_EQ(Scores().PR, 20.0F);
}

struct SizeCase {
    int width;
    int height;
    float score;
};

class SizeScoring : public Scoring, public testing::WithParamInterface<SizeCase> {};

TEST_P(SizeScoring, GrowsToTenAtAThousandPixels) {
    const auto [width, height, score] = GetParam();
    MakeGrain(200, 200, width, height);
    Score();
    EXPECT_EQ(Scores().Size, score);
}

INSTANTIATE_TEST_SUITE_P(Sizes, SizeScoring,
                         testing::Values(SizeCase{25, 10, 2.5F}, SizeCase{27, 37, 9.99F},
                                         SizeCase{100, 10, 10.0F}, SizeCase{77, 13, 10.0F},
                                         SizeCase{100, 50, 10.0F}));

TEST_F(Scoring, GivesNoBgWhenOtherMaterialSurroundsTheGrain) {
    painter.Rectangle(190, 190, 60, 60, {150, 150, 150});
    painter.Rectangle(200, 200, 40, 40, singleLayer100);
    MakeGrain(200, 200, 40, 40);
    Score();
    EXPECT_EQ(Scores().BG, 0.0F);
}

TEST_F(Scoring, CountsThreePixelsOutsideEachEdgeForBg) {
    painter.Rectangle(199, 199, 42, 42, {150, 150, 150}); // a rim of one pixel
    MakeGrain(200, 200, 40, 40);
    Score();
    EXPECT_NEAR(Scores().BG, 20 * 2.0F / 3, 1e-4F);
}

TEST_F(Scoring, TakesTheBackgroundWithinTheToleranceExclusively) {
    settings.contrastTolerance = 6.0F;
    painter.Rectangle(190, 190, 60, 60, {106, 106, 106});
    MakeGrain(200, 200, 40, 40);
    Score();
    EXPECT_EQ(Scores().BG, 0.0F) << "a deviation of exactly the tolerance is none";
    settings.contrastTolerance = 6.1F;
    Score();
    EXPECT_EQ(Scores().BG, 20.0F);
}

TEST_F(Scoring, IsNoNumberWithoutAnInside) {
    painter.Rectangle(200, 200, 1, 40, singleLayer100);
    MakeGrain(200, 200, 1, 40);
    SetPixels(GrainAt(0), 200, 200, 1, 40);
    field.findings.edges.EdgeRight[0] = {212, 200};
    field.findings.edges.EdgeMaxRow[0] = {200, 248};
    field.findings.edges.EdgeLeft[0] = {196, 200};
    field.findings.edges.EdgeMinRow[0] = {200, 196};
    const float score = Score();
    EXPECT_TRUE(std::isnan(Scores().PR));
    EXPECT_TRUE(std::isnan(score));
    EXPECT_FALSE(score >= -std::numeric_limits<float>::infinity());
    EXPECT_EQ(surface.All<RecordingSurface::Text>().back().text, "PRnan");
}

TEST_F(Scoring, IsNoNumberWithoutEdges) {
    SetPixels(GrainAt(0), 600, 600, 5, 5); // outside its box
    field.findings.edges.EdgeLeft[0] = {200, 200};
    field.findings.edges.EdgeRight[0] = {240, 200};
    field.findings.edges.EdgeMinRow[0] = {200, 200};
    field.findings.edges.EdgeMaxRow[0] = {200, 240};
    const float score = Score();
    EXPECT_TRUE(std::isnan(Scores().BG));
    EXPECT_EQ(Scores().EgSp, 0.0F);
    EXPECT_TRUE(std::isnan(score));
}

TEST_F(Scoring, StaysDefinedInABoxThatIsTurnedInsideOut) {
    SetPixels(GrainAt(0), 600, 600, 5, 5);
    field.findings.edges.EdgeLeft[0] = {900, 900};
    EXPECT_TRUE(std::isnan(Score()));
}

TEST_F(Scoring, StaysDefinedOnABackgroundOfZero) {
    painter.Fill({0, 0, 0});
    painter.Rectangle(200, 200, 20, 20, {100, 100, 100});
    MakeGrain(200, 200, 20, 20);
    Score();
    EXPECT_NEAR(Scores().EgSp, -30.0F, 1e-4F) << "infinite contrast of the wrong sign is clamped";
    EXPECT_EQ(Scores().BG, 0.0F) << "0 / 0 is no background";
}

TEST_F(Scoring, StaysDefinedAtTheFramesBorder) {
    SetPixels(GrainAt(0), 0, 1008, 20, 20);
    field.findings.edges.EdgeLeft[0] = {-4, 1008};
    field.findings.edges.EdgeRight[0] = {28, 1008};
    field.findings.edges.EdgeMinRow[0] = {0, 1004};
    field.findings.edges.EdgeMaxRow[0] = {0, 1036};
    EXPECT_TRUE(std::isfinite(Score()));
    EXPECT_EQ(Scores().BG, 20.0F) << "outside the frame its border goes on";
}

TEST_F(Scoring, LabelsTheGrainAtItsUpperLeft) {
    painter.Rectangle(200, 200, 40, 40, singleLayer100);
    MakeGrain(200, 200, 40, 40);
    Score();
    const auto texts = surface.All<RecordingSurface::Text>();
    ASSERT_EQ(texts.size(), 4U);
    // Left edge (50 - 1) * 4 = 196; visual top 1028 - (59 + 2) * 4 = 784.
    const auto expected = [](const char* text, int row) {
        return RecordingSurface::Text{text, {196, row, 196, row}, TextAlignment::Right, black};
    };
    EXPECT_EQ(texts[0], expected("EgSp30 DfNx10", 783));
    EXPECT_EQ(texts[1], expected("BG20 Cont16", 795));
    EXPECT_EQ(texts[2], expected("Size10 HST7", 806));
    EXPECT_EQ(texts[3], expected("PR-20", 818));
}

TEST_F(Scoring, PaintsBoundaryPixelsBlack) {
    MakeGrain(200, 200, 4, 4);
    Score();
    const auto pixels = surface.All<RecordingSurface::Pixel>();
    ASSERT_EQ(pixels.size(), 12U) << "all but the inner 2 x 2";
    EXPECT_EQ(pixels[0], (RecordingSurface::Pixel{200, 828, black}));
    EXPECT_EQ(Scores().Cont, 20 - 40 * 12.0F / 16);
}

TEST_F(Scoring, IsTheSameWithoutASurface) {
    painter.Rectangle(200, 200, 40, 40, singleLayer100);
    MakeGrain(200, 200, 40, 40);
    const float drawn = Score();
    field.surface = nullptr;
    EXPECT_EQ(Score(), drawn);
}

TEST_F(Scoring, MeasuresTextureAgainstTheNeighboursAtLargerXAndY) {
    MakeGrain(200, 200, 12, 12);
    painter.Set(205, 205, {103, 100, 98}); // differs by 3 and 2 from four neighbours
    Score();
    // The pixel itself: 2 * 5; its neighbours at smaller x and y: 5 each. Interior: 10 x 10 pixels.
    EXPECT_FLOAT_EQ(Scores().DfNx, 10 - 20.0F / 100);
}

struct ClampCase {
    float value;
    float target;
    float expected;
};

class EdgeClamping : public testing::TestWithParam<ClampCase> {};

TEST_P(EdgeClamping, KeepsToTheTargetAndScalesItToTen) {
    float value = GetParam().value;
    ClampEdgeContrast(value, GetParam().target);
    EXPECT_FLOAT_EQ(value, GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(Values, EdgeClamping,
                         testing::Values(ClampCase{15, -12, 10}, ClampCase{6, -12, 5},
                                         ClampCase{-15, -12, -10}, ClampCase{15, 12, 10},
                                         ClampCase{-15, 12, -10}, ClampCase{5, 0.5F, 0.5F},
                                         ClampCase{0.5F, 1, 0.5F}, ClampCase{-9, 0, 0}));

TEST_F(Scoring, GivesTenToAnEdgeDarkerThanItsTarget) {
    painter.Rectangle(200, 200, 40, 40, {85, 92, 98});
    EXPECT_NEAR(Edge(200, 220, EdgeDirection::Left).sumA, 10.0F, 1e-4F);
}

TEST_F(Scoring, GivesMinusTenToAnEdgeOfTheWrongSign) {
    painter.Rectangle(200, 200, 40, 40, {120, 96, 98});
    const EdgeSums sums = Edge(200, 220, EdgeDirection::Left);
    EXPECT_NEAR(sums.sumA, -10.0F, 1e-4F);
    EXPECT_NEAR(sums.sumB, 5.0F, 1e-4F) << "half of green's target";
}

TEST_F(Scoring, ExpectsABrighterInsideForAPositiveTarget) {
    settings.targetContrast = {12, 0, -2};
    painter.Rectangle(200, 200, 40, 40, {112, 110, 98});
    const EdgeSums sums = Edge(200, 220, EdgeDirection::Left);
    EXPECT_NEAR(sums.sumA, 10.0F, 1e-4F);
    EXPECT_EQ(sums.sumB, 0.0F) << "a target of zero leaves nothing";
}

TEST_F(Scoring, SeesTheSameEdgeFromAllFourSides) {
    painter.Rectangle(200, 200, 40, 40, singleLayer100);
    for (const auto& [x, y, direction] :
         {std::tuple{200, 220, EdgeDirection::Left}, std::tuple{239, 220, EdgeDirection::Right},
          std::tuple{220, 200, EdgeDirection::LowRow}, std::tuple{220, 239, EdgeDirection::HighRow}}) {
        const EdgeSums sums = Edge(x, y, direction);
        EXPECT_NEAR(sums.sumA + sums.sumB + sums.sumC, 30.0F, 1e-4F);
    }
}

TEST_F(Scoring, LeavesTheEdgePixelItselfOut) {
    painter.Rectangle(200, 200, 40, 40, singleLayer100);
    painter.Set(200, 220, {255, 255, 255});
    EXPECT_NEAR(Edge(200, 220, EdgeDirection::Left).sumA, 10.0F, 1e-4F);
}

TEST_F(Scoring, DeviatesFromTheBackgroundByTheMeanOfTheChannels) {
    painter.Set(500, 500, {103, 94, 100});
    Measure();
    EXPECT_NEAR(BackgroundDeviation(field, 500, 500), 0.03F, 1e-6F);
    EXPECT_EQ(BackgroundDeviation(field, 501, 500), 0.0F);
}

TEST_F(Scoring, SpreadsGreenAroundRedAndBlueAroundGreenAndBlue) {
    SetPixels(GrainAt(0), 300, 300, 2, 1);
    painter.Set(300, 300, {50, 53, 60});
    painter.Set(301, 300, {51, 54, 66});
    // Means 50, 53, 63. Green around 50: 3, 4; blue around 53: 7, 13; blue around 63: -3, 3.
    const float expected = (std::sqrt(12.5F) + std::sqrt(109.0F) + 3.0F) / 3;
    EXPECT_NEAR(ColourSpread(field, 0), expected, 1e-5F);
}

TEST_F(Scoring, OfAGrainWithoutPixelsIsNoNumber) {
    GrainAt(0).count = 0;
    EXPECT_TRUE(std::isnan(ColourSpread(field, 0)));
    EXPECT_TRUE(std::isnan(Score()));
}

} // namespace
} // namespace tessaro
