#include "support/plain_analysis_fixture.h"

#include <limits>

// The numbers expected here are worked out by hand, so that the plain analysis can be trusted where the fast
// one is compared with it.
namespace tessaro::reference::tests {

TEST_F(PlainAnalysis, ClampsEdgesToTheTarget) {
    const auto clamped = [](float value, float target) {
        ClampEdgeContrast(value, target);
        return value;
    };
    EXPECT_FLOAT_EQ(clamped(15.0F, -12.0F), 10.0F);
    EXPECT_FLOAT_EQ(clamped(-15.0F, -12.0F), -10.0F);
    EXPECT_FLOAT_EQ(clamped(6.0F, 12.0F), 5.0F);
    EXPECT_FLOAT_EQ(clamped(3.0F, 0.5F), 0.5F); // a target of at most 1 is not scaled to 10
}

TEST_F(PlainAnalysis, SpreadsEachChannelAboutTheMeanOfTheOneBefore) {
    Fill(40, 40, 2, 1, 10, 14, 16);
    SetGrain(0, {{40, 40}, {41, 40}});
    EXPECT_EQ(ColourSpread(*analysis, 0), 2.0F); // (4 + 2 + 0) / 3
}

TEST_F(PlainAnalysis, TellsTheInteriorFromTheBoundary) {
    Fill(40, 40, 4, 4, 100, 100, 100);
    frame.SetPixel(42, 41, 103, 100, 99);
    std::vector<PixelPosition> square;
    for (std::int16_t i = 0; i < 9; ++i) {
        square.push_back({static_cast<std::int16_t>(40 + i % 3), static_cast<std::int16_t>(40 + i / 3)});
        analysis->analyzer.pixelMap.Set(square.back().x, square.back().y, 1);
    }
    SetGrain(0, square);
    float DfNx = 0.0F;
    EXPECT_FLOAT_EQ(InteriorTexture(*analysis, 0, DfNx), 8.0F / 9.0F);
    EXPECT_EQ(DfNx, 6.0F); // 10 - (3 + 1) / 1
    ASSERT_EQ(surface.calls.size(), 8U);
    EXPECT_EQ(surface.All<RecordingSurface::Pixel>().front(), (RecordingSurface::Pixel{40, 988, black}));
}

TEST_F(PlainAnalysis, DoesNotScoreAGrainWithoutInside) {
    SetGrid(100.0F);
    FillAll(100);
    SetGrain(0, {{40, 40}, {40, 41}});
    GrainExtremes(analysis->grains.grains[0], 1, analysis->findings.edges.EdgeLeft[0],
                  analysis->findings.edges.EdgeRight[0], analysis->findings.edges.EdgeMinRow[0],
                  analysis->findings.edges.EdgeMaxRow[0]);
    EXPECT_FALSE(FlakeScore(*analysis, 0) >= 0.0F);
    EXPECT_EQ(surface.All<RecordingSurface::Text>().back().text, "PRnan");
    EXPECT_EQ(LabelNumber(-std::numeric_limits<float>::infinity()), "-inf");
}

TEST_F(PlainAnalysis, ScoresADrawnFlake) {
    FillAll(200);
    DrawFlake(400, 400, 40);
    AnalyseField();
    ASSERT_EQ(Counts(), std::vector<std::int32_t>{100});

    // Refinement takes the four corners away, each with four marks around it.
    EXPECT_EQ(DecideSingleLayers(*analysis), 0);
    EXPECT_EQ(Counts(), std::vector<std::int32_t>{1596});
    const SubScores& scores = analysis->findings.subScores[0];
    // 160 edges; beside each missing corner the two rows' or columns' ends see one flake pixel outside.
    EXPECT_FLOAT_EQ(scores.BG, 472.0F / 480.0F * 20.0F);
    // 152 full edges of 30; the eight ends beside the corners have 8, 5 and 1 percent.
    EXPECT_NEAR(scores.EgSp, (152 * 30 + 8 * (20.0 / 3 + 6.25 + 5)) / 160, 1e-4);
    EXPECT_FLOAT_EQ(scores.HST, 10.0F - (8.0F + 12.0F) / 3.0F);
    EXPECT_FLOAT_EQ(scores.Cont, 20.0F - 40.0F * 152.0F / 1596.0F);
    EXPECT_EQ(scores.Size, 10.0F);
    EXPECT_EQ(scores.PR, -20.0F); // the pixels tested are bare substrate at the frame's corner
    EXPECT_EQ(scores.DfNx, 10.0F);
    EXPECT_NEAR(analysis->findings.scores[0], 58.5863, 1e-3);

    const auto text = [](const char* words, int row) {
        return RecordingSurface::Text{words, {396, row, 396, row}, TextAlignment::Right, black};
    };
    const auto texts = surface.All<RecordingSurface::Text>();
    ASSERT_EQ(texts.size(), 5U);
    EXPECT_EQ(texts[0], text("EgSp29 DfNx10", 583));
    EXPECT_EQ(texts[1], text("BG20 Cont16", 595));
    EXPECT_EQ(texts[2], text("Size10 HST3", 606));
    EXPECT_EQ(texts[3], text("PR-20", 618));
    EXPECT_EQ(texts[4],
              (RecordingSurface::Text{"Score:59", {410, 573, 430, 573}, TextAlignment::Centre, black}));
    EXPECT_EQ(surface.calls.size(), 152U + 5U);
}

TEST_F(PlainAnalysis, AddsTheRunningCountToTheTotal) {
    FillAll(200);
    DrawFlake(400, 400, 40);
    DrawFlake(800, 600, 40);
    analysis->settings.scoreThreshold = 58.5F;
    analysis->findings.totalFound = 7;
    AnalyseField();
    EXPECT_EQ(DecideSingleLayers(*analysis), 2);
    EXPECT_EQ(status.lines, (std::vector<std::string>{"total 8", "1 single layer detected!", "total 10",
                                                      "2 single layer detected!"}));
    const auto frames = surface.All<RecordingSurface::Frame>();
    ASSERT_EQ(frames.size(), 2U);
    EXPECT_EQ(frames[0], (RecordingSurface::Frame{{399, 629, 441, 587}, 2, pureRed}));
}

} // namespace tessaro::reference::tests
