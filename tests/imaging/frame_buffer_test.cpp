#include "imaging/frame_buffer.h"

#include <gtest/gtest.h>

namespace tessaro {
namespace {

TEST(FrameBuffer, HasHalfTheSensorsSizeEachWay) {
    EXPECT_EQ(frameWidth, 1232);
    EXPECT_EQ(frameHeight, 1028);
    EXPECT_EQ(framePixelCount, 1'266'496);
    EXPECT_EQ(frameByteCount, 5'065'984);
}

TEST(FrameBuffer, StoresBlueGreenRedRowAfterRow) {
    FrameBuffer frame;
    frame.SetPixel(3, 2, 10, 20, 30);
    const std::uint8_t* pixel = frame.Data() + (1232 * 2 + 3) * 4;
    EXPECT_EQ(pixel[0], 30);
    EXPECT_EQ(pixel[1], 20);
    EXPECT_EQ(pixel[2], 10);
    EXPECT_EQ(pixel[3], 0);
}

TEST(FrameBuffer, IsShownBottomUp) {
    EXPECT_EQ(WindowRow(0), 1028);
    EXPECT_EQ(WindowRow(1000), 28);
    EXPECT_EQ(StoredRow(0), 1027);
    EXPECT_EQ(StoredRow(1027), 0);
}

} // namespace
} // namespace tessaro
