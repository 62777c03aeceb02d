#include "twin/camera/pixel_formats.h"
#include "twin/sensor_renderer.h"

#include <gtest/gtest.h>

#include <vector>

namespace tessaro {
namespace {

constexpr std::size_t width = twinSensorWidth;

class PixelFormatsTest : public testing::Test {
protected:
    void SetUp() override {
        // The cell at (2, 4): red 10, greens 20 and 31, blue 40.
        mosaic[4 * width + 2] = 10;
        mosaic[4 * width + 3] = 20;
        mosaic[5 * width + 2] = 31;
        mosaic[5 * width + 3] = 40;
    }

    std::vector<std::uint8_t> mosaic = std::vector<std::uint8_t>(twinMosaicBytes);
};

using Bytes = std::vector<std::uint8_t>;

TEST_F(PixelFormatsTest, BayerIsTheMosaicItself) {
    Bytes image(4);
    CopyRegion(mosaic, {2, 4, 2, 2}, PixelFormat::BayerRg8, image);
    EXPECT_EQ(image, (Bytes{10, 20, 31, 40}));
}

TEST_F(PixelFormatsTest, WholeSensorIsCopiedWhole) {
    mosaic.back() = 7;
    Bytes image(twinMosaicBytes, 1);
    CopyRegion(mosaic, {0, 0, twinSensorWidth, twinSensorHeight}, PixelFormat::BayerRg8, image);
    EXPECT_EQ(image, mosaic);
}

TEST_F(PixelFormatsTest, GreyIsTheMeanOfTheCell) {
    Bytes image(4);
    CopyRegion(mosaic, {2, 4, 2, 2}, PixelFormat::Mono8, image);
    EXPECT_EQ(image, (Bytes{25, 25, 25, 25})); // (10 + 2 * 25 + 40) / 4
}

TEST_F(PixelFormatsTest, ColourIsThatOfTheCell) {
    Bytes image(6);
    CopyRegion(mosaic, {2, 4, 2, 1}, PixelFormat::Rgb8, image);
    EXPECT_EQ(image, (Bytes{10, 25, 40, 10, 25, 40}));
}

TEST_F(PixelFormatsTest, OddOffsetsAreTakenToTheCell) {
    Bytes image(1);
    CopyRegion(mosaic, {3, 5, 1, 1}, PixelFormat::BayerRg8, image);
    EXPECT_EQ(image, Bytes{10});
}

TEST_F(PixelFormatsTest, WhatLiesBesideTheSensorIsBlack) {
    mosaic.back() = 9;
    Bytes image(16, 1);
    CopyRegion(mosaic, {twinSensorWidth - 2, twinSensorHeight - 2, 4, 4}, PixelFormat::BayerRg8, image);
    EXPECT_EQ(image, (Bytes{0, 0, 0, 0, 0, 9, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
}

TEST_F(PixelFormatsTest, NoMoreIsWrittenThanThereIsRoomFor) {
    Bytes image(5, 1);
    CopyRegion(mosaic, {2, 4, 4, 4}, PixelFormat::BayerRg8, image);
    EXPECT_EQ(image, (Bytes{10, 20, 0, 0, 31}));
    CopyRegion(mosaic, {2, 4, 4, 4}, PixelFormat::Rgb8, image);
    EXPECT_EQ(image[0], 10);
    Bytes none;
    CopyRegion(mosaic, {0, 0, 16, 16}, PixelFormat::BayerRg8, none);
    EXPECT_TRUE(none.empty());
}

} // namespace
} // namespace tessaro
