#include "simulated_field/pattern_fields.h"
#include "support/frame_reading.h"

#include <gtest/gtest.h>

#include <set>

namespace tessaro {
namespace {

bool BackgroundIsSubstrateEverywhere(const FrameBuffer& frame) {
    for (int gx = 0; gx < 16; ++gx) {
        for (int gy = 0; gy < 16; ++gy)
            if (MostFrequentRed(frame, gx, gy) != 100)
                return false;
    }
    return true;
}

/// Whether a 4 x 4 block's means lie within 6 percentage points of -12, -8, -2 against 100.
bool BlockMatches(const FrameBuffer& frame, int blockX, int blockY) {
    const ChannelValues mean = MeanBetween(frame, blockX * 4, blockX * 4 + 3, blockY * 4, blockY * 4 + 3);
    return mean[0] >= 82 && mean[0] <= 94 && mean[1] >= 86 && mean[1] <= 98 && mean[2] >= 92 &&
           mean[2] <= 104;
}

int MatchingBlocks(const FrameBuffer& frame) {
    int matching = 0;
    for (int blockY = 0; blockY < 257; ++blockY)
        for (int blockX = 0; blockX < 308; ++blockX)
            matching += BlockMatches(frame, blockX, blockY) ? 1 : 0;
    return matching;
}
TEST(PatternFields, EvenFieldIsBareSubstrate) {
    const FrameBuffer frame = EvenField();
    EXPECT_EQ(IntensityAt(frame, 0, 0), (Intensity{100, 100, 100}));
    EXPECT_EQ(MeanBetween(frame, 0, frameWidth - 1, 0, frameHeight - 1),
              (ChannelValues{100.0, 100.0, 100.0}));
}

TEST(PatternFields, SpecklesAreWholeBlocksOfExactIntensities) {
    const FrameBuffer frame = SpeckleField(4, 0.3);
    int matching = 0;
    for (int y = 0; y < frameHeight; ++y) {
        for (int x = 0; x < frameWidth; ++x) {
            const Intensity intensity = IntensityAt(frame, x, y);
            ASSERT_EQ(intensity, IntensityAt(frame, x / 4 * 4, y / 4 * 4));
            if (intensity == Intensity{88, 92, 98})
                ++matching;
            else
                ASSERT_EQ(intensity, (Intensity{100, 100, 100}));
        }
    }
    EXPECT_NEAR(matching / 16.0, 0.3 * 308 * 257, 600.0); // nearly five standard deviations
    EXPECT_TRUE(BackgroundIsSubstrateEverywhere(frame));
}

TEST(PatternFields, SpecklesFollowSeedAndProbability) {
    EXPECT_TRUE(SameBytes(SpeckleField(4, 0.2), SpeckleField(4, 0.2)));
    EXPECT_FALSE(SameBytes(SpeckleField(4, 0.2), SpeckleField(5, 0.2)));
    EXPECT_TRUE(SameBytes(SpeckleField(4, 0.0), EvenField()));
    EXPECT_EQ(MatchingBlocks(SpeckleField(4, 1.0)), 308 * 257);
}

TEST(PatternFields, SquaresLieOnTheirGrid) {
    const FrameBuffer frame = GridOfSquares(21);
    const Intensity bare = {100, 100, 100};
    const Intensity match = {88, 92, 98};
    EXPECT_EQ(IntensityAt(frame, 100, 12), match);
    EXPECT_EQ(IntensityAt(frame, 127, 39), match);
    EXPECT_EQ(IntensityAt(frame, 99, 12), bare);
    EXPECT_EQ(IntensityAt(frame, 100, 11), bare);
    EXPECT_EQ(IntensityAt(frame, 128, 12), bare);
    EXPECT_EQ(IntensityAt(frame, 152, 12), match);  // the second of the row
    EXPECT_EQ(IntensityAt(frame, 1088, 12), match); // the twentieth and last
    EXPECT_EQ(IntensityAt(frame, 100, 64), match);  // the twenty-first opens the next row
    EXPECT_EQ(IntensityAt(frame, 152, 64), bare);
    EXPECT_EQ(MatchingBlocks(frame), 21 * 49);
}

TEST(PatternFields, UsualSquaresOutnumberTheGrainsOfOneField) {
    EXPECT_EQ(GridOfSquaresCapacity(28, 24), 20 * 19);
    const FrameBuffer full = GridOfSquares(1000);
    EXPECT_EQ(MatchingBlocks(full), 380 * 49);
    EXPECT_TRUE(BackgroundIsSubstrateEverywhere(full));
}

TEST(PatternFields, HugeBlobsMatchInEveryBlockAndKeepTheBackground) {
    const FrameBuffer frame = HugeBlobs();
    EXPECT_EQ(MatchingBlocks(frame), 2 * 99 * 99);
    EXPECT_TRUE(BackgroundIsSubstrateEverywhere(frame));
    const FrameBuffer largest = HugeBlobs(124);
    EXPECT_EQ(MatchingBlocks(largest), 2 * 124 * 124);
    EXPECT_TRUE(BackgroundIsSubstrateEverywhere(largest));
}

TEST(PatternFields, HugeBlobsAreDappledInSevenOfSixteenPixels) {
    const FrameBuffer frame = HugeBlobs();
    std::set<Intensity> seen;
    int dark = 0;
    for (int y = 0; y < frameHeight; ++y) {
        for (int x = 0; x < frameWidth; ++x) {
            seen.insert(IntensityAt(frame, x, y));
            dark += IntensityAt(frame, x, y)[0] == 84 ? 1 : 0;
        }
    }
    EXPECT_EQ(seen, (std::set<Intensity>{{84, 92, 98}, {100, 100, 100}}));
    EXPECT_EQ(dark, 2 * 99 * 99 * 7);
}

TEST(PatternFields, TwoHugeBlobsStayApart) {
    const FrameBuffer frame = HugeBlobs(124);
    // Columns of blocks: 25 + 64 and 25 + 192 are the centres, so 27 to 150 and 155 to 278.
    EXPECT_TRUE(BlockMatches(frame, 27, 128));
    EXPECT_TRUE(BlockMatches(frame, 150, 128));
    EXPECT_FALSE(BlockMatches(frame, 26, 128));
    for (int blockX = 151; blockX <= 154; ++blockX)
        EXPECT_FALSE(BlockMatches(frame, blockX, 128));
    EXPECT_TRUE(BlockMatches(frame, 155, 128));
    EXPECT_TRUE(BlockMatches(frame, 278, 128));
    EXPECT_FALSE(BlockMatches(frame, 279, 128));
}

} // namespace
} // namespace tessaro
