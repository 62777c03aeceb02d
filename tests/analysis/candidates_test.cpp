#include "analysis/candidates.h"
#include "support/analysis_fixture.h"

#include <algorithm>

namespace tessaro {
namespace {

class Candidates : public AnalysisFixture {
protected:
    Candidates() { painter.Fill(substrate100); }

    void Find(bool paint = false) {
        Measure();
        FindCandidates(field, paint);
    }

    const Candidate& At(int i) const { return field.analyzer.candidates[static_cast<std::size_t>(i)]; }

    /// Marks a candidate by hand, as FindCandidates would.
    void Add(int x4, int y4) {
        field.analyzer.candidates[static_cast<std::size_t>(field.analyzer.candidateCount++)] = {
            1, static_cast<std::int16_t>(x4), static_cast<std::int16_t>(y4)};
        field.analyzer.candidateMap.Set(x4, y4, 1);
    }

    /// Matching pixels everywhere; the background is set by hand because it would become theirs.
    void MakeEverythingMatch() {
        painter.Fill(singleLayer100);
        Measure();
        SetBackground(100, 100, 100);
    }
};

TEST_F(Candidates, AreListedAndMarkedRowByRow) {
    PaintReduced(60, 21, 1, 1, singleLayer100);
    PaintReduced(50, 20, 2, 1, singleLayer100);
    Find();
    ASSERT_EQ(field.analyzer.candidateCount, 3);
    EXPECT_EQ(At(0), (Candidate{1, 50, 20}));
    EXPECT_EQ(At(1), (Candidate{1, 51, 20}));
    EXPECT_EQ(At(2), (Candidate{1, 60, 21}));
    EXPECT_EQ(field.analyzer.candidateMap.Get(60, 21), 1);
    EXPECT_EQ(field.analyzer.candidateMap.Get(61, 21), 0);
}

TEST_F(Candidates, KeepTwentyFiveColumnsAndOneRowOffTheBorder) {
    for (const int x4 : {24, 25, 282, 283}) {
        for (const int y4 : {0, 1, 255, 256})
            PaintReduced(x4, y4, 1, 1, singleLayer100);
    }
    Find();
    ASSERT_EQ(field.analyzer.candidateCount, 4);
    EXPECT_EQ(At(0), (Candidate{1, 25, 1}));
    EXPECT_EQ(At(1), (Candidate{1, 282, 1}));
    EXPECT_EQ(At(2), (Candidate{1, 25, 255}));
    EXPECT_EQ(At(3), (Candidate{1, 282, 255}));
}

TEST_F(Candidates, MatchAtBothEndsOfTheToleranceAndNotBeyond) {
    PaintReduced(50, 20, 1, 1, {82, 98, 104}); // -18, -2, 4
    PaintReduced(52, 20, 1, 1, {94, 86, 92});  // -6, -14, -8
    PaintReduced(54, 20, 1, 1, {82, 92, 98});
    painter.Set(216, 80, {81, 92, 98}); // a mean of 81.9375: -18.0625
    PaintReduced(56, 20, 1, 1, {88, 98, 98});
    painter.Set(224, 80, {88, 99, 98});
    Find();
    ASSERT_EQ(field.analyzer.candidateCount, 2);
    EXPECT_EQ(At(0), (Candidate{1, 50, 20}));
    EXPECT_EQ(At(1), (Candidate{1, 52, 20}));
}

TEST_F(Candidates, OfAnEvenSubstrateAreNone) {
    field.analyzer.candidates[0] = {1, 99, 99};
    field.analyzer.secondCounter = 5;
    Find();
    EXPECT_EQ(field.analyzer.candidateCount, 0);
    EXPECT_EQ(field.analyzer.secondCounter, 0);
    EXPECT_EQ(At(0), Candidate{}) << "the first entry is cleared";
}

TEST_F(Candidates, OfABlackFrameAreNone) {
    painter.Fill({0, 0, 0});
    Find();
    EXPECT_EQ(field.analyzer.candidateCount, 0);
}

TEST_F(Candidates, PaintOneRedPixelEachInTheMiddleOfItsBlockCountedFromTheTop) {
    PaintReduced(50, 20, 1, 1, singleLayer100);
    Find(true);
    ASSERT_EQ(surface.calls.size(), 1U);
    EXPECT_EQ(surface.All<RecordingSurface::Pixel>()[0], (RecordingSurface::Pixel{202, 1028 - 82, pureRed}));
}

TEST_F(Candidates, PaintNothingUnlessAsked) {
    PaintReduced(50, 20, 1, 1, singleLayer100);
    Find(false);
    EXPECT_TRUE(surface.calls.empty());
    field.surface = nullptr;
    FindCandidates(field, true);
    EXPECT_EQ(field.analyzer.candidateCount, 1) << "without a surface the same is found";
}

TEST_F(Candidates, StopAtTheTwentyThousandthInRowOrder) {
    MakeEverythingMatch();
    FindCandidates(field, true);
    EXPECT_EQ(field.analyzer.candidateCount, 20'000);
    // 258 columns a row: 77 whole rows are 19,866, the 20,000th is the 134th of row 78.
    const Candidate last{1, 25 + 133, 78};
    EXPECT_EQ(At(19'999), last);
    EXPECT_EQ(field.analyzer.candidateMap.Get(last.x, last.y), 0) << "the last one is not marked";
    EXPECT_EQ(field.analyzer.candidateMap.Get(last.x - 1, last.y), 1);
    EXPECT_EQ(surface.calls.size(), 19'999U) << "nor painted";
}

TEST_F(Candidates, LeaveMarksOfEarlierFieldsAboveTheFirstQuarterOfTheMap) {
    PaintReduced(50, 64, 1, 1, singleLayer100);
    PaintReduced(50, 65, 1, 1, singleLayer100);
    Find();
    painter.Fill(substrate100);
    Find();
    EXPECT_EQ(field.analyzer.candidateCount, 0);
    EXPECT_EQ(field.analyzer.candidateMap.Get(50, 64), 0) << "the last cell that is cleared";
    EXPECT_EQ(field.analyzer.candidateMap.Get(50, 65), 1);
}

TEST_F(Candidates, WithMarksOfAnEarlierFieldAroundSurviveNoiseRejection) {
    PaintReduced(50, 100, 3, 3, singleLayer100);
    Find();
    painter.Fill(substrate100);
    PaintReduced(51, 101, 1, 1, singleLayer100);
    Find();
    RejectNoise(field.analyzer);
    EXPECT_EQ(At(0), (Candidate{1, 51, 101}));
}

TEST_F(Candidates, UseEachBlocksBackgroundWhenInterpolationIsOff) {
    field.analyzer.useInterpolatedBackground = 0;
    painter.Fill({100, 50, 200});
    PaintReduced(50, 20, 2, 2, {88, 46, 196});
    Find();
    EXPECT_EQ(field.analyzer.candidateCount, 4);
}

TEST_F(Candidates, AloneOrInPairsAreRejected) {
    Add(50, 50);
    Add(100, 50);
    Add(101, 50);
    RejectNoise(field.analyzer);
    EXPECT_EQ(field.analyzer.candidateCount, 3) << "the list keeps its length";
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(At(i), Candidate{});
    EXPECT_EQ(field.analyzer.candidateMap.Get(50, 50), 0);
    EXPECT_EQ(LiveCandidates(field.analyzer), 0);
}

TEST_F(Candidates, AtTheCornersOfTheMapHaveNoNeighboursBesideIt) {
    Add(0, 0);
    Add(307, 256);
    RejectNoise(field.analyzer);
    EXPECT_EQ(LiveCandidates(field.analyzer), 0);
    field.analyzer.candidateCount = 0;
    for (const int x4 : {0, 1, 306, 307}) {
        for (const int y4 : {0, 1, 255, 256})
            Add(x4, y4);
    }
    RejectNoise(field.analyzer);
    EXPECT_EQ(LiveCandidates(field.analyzer), 16) << "a square of four in each corner";
}

TEST_F(Candidates, InASquareOfFourSurvive) {
    Add(50, 50);
    Add(51, 50);
    Add(50, 51);
    Add(51, 51);
    RejectNoise(field.analyzer);
    EXPECT_EQ(LiveCandidates(field.analyzer), 4);
}

TEST_F(Candidates, RejectedCountAtOnceForThoseThatFollow) {
    // A row of three above a single one: the first to go is an end of the row, which takes the next along.
    Add(50, 50);
    Add(51, 50);
    Add(52, 50);
    Add(51, 51);
    RejectNoise(field.analyzer);
    EXPECT_EQ(LiveCandidates(field.analyzer), 0);
}

} // namespace
} // namespace tessaro
