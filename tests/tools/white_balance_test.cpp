#include "analysis/frame_measurements.h"
#include "analysis/frame_statistics.h"
#include "analyze/white_balance.h"
#include "imaging/picture_to_frame.h"
#include "support/drawn_frames.h"

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
