#include "analysis/pixel_access.h"
#include "support/drawn_frames.h"

#include <gtest/gtest.h>

namespace tessaro {
namespace {

class PixelAccess : public testing::Test {
protected:
    PixelAccess() { record.pixels = painter.frame.Data(); }

    FramePainter painter;
    FrameRecord record;
};

TEST_F(PixelAccess, ReadsRedGreenAndBlueFromTheirBytes) {
    painter.Set(7, 9, {10, 20, 30});
    EXPECT_EQ(GetChannel(record, red, 7, 9), 10);
    EXPECT_EQ(GetChannel(record, green, 7, 9), 20);
    EXPECT_EQ(GetChannel(record, blue, 7, 9), 30);
}

TEST_F(PixelAccess, ReadsBlueForAnyOtherChannel) {
    painter.Set(7, 9, {10, 20, 30});
    EXPECT_EQ(GetChannel(record, 3, 7, 9), 30);
    EXPECT_EQ(GetChannel(record, -1, 7, 9), 30);
}

TEST_F(PixelAccess, ReadsTheLastRowsFirstPixelAtMinusFiveTwoThousand) {
    painter.Set(0, frameHeight - 1, {11, 12, 13});
    EXPECT_EQ(GetChannel(record, red, -5, 2000), 11);
}

TEST_F(PixelAccess, ReadsTheNearestBorderPixelOnEverySide) {
    painter.Set(frameWidth - 1, 0, {1, 2, 3});
    painter.Set(frameWidth - 1, frameHeight - 1, {4, 5, 6});
    EXPECT_EQ(GetChannel(record, red, frameWidth, -1), 1);
    EXPECT_EQ(GetChannel(record, blue, 1 << 30, 1 << 30), 6);
}

TEST_F(PixelAccess, AveragesTruncatedAlongXAndY) {
    painter.Set(10, 20, {10, 0, 0});
    painter.Set(11, 20, {11, 0, 0});
    painter.Set(12, 20, {11, 0, 0});
    painter.Set(10, 21, {50, 0, 0});
    painter.Set(10, 22, {51, 0, 0});
    EXPECT_EQ(AverageAlongX(record, red, 10, 20, 3), 10); // 32 / 3
    EXPECT_EQ(AverageAlongY(record, red, 10, 20, 3), 37); // 111 / 3
    EXPECT_EQ(AverageAlongX(record, red, 12, 20, 1), 11);
}

TEST_F(PixelAccess, AveragesTheBorderPixelAgainOutsideTheFrame) {
    painter.Set(0, 5, {90, 0, 0});
    painter.Set(1, 5, {30, 0, 0});
    EXPECT_EQ(AverageAlongX(record, red, -1, 5, 3), 70); // 90, 90, 30
}

TEST(ClampInt, SetsAndReturnsTheLimitOnlyOutsideTheRange) {
    int value = -3;
    EXPECT_EQ(ClampInt(value, 0, 9), 0);
    EXPECT_EQ(value, 0);
    value = 12;
    EXPECT_EQ(ClampInt(value, 0, 9), 9);
    EXPECT_EQ(value, 9);
    value = 5;
    EXPECT_EQ(ClampInt(value, 0, 9), 5);
    EXPECT_EQ(value, 5);
}

} // namespace
} // namespace tessaro
