#include "rendered_levels.h"
#include "twin/operator_view.h"

#include <gtest/gtest.h>

namespace tessaro {
namespace {

TEST(OperatorView, MakesAPixelOfEachCell) {
    Mosaic mosaic;
    mosaic.bytes[0] = 10;                    // red
    mosaic.bytes[1] = 21;                    // green
    mosaic.bytes[twinSensorWidth] = 24;      // green
    mosaic.bytes[twinSensorWidth + 1] = 40;  // blue
    mosaic.bytes[twinMosaicBytes - 1] = 200; // the last cell's blue
    FrameBuffer frame;
    MosaicToFrame(mosaic.bytes, frame);
    const std::uint8_t* const topLeft = frame.Data() + PixelOffset(0, frameHeight - 1);
    EXPECT_EQ(topLeft[2], 10);
    EXPECT_EQ(topLeft[1], 22); // half of 45, rounded down
    EXPECT_EQ(topLeft[0], 40);
    EXPECT_EQ(frame.Data()[PixelOffset(frameWidth - 1, 0)], 200);
}

TEST(OperatorView, LeavesTheFrameAloneForAMosaicOfAnotherSize) {
    FrameBuffer frame;
    frame.SetPixel(0, 0, 1, 2, 3);
    MosaicToFrame(std::vector<std::uint8_t>(7, 9), frame);
    EXPECT_EQ(frame.Data()[2], 1);
}

} // namespace
} // namespace tessaro
