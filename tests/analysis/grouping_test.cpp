#include "analysis/grouping.h"
#include "reference/plain_analysis.h"
#include "support/analysis_fixture.h"

#include <algorithm>
#include <limits>
#include <numeric>
#include <vector>

namespace tessaro {
namespace {

class GrainGrouping : public AnalysisFixture {
protected:
    void Add(int x, int y) {
        candidates.push_back({1, static_cast<std::int16_t>(x), static_cast<std::int16_t>(y)});
    }

    /// A horizontal run of pixels one gap apart: they touch in a chain.
    void AddRow(int left, int y, int count, int step = 2) {
        for (int i = 0; i < count; ++i)
            Add(left + i * step, y);
    }

    void AddBlock(int left, int low, int width, int height) {
        for (int y = low; y < low + height; ++y)
            AddRow(left, y, width, 1);
    }

    void Group(int minSize = 1, int maxSize = maximumGrainPixels) {
        GroupCandidates(field, candidates.data(), static_cast<int>(candidates.size()), field.grains,
                        groupCount, minSize, maxSize);
    }

    /// Groups with the plain transcription too and holds the tables equal.
    void GroupAndCompare(int minSize, int maxSize) {
        Group(minSize, maxSize);
        const auto plain = std::make_unique<reference::PlainAnalysis>();
        std::int32_t plainCount = 0;
        reference::GroupCandidates(*plain, candidates.data(), static_cast<int>(candidates.size()),
                                   plain->grains, plainCount, minSize, maxSize);
        ASSERT_EQ(groupCount, plainCount);
        for (int g = 0; g < grainTableSize; ++g) {
            const Grain& grain = GrainAt(g);
            const Grain& expected = plain->grains.grains[static_cast<std::size_t>(g)];
            ASSERT_EQ(grain.count, expected.count) << "grain " << g;
            ASSERT_TRUE(
                std::equal(grain.pixels.begin(), grain.pixels.begin() + grain.count, expected.pixels.begin()))
                << "grain " << g;
        }
    }

    std::vector<int> Counts() {
        std::vector<int> counts;
        for (int g = 0; g < groupCount; ++g)
            counts.push_back(GrainAt(g).count);
        return counts;
    }

    std::vector<Candidate> candidates;
    std::int32_t groupCount = -1;
};

#ifndef NDEBUG
TEST_F(GrainGrouping, OfANegativeNumberOfCandidatesIsAMistakeOfTheCaller) {
    EXPECT_DEATH(GroupCandidates(field, candidates.data(), -1, field.grains, groupCount, 1, 10),
                 "candidateCount >= 0");
}
#endif

TEST_F(GrainGrouping, JoinsPixelsUpToCityBlockDistanceTwo) {
    Add(10, 10);
    Add(12, 10); // one gap apart
    Add(11, 11); // diagonal
    Add(10, 12);
    Group();
    EXPECT_EQ(Counts(), (std::vector<int>{4}));
}

TEST_F(GrainGrouping, KeepsPixelsAtDistanceThreeApart) {
    Add(10, 10);
    Add(13, 10);
    Add(11, 12);
    Group();
    EXPECT_EQ(Counts(), (std::vector<int>{1, 1, 1}));
}

TEST_F(GrainGrouping, SkipsRemovedCandidates) {
    Add(10, 10);
    candidates.push_back({0, 11, 10});
    Add(13, 10);
    Group();
    EXPECT_EQ(Counts(), (std::vector<int>{1, 1}));
}

TEST_F(GrainGrouping, JoinsTheLowestNumberedOfTheTouchingGrains) {
    Add(10, 10);
    Add(13, 10);
    Add(11, 10); // touches both
    Group();
    EXPECT_EQ(Counts(), (std::vector<int>{2, 1}));
    EXPECT_EQ(GrainAt(0).pixels[1], (PixelPosition{11, 10}));
}

TEST_F(GrainGrouping, KeepsGrainsThatTouchAtOnePairSeparate) {
    Add(10, 10);
    Add(14, 10);
    Add(12, 10); // joins grain 0; touches (14, 10) only
    Group();
    EXPECT_EQ(Counts(), (std::vector<int>{2, 1}));
}

TEST_F(GrainGrouping, MergesGrainsThatTouchAtTwoPairsIntoTheLowerNumbered) {
    Add(10, 10);
    Add(14, 10);
    Add(15, 10); // grain 1
    Add(12, 10); // grain 0; touches (14, 10)
    Add(12, 11); // grain 0; touches nothing of grain 1
    Add(13, 9);  // grain 0 through (12, 10); touches (14, 10)
    Group();
    EXPECT_EQ(Counts(), (std::vector<int>{6, 0}));
    EXPECT_EQ(GrainAt(0).pixels[4], (PixelPosition{14, 10})) << "the moved pixels follow in their order";
    EXPECT_EQ(GrainAt(0).pixels[5], (PixelPosition{15, 10}));
}

TEST_F(GrainGrouping, MergesInASecondPassWhatTheFirstBroughtTogether) {
    Add(10, 10); // grain 0
    Add(10, 14); // grain 1
    Add(14, 10); // grain 2
    Add(12, 10); // 0; touches grain 2 once
    Add(13, 9);  // 0; touches grain 2 a second time
    Add(10, 12); // 0; touches grain 1 once
    Add(11, 15); // 1
    Add(14, 12); // 2
    Add(14, 14); // 2
    Add(13, 15); // 1; touches grain 2 once
    Group();
    // Grain 0 meets grain 1 with one pair, then takes grain 2, which brings the second pair.
    EXPECT_EQ(Counts(), (std::vector<int>{10, 0, 0}));
}

TEST_F(GrainGrouping, EmptiesGrainsBelowTheMinimumSize) {
    AddBlock(30, 30, 9, 11);  // 99
    AddBlock(60, 30, 19, 2);  // 38
    AddBlock(100, 30, 13, 3); // 39
    Group(MinimumReducedPixels(100));
    EXPECT_EQ(Counts(), (std::vector<int>{99, 0, 39}));
    EXPECT_EQ(groupCount, 3) << "emptied grains keep their slots";
}

TEST_F(GrainGrouping, EmptiesGrainsAboveTheMaximumSize) {
    AddBlock(30, 30, 10, 5);
    AddBlock(60, 30, 10, 4);
    Group(1, 49);
    EXPECT_EQ(Counts(), (std::vector<int>{0, 40}));
}

TEST_F(GrainGrouping, EmptiesATooLargeGrainBeforeItTakesItsNeighbours) {
    Add(10, 10);          // 0
    Add(14, 10);          // 1
    AddRow(8, 10, 5, -2); // 0
    Add(12, 10);          // 0; touches grain 1 once
    Add(13, 9);           // 0; touches grain 1 a second time
    Group(1, 7);
    EXPECT_EQ(Counts(), (std::vector<int>{0, 1}));
}

TEST_F(GrainGrouping, EmptiesATooLargeGrainBeforeItIsTaken) {
    Add(10, 10);       // 0
    Add(14, 10);       // 1
    AddRow(16, 10, 7); // 1
    Add(12, 10);       // 0; touches grain 1 once
    Add(13, 9);        // 0; touches grain 1 a second time
    Group(1, 7);
    EXPECT_EQ(Counts(), (std::vector<int>{3, 0}));
}

TEST_F(GrainGrouping, OfNothingUsesNoSlots) {
    GrainAt(0).count = 5;
    GrainAt(299).count = 5;
    Group();
    EXPECT_EQ(groupCount, 0);
    EXPECT_EQ(GrainAt(0).count, 0) << "all 300 grains are emptied first";
    EXPECT_EQ(GrainAt(299).count, 0);
}

TEST_F(GrainGrouping, EndsWithAMessageAtThe298thGrain) {
    for (int i = 0; i < 297; ++i)
        Add(10 + 4 * (i % 100), 10 + 4 * (i / 100));
    Group();
    EXPECT_EQ(groupCount, 297);
    EXPECT_TRUE(status.lines.empty());
    Add(10, 400);
    Add(11, 10); // would join grain 0, but the gathering has ended
    Group();
    EXPECT_EQ(groupCount, 297);
    EXPECT_EQ(GrainAt(0).count, 1);
    EXPECT_EQ(status.lines, (std::vector<std::string>{"MAX_GRAIN overflow: group counting stopped"}));
}

TEST_F(GrainGrouping, OverflowsSilentlyWithoutAStatusSink) {
    field.status = nullptr;
    for (int i = 0; i < 298; ++i)
        Add(10 + 4 * (i % 100), 10 + 4 * (i / 100));
    Group();
    EXPECT_EQ(groupCount, 297);
}

TEST_F(GrainGrouping, DropsWhatAFullGrainWouldTake) {
    AddBlock(100, 100, 100, 99); // 9,900
    AddRow(100, 199, 99, 1);     // 9,999
    Add(150, 200);               // touches the full grain: dropped
    Add(150, 202);               // touches only the dropped one: a new grain
    Group();
    EXPECT_EQ(Counts(), (std::vector<int>{9'999, 1}));
    EXPECT_TRUE(status.lines.empty());
}

TEST_F(GrainGrouping, LosesWhatDoesNotFitWhenGrainsMerge) {
    AddBlock(100, 100, 100, 98); // 9,800
    AddBlock(100, 201, 100, 3);  // 300, apart from the first
    AddRow(100, 199, 2);         // joins grain 0 and touches grain 1 twice
    Group();
    EXPECT_EQ(GrainAt(0).count, 10'000);
    EXPECT_EQ(GrainAt(1).count, 0);
    GroupAndCompare(1, maximumGrainPixels);
}

TEST_F(GrainGrouping, EmptiesAGrainThatMeetsAFullOneAtPixelsItCouldTake) {
    AddBlock(200, 100, 100, 97); // 0: 9,700
    AddBlock(346, 100, 10, 10);  // 1
    AddBlock(303, 100, 40, 10);  // 2: 400, of which 298 will fit
    AddBlock(301, 100, 1, 2);    // 0; two pairs with grain 2
    AddBlock(344, 100, 1, 2);    // 1; two pairs with pixels of grain 2 that fit
    Group();
    EXPECT_EQ(Counts(), (std::vector<int>{10'000, 0, 0})) << "taken with no room left: lost";
    GroupAndCompare(1, maximumGrainPixels);
}

TEST_F(GrainGrouping, KeepsAGrainThatMeetsAFullOneAtPixelsItLostOnly) {
    AddBlock(200, 100, 100, 97);
    AddBlock(346, 100, 10, 10);
    AddBlock(303, 100, 40, 10);
    AddBlock(301, 100, 1, 2);
    AddBlock(344, 108, 1, 2); // 1; two pairs with pixels of grain 2 that do not fit
    Group();
    EXPECT_EQ(Counts(), (std::vector<int>{10'000, 102, 0}));
    GroupAndCompare(1, maximumGrainPixels);
}

TEST_F(GrainGrouping, CountsThePixelsOfMergedGrainsTogetherWhenAFullGrainMeetsThem) {
    AddBlock(200, 100, 100, 95); // 0: 9,500
    AddBlock(303, 150, 38, 10);  // 1
    AddBlock(303, 163, 38, 20);  // 2
    AddBlock(344, 150, 5, 3);    // 3
    AddBlock(344, 157, 5, 3);    // 4
    Add(342, 150);               // 1; one pair with grain 3
    Add(342, 159);               // 1; one pair with grain 4
    AddRow(346, 154, 2);         // 3
    AddRow(346, 155, 2);         // 3; two pairs with grain 4: taken in the first pass
    AddRow(310, 161, 2, 4);      // 1; two pairs with grain 2: taken in the first pass
    Add(301, 155);               // 0; one pair with grain 1
    Add(301, 170);               // 0; one pair with grain 2
    Group();
    // In the second pass grain 0 takes what fits of grains 1 and 2; with one pair each to what were grains 3
    // and 4 it meets the grain that these have become.
    EXPECT_EQ(Counts(), (std::vector<int>{10'000, 0, 0, 0, 0}));
    GroupAndCompare(1, maximumGrainPixels);
}

TEST_F(GrainGrouping, OfAFieldKeepsAGrainOfExactlyTenThousandPixels) {
    AddBlock(100, 100, 100, 97); // 9,700
    AddBlock(203, 100, 20, 20);  // 400 of their own
    AddBlock(201, 100, 1, 2);    // joins the first, touches the second twice
    std::copy(candidates.begin(), candidates.end(), field.analyzer.candidates.begin());
    field.analyzer.candidateCount = static_cast<std::int32_t>(candidates.size());
    GroupGrains(field);
    EXPECT_EQ(field.findings.groupCount, 2);
    EXPECT_EQ(GrainAt(0).count, 10'000);
    EXPECT_EQ(field.findings.edges.EdgeLeft[0], (PixelPosition{99 * 4, 100 * 4}));
}

TEST_F(GrainGrouping, PassesOverCandidatesOutsideTheFrame) {
    Add(-1, 10);
    Add(10, -1);
    Add(1232, 10);
    Add(10, 1028);
    Add(32767, -32768);
    Add(1231, 1027);
    Add(0, 0);
    Group();
    EXPECT_EQ(Counts(), (std::vector<int>{1, 1}));
}

TEST_F(GrainGrouping, OfRandomListsIsThatOfThePairwiseSearch) {
    for (int round = 0; round < 60; ++round) {
        candidates.clear();
        const int side = 12 + painter.Below(90);
        const int count = painter.Below(side * side / (1 + round % 4) + 1);
        for (int i = 0; i < count; ++i)
            Add(40 + painter.Below(side), 40 + painter.Below(side)); // positions come twice, too
        GroupAndCompare(1 + painter.Below(6), round % 2 == 0 ? 3 + painter.Below(60) : maximumGrainPixels);
    }
}

TEST_F(GrainGrouping, OfShuffledUniquePixelsIsThatOfThePairwiseSearch) {
    for (int round = 0; round < 40; ++round) {
        candidates.clear();
        const int side = 20 + painter.Below(100);
        const int percent = 5 + painter.Below(60);
        for (int y = 0; y < side; ++y) {
            for (int x = 0; x < side; ++x) {
                if (painter.Below(100) < percent)
                    Add(900 + x, 700 + y);
            }
        }
        for (std::size_t i = candidates.size(); i > 1; --i)
            std::swap(candidates[i - 1],
                      candidates[static_cast<std::size_t>(painter.Below(static_cast<int>(i)))]);
        GroupAndCompare(1, 30 + painter.Below(10'000));
    }
}

TEST_F(GrainGrouping, OfLargeGrainsThatMeetAtTheCapacityIsThatOfThePairwiseSearch) {
    for (const int height : {96, 98, 99, 100}) {
        candidates.clear();
        AddBlock(200, 100, 100, height);                // up to 10,000
        AddBlock(200, 204, 100, 60);                    // 6,000, apart
        AddBlock(200, 300, 40, 40);                     // 1,600, apart
        AddBlock(200, 100 + height, 100, 104 - height); // the bridge to the second
        AddBlock(200, 264, 30, 36);                     // and from the second to the third
        GroupAndCompare(1, maximumGrainPixels);
    }
}

TEST_F(GrainGrouping, LeavesNothingBehindForTheNextTime) {
    AddBlock(30, 30, 10, 10);
    Group();
    candidates.clear();
    Add(31, 31);
    Group();
    EXPECT_EQ(Counts(), (std::vector<int>{1}));
}

TEST(MinimumSizes, AreTruncated) {
    EXPECT_EQ(MinimumReducedPixels(100), 39);
    EXPECT_EQ(MinimumReducedPixels(0), 0);
    EXPECT_EQ(MinimumReducedPixels(-100), -39);
    EXPECT_EQ(MinimumFullPixels(100), 625);
    EXPECT_EQ(MinimumFullPixels(101), 631);
    EXPECT_EQ(MinimumFullPixels(std::numeric_limits<int>::max()), std::numeric_limits<int>::max());
}

class LargestOfGrains : public AnalysisFixture {
protected:
    int Largest(std::initializer_list<int> counts) {
        int g = 0;
        for (const int count : counts)
            GrainAt(g++).count = count;
        return LargestGrain(field.grains, g);
    }
};

TEST_F(LargestOfGrains, IsTheLastThatExceedsGrainZero) {
    EXPECT_EQ(Largest({5, 9, 7}), 2);
    EXPECT_EQ(Largest({9, 5, 7}), 0);
    EXPECT_EQ(Largest({5, 5, 5}), 0);
    EXPECT_EQ(Largest({}), 0);
}

class MergingTwoGrains : public AnalysisFixture {};

TEST_F(MergingTwoGrains, NeedsTwoTouchingPairs) {
    SetPixels(GrainAt(0), 10, 10, 1, 1);
    SetPixels(GrainAt(1), 12, 10, 1, 1);
    MergeIfTouching(GrainAt(0), GrainAt(1));
    EXPECT_EQ(GrainAt(1).count, 1);
    SetPixels(GrainAt(1), 11, 10, 2, 1);
    MergeIfTouching(GrainAt(0), GrainAt(1));
    EXPECT_EQ(GrainAt(0).count, 3);
    EXPECT_EQ(GrainAt(1).count, 0);
}

TEST_F(MergingTwoGrains, MovesAsManyPixelsAsFit) {
    SetPixels(GrainAt(0), 100, 100, 100, 99); // 9,900
    SetPixels(GrainAt(1), 300, 100, 15, 10);  // 150
    EXPECT_EQ(AppendGrain(GrainAt(0), GrainAt(1)), 100);
    EXPECT_EQ(GrainAt(0).count, 10'000);
    EXPECT_EQ(GrainAt(0).pixels[9'999], (PixelPosition{309, 106}));
    EXPECT_EQ(GrainAt(1).count, 0);
}

} // namespace
} // namespace tessaro
