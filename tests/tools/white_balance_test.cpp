#include "analysis/frame_measurements.h"
#include "analysis/frame_statistics.h"
#include "analyze/white_balance.h"
#include "imaging/picture_to_frame.h"
#include "support/drawn_frames.h"
#include "support/frame_reading.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>

namespace tessaro {
namespace {

std::array<double, 3> PeaksOf(const FrameBuffer& frame) {
    const auto measured = std::make_unique<FrameMeasurements>();
    FrameRecord record;
    record.pixels = frame.Data();
    ComputeFrameStatistics(record, record, *measured);
    return record.bgPeak;
}

struct SubstrateColour {
    FramePainter::Rgb colour;
};

class WhiteBalance : public testing::TestWithParam<SubstrateColour> {};

TEST_P(WhiteBalance, BringsRedAndBlueToGreensDominantIntensity) {
    FramePainter painter(3);
    painter.Fill(GetParam().colour);
    painter.AddNoise(5);
    FrameBuffer balanced;
    BalancedFrame(FrameToPicture(painter.frame), balanced);
    const auto peaks = PeaksOf(balanced);
    EXPECT_EQ(peaks[1], PeaksOf(painter.frame)[1]) << "green stays";
    EXPECT_EQ(peaks[0], peaks[1]);
    EXPECT_EQ(peaks[2], peaks[1]);
}

INSTANTIATE_TEST_SUITE_P(Substrates, WhiteBalance,
                         testing::Values(SubstrateColour{{129, 113, 149}}, SubstrateColour{{80, 140, 60}},
                                         SubstrateColour{{100, 100, 100}}, SubstrateColour{{200, 61, 30}}));

TEST(WhiteBalanceOf, AGreySubstrateChangesNothing) {
    FramePainter painter;
    painter.Fill({100, 100, 100});
    painter.Rectangle(300, 300, 50, 50, {88, 92, 98});
    FrameBuffer balanced;
    BalancedFrame(FrameToPicture(painter.frame), balanced);
    EXPECT_TRUE(std::equal(balanced.Data(), balanced.Data() + frameByteCount, painter.frame.Data()));
}

TEST(WhiteBalanceOf, ABlackChannelLeavesItBlack) {
    FramePainter painter;
    painter.Fill({0, 100, 150});
    FrameBuffer balanced;
    BalancedFrame(FrameToPicture(painter.frame), balanced);
    EXPECT_EQ(PeaksOf(balanced), (std::array<double, 3>{0, 100, 100}));
}

TEST(WhiteBalanceOf, AChannelAgainstABlackGreenMakesItBlack) {
    FramePainter painter;
    painter.Fill({1, 0, 200});
    FrameBuffer balanced;
    BalancedFrame(FrameToPicture(painter.frame), balanced);
    EXPECT_EQ(PeaksOf(balanced), (std::array<double, 3>{0, 0, 0}));
}

TEST(WhiteBalanceOf, ABlackPictureEnds) {
    FrameBuffer balanced;
    BalancedFrame(Picture(3, 3), balanced);
    EXPECT_EQ(PeaksOf(balanced), (std::array<double, 3>{0, 0, 0}));
}

/// Paints 6 of 10 stripes in one colour, the others in a second. Each stripe is as wide as whole reduced
/// pixels.
FramePainter TwoColours(FramePainter::Rgb frequent, FramePainter::Rgb rare) {
    FramePainter painter;
    painter.Fill(frequent);
    for (int x = 0; x < frameWidth; x += 40)
        painter.Rectangle(x, 0, 16, frameHeight, rare);
    return painter;
}

FrameBuffer Balanced(const FramePainter& painter) {
    FrameBuffer balanced;
    BalancedFrame(FrameToPicture(painter.frame), balanced);
    return balanced;
}

constexpr int inFrequent = 20; // a column of the first stripe of each colour
constexpr int inRare = 4;

TEST(WhiteBalanceOf, AChannelThatMissesAtFirstIsTriedAgainWithoutTouchingTheOther) {
    // 496 of the 1232 columns are rare: the mean of red is 101.208, and what takes that to 101 leaves the
    // frequent 100 where it is. Half a level more makes 100.29 of it, three quarters 100.54, which is 101.
    // Blue hits at once and must keep its gain of a half: a quarter of a level less would make 100.75 of it.
    const FrameBuffer balanced = Balanced(TwoColours({100, 101, 202}, {103, 101, 202}));
    EXPECT_EQ(IntensityAt(balanced, inFrequent, 500), (Intensity{101, 101, 101}));
    EXPECT_EQ(IntensityAt(balanced, inRare, 500), (Intensity{104, 101, 101}));
}

TEST(WhiteBalanceOf, AChannelThatNeverHitsKeepsTheGainThatCameNearest) {
    // The mean of red is 1.597. The trials take it to 98 .. 102, hence the frequent 2 to 122.7 .. 127.7: the
    // nearest to 100 is that of the last trial but one.
    const FrameBuffer balanced = Balanced(TwoColours({2, 100, 100}, {1, 100, 100}));
    EXPECT_EQ(IntensityAt(balanced, inFrequent, 500)[0], 123);
    EXPECT_EQ(IntensityAt(balanced, inFrequent, 500)[2], 100);
}

TEST(WhiteBalanceOf, AChannelWhoseDominantIntensityIsZeroStaysThoughNotAllOfItIsBlack) {
    const FrameBuffer balanced = Balanced(TwoColours({0, 100, 100}, {4, 100, 100}));
    EXPECT_EQ(IntensityAt(balanced, inFrequent, 500), (Intensity{0, 100, 100}));
    EXPECT_EQ(IntensityAt(balanced, inRare, 500), (Intensity{4, 100, 100}));
}

TEST(WhiteBalanceOf, AFlakeKeepsItsContrast) {
    FramePainter painter;
    painter.Fill({150, 100, 200});
    painter.Rectangle(300, 300, 50, 50, {132, 92, 196}); // -12, -8, -2 percent
    FrameBuffer balanced;
    BalancedFrame(FrameToPicture(painter.frame), balanced);
    const std::uint8_t* pixel = balanced.Data() + PixelOffset(320, 320);
    EXPECT_EQ(pixel[2], 88);
    EXPECT_EQ(pixel[1], 92);
    EXPECT_EQ(pixel[0], 98);
}

} // namespace
} // namespace tessaro
