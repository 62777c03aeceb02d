#include "support/plain_analysis_fixture.h"

#include <array>
#include <limits>

// The numbers expected here are worked out by hand, so that the plain analysis can be trusted where the fast
// one is compared with it.
namespace tessaro::reference::tests {

TEST_F(PlainAnalysis, ReadsTheNearestPixelBesideTheFrame) {
    frame.SetPixel(0, frameHeight - 1, 11, 12, 13);
    EXPECT_EQ(GetChannel(analysis->frame, 0, -5, 2000), 11);
    EXPECT_EQ(GetChannel(analysis->frame, 1, -5, 2000), 12);
    EXPECT_EQ(GetChannel(analysis->frame, 2, -5, 2000), 13);
    EXPECT_EQ(GetChannel(analysis->frame, 3, -5, 2000), 13);
}

TEST_F(PlainAnalysis, TruncatesMeansOfRuns) {
    frame.SetPixel(5, 5, 1, 0, 0);
    frame.SetPixel(6, 5, 1, 0, 0);
    frame.SetPixel(7, 5, 3, 0, 0);
    frame.SetPixel(5, 6, 7, 0, 0);
    EXPECT_EQ(AverageAlongX(analysis->frame, 0, 5, 5, 3), 1); // 5 / 3
    EXPECT_EQ(AverageAlongY(analysis->frame, 0, 5, 5, 3), 2); // 8 / 3
    int value = 12;
    EXPECT_EQ(ClampInt(value, 0, 9), 9);
    EXPECT_EQ(value, 9);
}

TEST_F(PlainAnalysis, FindsOneIntensityInAUniformFrame) {
    FillAll(143);
    ComputeFrameStatistics(*analysis, analysis->frame);
    for (std::size_t c = 0; c < 3; ++c)
        EXPECT_EQ(analysis->frame.bgPeak[c], 143.0);
    EXPECT_EQ(analysis->frame.bgPeakSum, 429.0);
    EXPECT_EQ(analysis->measured.noiseLevel, 0.0F);
    EXPECT_EQ(analysis->measured.reduced.Get(2, 307, 256), 143.0F);
    EXPECT_EQ(analysis->measured.background.Measured(1, 15, 15), 143.0F);
}

TEST_F(PlainAnalysis, MeasuresNoiseInRows411To615OfTheCurrentFrame) {
    Fill(0, 0, frameWidth, 411, 10, 0, 0);
    Fill(0, 411, frameWidth, 1, 90, 0, 0); // the step from row 410 is not counted, that to row 412 is
    Fill(0, 412, frameWidth, 204, 40, 0, 0);
    Fill(0, 616, frameWidth, 1, 47, 0, 0); // the step from row 615 is counted, that to row 617 is not
    FrameBuffer other;
    FrameRecord otherRecord{other.Data(), {}, 0.0};
    ComputeFrameStatistics(*analysis, otherRecord);
    EXPECT_FLOAT_EQ(analysis->measured.noiseLevel, (50.0F + 7.0F) / 205.0F);
    EXPECT_EQ(analysis->measured.reduced.Get(0, 0, 0), 0.0F);
}

TEST_F(PlainAnalysis, TakesTheLowerOfTwoEqualPeaks) {
    Fill(0, 0, 616, frameHeight, 200, 60, 9);
    Fill(616, 0, 616, frameHeight, 100, 70, 8);
    ComputeFrameStatistics(*analysis, analysis->frame);
    EXPECT_EQ(analysis->frame.bgPeak, (std::array<double, 3>{100.0, 60.0, 8.0}));
}

TEST_F(PlainAnalysis, ForgetsThe65536thCountOfAPeak) {
    FillAll(50);                                 // 256 columns of 257 rows: 65,792 counts, held as 256
    Fill(1024, 0, 208, frameHeight, 200, 50, 0); // 52 columns: 13,364 counts
    Fill(0, 0, 1024, frameHeight, 50, 0, 0);     // green and blue as much of bin 0
    ComputeFrameStatistics(*analysis, analysis->frame);
    EXPECT_EQ(analysis->frame.bgPeak, (std::array<double, 3>{200.0, 50.0, 0.0}));
}

TEST_F(PlainAnalysis, SearchesBlocksFrom25BelowToJustBelow25AboveThePeak) {
    Fill(0, 0, frameWidth, frameHeight, 240, 10, 100);
    Fill(0, 0, 77, 64, 214, 34, 75);   // block (0, 0)
    Fill(77, 0, 77, 64, 215, 35, 125); // block (1, 0)
    Fill(154, 0, 77, 64, 255, 0, 124); // block (2, 0)
    ComputeFrameStatistics(*analysis, analysis->frame);
    const BackgroundGrid& grid = analysis->measured.background;
    EXPECT_EQ(grid.Measured(0, 0, 0), 240.0F);
    EXPECT_EQ(grid.Measured(0, 1, 0), 215.0F);
    EXPECT_EQ(grid.Measured(0, 2, 0), 255.0F);
    EXPECT_EQ(grid.Measured(1, 0, 0), 34.0F);
    EXPECT_EQ(grid.Measured(1, 1, 0), 10.0F);
    EXPECT_EQ(grid.Measured(1, 2, 0), 0.0F);
    EXPECT_EQ(grid.Measured(2, 0, 0), 75.0F);
    EXPECT_EQ(grid.Measured(2, 1, 0), 100.0F);
    EXPECT_EQ(grid.Measured(2, 2, 0), 124.0F);
}

TEST_F(PlainAnalysis, InterpolatesTheRedBackgroundAndReadsBesideTheColumn) {
    SetGrid(100.0F);
    for (int gy = 0; gy < gridSize; ++gy)
        analysis->measured.background.SetMeasured(0, 9, gy, 177.0F);
    // x = 680 = 8 * 77 + 64: 77 * 64 / 77 - 88.5 + 150 = 125.5 along x, 100 along y.
    EXPECT_FLOAT_EQ(InterpolateBackground(*analysis, 3, 170, 100), 112.75F);

    SetGrid(100.0F);
    analysis->measured.background.SetMeasured(0, 4, 15, 60.0F); // just before cell (5, 0)
    // x = 400 in block 5, y = 0: 100 along x; (100 + 60) / 2 along y.
    EXPECT_EQ(InterpolateBackground(*analysis, 1, 100, 0), 90.0F);

    analysis->measured.background.SetMeasured(0, 6, 0, 40.0F); // just after cell (5, 15)
    analysis->measured.background.SetMeasured(0, 4, 15, 100.0F);
    // y = 1020 = 15 * 64 + 60: -60 * 60 / 64 - 20 + 150 = 73.75 along y.
    EXPECT_EQ(InterpolateBackground(*analysis, 1, 100, 255), 86.875F);
}

TEST_F(PlainAnalysis, ClassifiesAgainstBothEndsOfTheTolerance) {
    SetGrid(100.0F);
    SetReduced(100, 100, 82.0F, 98.0F, 104.0F);
    EXPECT_EQ(ClassifyReducedPixel(*analysis, 100, 100), 1);
    SetReduced(100, 100, 81.99F, 92.0F, 98.0F);
    EXPECT_EQ(ClassifyReducedPixel(*analysis, 100, 100), -1);
    SetReduced(100, 100, 100.0F, 100.0F, 100.0F);
    EXPECT_EQ(ClassifyReducedPixel(*analysis, 100, 100), 0);

    frame.SetPixel(400, 400, 88, 92, 98);
    EXPECT_EQ(ClassifyPixel(*analysis, 400, 400), 1);
    frame.SetPixel(400, 400, 70, 92, 98);
    EXPECT_EQ(ClassifyPixel(*analysis, 400, 400), 0);

    // Green is held against its own block only where blocks are used; (400, 400) lies in block (5, 6).
    analysis->measured.background.SetMeasured(1, 5, 6, 200.0F);
    SetReduced(100, 100, 88.0F, 92.0F, 98.0F);
    EXPECT_EQ(ClassifyReducedPixel(*analysis, 100, 100), 1);
    EXPECT_EQ(ClassifyReducedPixelByBlock(*analysis, 100, 100), -1);
    frame.SetPixel(400, 400, 88, 184, 98);
    EXPECT_EQ(ClassifyPixel(*analysis, 400, 400), 0);
    EXPECT_EQ(ClassifyPixelByBlock(*analysis, 400, 400), 1);
}

TEST_F(PlainAnalysis, StopsAtTheTwentyThousandthCandidate) {
    SetGrid(100.0F);
    for (int x4 = 0; x4 < reducedWidth; ++x4)
        for (int y4 = 0; y4 < reducedHeight; ++y4)
            SetReduced(x4, y4, 88.0F, 92.0F, 98.0F);
    FindCandidates(*analysis, true);
    // Rows of 258 candidates: 77 full rows are 19,866, so the last is the 134th of row 78.
    EXPECT_EQ(analysis->analyzer.candidateCount, candidateCapacity);
    EXPECT_EQ(analysis->analyzer.candidates.front(), (Candidate{1, 25, 1}));
    EXPECT_EQ(analysis->analyzer.candidates.back(), (Candidate{1, 158, 78}));
    EXPECT_EQ(analysis->analyzer.candidateMap.Get(157, 78), 1);
    EXPECT_EQ(analysis->analyzer.candidateMap.Get(158, 78), 0);
    const auto painted = surface.All<RecordingSurface::Pixel>();
    ASSERT_EQ(painted.size(), 19'999U);
    EXPECT_EQ(painted.front(), (RecordingSurface::Pixel{102, 1022, pureRed}));
}

TEST_F(PlainAnalysis, KeepsOldMarksFromRow65Up) {
    analysis->analyzer.candidateMap.Set(50, 64, 1);
    analysis->analyzer.candidateMap.Set(50, 65, 1);
    FindCandidates(*analysis, false);
    EXPECT_EQ(analysis->analyzer.candidateMap.Get(50, 64), 0);
    EXPECT_EQ(analysis->analyzer.candidateMap.Get(50, 65), 1);
}

TEST_F(PlainAnalysis, RejectsPairsAndKeepsSquares) {
    SetCandidates({{30, 10}, {31, 10}, {60, 20}, {61, 20}, {60, 21}, {61, 21}});
    RejectNoise(*analysis);
    EXPECT_EQ(analysis->analyzer.candidates[0], Candidate{});
    EXPECT_EQ(analysis->analyzer.candidates[1], Candidate{});
    EXPECT_EQ(analysis->analyzer.candidates[5], (Candidate{1, 61, 21}));
    EXPECT_EQ(analysis->analyzer.candidateMap.Get(30, 10), 0);
    EXPECT_EQ(analysis->analyzer.candidateCount, 6);
}

TEST_F(PlainAnalysis, SeesEarlierRemovalsWhileItRejects) {
    // (31, 10) has four marks around it at first, and three once (30, 10) with its three is gone.
    SetCandidates({{30, 10}, {31, 10}, {32, 10}, {31, 11}});
    RejectNoise(*analysis);
    for (std::size_t i = 0; i < 4; ++i)
        EXPECT_EQ(analysis->analyzer.candidates[i].live, 0);
}

TEST_F(PlainAnalysis, JoinsCandidatesAtMostTwoStepsApart) {
    SetCandidates({{10, 10}, {12, 10}, {110, 10}, {113, 10}, {210, 10}, {211, 11}});
    Group(1);
    EXPECT_EQ(Counts(), (std::vector<std::int32_t>{2, 1, 1, 2}));
}

TEST_F(PlainAnalysis, MergesGrainsThatTouchAtTwoPairs) {
    Grain& first = analysis->grains.grains[0];
    Grain& second = analysis->grains.grains[1];
    SetGrain(0, {{10, 10}});
    SetGrain(1, {{12, 10}});
    MergeIfTouching(first, second);
    EXPECT_EQ(first.count, 1);
    SetGrain(0, {{10, 10}, {11, 10}});
    MergeIfTouching(first, second);
    EXPECT_EQ(first.count, 3);
    EXPECT_EQ(second.count, 0);
    EXPECT_EQ(first.pixels[2], (PixelPosition{12, 10}));
}

TEST_F(PlainAnalysis, DropsGrainsBelowTheMinimumSize) {
    std::vector<PixelPosition> positions;
    for (std::int16_t i = 0; i < 39; ++i)
        positions.push_back({static_cast<std::int16_t>(30 + i), 10});
    for (std::int16_t i = 0; i < 38; ++i)
        positions.push_back({static_cast<std::int16_t>(30 + i), 20});
    SetCandidates(positions);
    EXPECT_EQ(MinimumReducedPixels(100), 39);
    EXPECT_EQ(MinimumFullPixels(100), 625);
    EXPECT_EQ(MinimumFullPixels(std::numeric_limits<int>::max()), std::numeric_limits<int>::max());
    Group(MinimumReducedPixels(100));
    EXPECT_EQ(Counts(), (std::vector<std::int32_t>{39, 0}));
}

TEST_F(PlainAnalysis, StopsAtThe298thGrain) {
    std::vector<PixelPosition> positions;
    for (int i = 0; i < 298; ++i)
        positions.push_back(
            {static_cast<std::int16_t>(3 * (i % 100)), static_cast<std::int16_t>(3 * (i / 100))});
    positions.push_back({0, 1}); // would join the first grain
    SetCandidates(positions);
    Group(1);
    EXPECT_EQ(Counts(), std::vector<std::int32_t>(297, 1));
    EXPECT_EQ(status.lines, std::vector<std::string>{"MAX_GRAIN overflow: group counting stopped"});
}

TEST_F(PlainAnalysis, KeepsTheFirstExtremeOfATieAndWidensIt) {
    SetGrain(0, {{10, 20}, {10, 21}, {12, 20}, {12, 21}});
    ComputeGrainEdges(analysis->grains, 1, analysis->findings.edges);
    EXPECT_EQ(analysis->findings.edges.EdgeLeft[0], (PixelPosition{36, 80}));
    EXPECT_EQ(analysis->findings.edges.EdgeRight[0], (PixelPosition{56, 80}));
    EXPECT_EQ(analysis->findings.edges.EdgeMinRow[0], (PixelPosition{40, 76}));
    EXPECT_EQ(analysis->findings.edges.EdgeMaxRow[0], (PixelPosition{40, 92}));
}

TEST_F(PlainAnalysis, TakesTheLastGrainAboveTheFirst) {
    GrainTable& grains = analysis->grains;
    const auto setCounts = [&](int first, int second, int third) {
        grains.grains[0].count = first;
        grains.grains[1].count = second;
        grains.grains[2].count = third;
    };
    setCounts(5, 9, 7);
    EXPECT_EQ(LargestGrain(grains, 3), 2);
    setCounts(9, 5, 7);
    EXPECT_EQ(LargestGrain(grains, 3), 0);
}

} // namespace tessaro::reference::tests
