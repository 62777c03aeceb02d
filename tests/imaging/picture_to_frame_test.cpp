#include "imaging/picture_to_frame.h"

#include <gtest/gtest.h>

#include <utility>

namespace tessaro {
namespace {

void SetPixel(Picture& picture, int x, int y, int red, int green, int blue) {
    std::uint8_t* pixel = picture.Pixel(x, y);
    pixel[0] = static_cast<std::uint8_t>(blue);
    pixel[1] = static_cast<std::uint8_t>(green);
    pixel[2] = static_cast<std::uint8_t>(red);
}

void Fill(Picture& picture, int left, int right, int red, int green, int blue) {
    for (int y = 0; y < picture.height; ++y) {
        for (int x = left; x < right; ++x)
            SetPixel(picture, x, y, red, green, blue);
    }
}

int RedOf(const FrameBuffer& frame, int x, int y) {
    return frame.Data()[PixelOffset(x, y) + 2];
}

TEST(PictureToFrame, TakesAPictureOfTheFramesSizePixelByPixel) {
    Picture picture(frameWidth, frameHeight);
    SetPixel(picture, 5, 0, 11, 12, 13);
    SetPixel(picture, 6, 1027, 21, 22, 23);
    FrameBuffer frame;
    PictureToFrame(picture, frame);
    EXPECT_EQ(RedOf(frame, 5, 1027), 11) << "the picture's top row is the frame's last";
    EXPECT_EQ(RedOf(frame, 6, 0), 21);
    EXPECT_EQ(RedOf(frame, 5, 0), 0);
}

TEST(PictureToFrame, IsTakenBackByFrameToPicture) {
    Picture picture(frameWidth, frameHeight);
    for (std::size_t i = 0; i < picture.pixels.size(); ++i)
        picture.pixels[i] = static_cast<std::uint8_t>(i * 7 / 3);
    FrameBuffer frame;
    PictureToFrame(picture, frame);
    EXPECT_EQ(FrameToPicture(frame).pixels, picture.pixels);
}

TEST(StretchedToFrame, IsThePictureThatTheFrameHolds) {
    for (const auto& [width, height] : {std::pair{frameWidth, frameHeight}, {3, 2}, {1300, 5}}) {
        Picture picture(width, height);
        for (std::size_t i = 0; i < picture.pixels.size(); ++i)
            picture.pixels[i] = static_cast<std::uint8_t>(i * 7 / 3);
        FrameBuffer frame;
        PictureToFrame(picture, frame);
        const Picture stretched = StretchedToFrame(picture);
        EXPECT_EQ(stretched.width, frameWidth);
        EXPECT_EQ(stretched.height, frameHeight);
        EXPECT_EQ(stretched.pixels, FrameToPicture(frame).pixels) << width << " x " << height;
    }
}

struct PictureSize {
    int width;
    int height;
};

class StretchedPicture : public testing::TestWithParam<PictureSize> {};

TEST_P(StretchedPicture, OfOneColourFillsTheFrameWithExactlyThatColour) {
    Picture picture(GetParam().width, GetParam().height);
    Fill(picture, 0, picture.width, 255, 137, 1);
    FrameBuffer frame;
    PictureToFrame(picture, frame);
    for (int i = 0; i < framePixelCount; ++i) {
        const std::uint8_t* pixel = frame.Data() + static_cast<std::ptrdiff_t>(i) * bytesPerPixel;
        ASSERT_TRUE(pixel[0] == 1 && pixel[1] == 137 && pixel[2] == 255) << i;
    }
}

TEST_P(StretchedPicture, KeepsLeftLeftAndTopInTheLastRows) {
    Picture picture(GetParam().width, GetParam().height);
    Fill(picture, 0, picture.width, 100, 100, 100);
    for (int y = 0; y < (picture.height + 1) / 2; ++y) {
        for (int x = 0; x < (picture.width + 1) / 2; ++x)
            SetPixel(picture, x, y, 200, 100, 100);
    }
    FrameBuffer frame;
    PictureToFrame(picture, frame);
    EXPECT_EQ(RedOf(frame, 0, frameHeight - 1), 200);
    if (picture.width > 1) {
        EXPECT_EQ(RedOf(frame, frameWidth - 1, frameHeight - 1), 100);
    }
    if (picture.height > 1) {
        EXPECT_EQ(RedOf(frame, 0, 0), 100);
    }
}

INSTANTIATE_TEST_SUITE_P(Sizes, StretchedPicture,
                         testing::Values(PictureSize{1, 1}, PictureSize{2, 3}, PictureSize{1231, 1027},
                                         PictureSize{1233, 1029}, PictureSize{1920, 1200},
                                         PictureSize{2464, 2056}, PictureSize{20000, 2},
                                         PictureSize{2, 20000}, PictureSize{1232, 500}));

TEST(PictureToFrame, AveragesThePixelsThatFallTogether) {
    Picture picture(2 * frameWidth, frameHeight);
    SetPixel(picture, 200, 0, 100, 0, 0);
    SetPixel(picture, 201, 0, 50, 0, 0);
    FrameBuffer frame;
    PictureToFrame(picture, frame);
    EXPECT_EQ(RedOf(frame, 100, frameHeight - 1), 75);
    EXPECT_EQ(RedOf(frame, 99, frameHeight - 1), 0);
    EXPECT_EQ(RedOf(frame, 101, frameHeight - 1), 0);
}

TEST(PictureToFrame, InterpolatesBetweenPixelsThatAreSpreadApart) {
    Picture picture(frameWidth / 2, frameHeight);
    Fill(picture, 0, 100, 0, 0, 0);
    Fill(picture, 100, picture.width, 200, 0, 0);
    FrameBuffer frame;
    PictureToFrame(picture, frame);
    EXPECT_EQ(RedOf(frame, 198, 5), 0);
    EXPECT_EQ(RedOf(frame, 199, 5), 50); // a quarter of the way between the centres
    EXPECT_EQ(RedOf(frame, 200, 5), 150);
    EXPECT_EQ(RedOf(frame, 201, 5), 200);
}

} // namespace
} // namespace tessaro
