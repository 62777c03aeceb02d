#include "platform/qt/qt_drawing_surface.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <climits>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace tessaro {

namespace {

constexpr std::uint8_t paper = 128;

Picture GreyPicture(int width, int height) {
    Picture picture(width, height);
    std::ranges::fill(picture.pixels, paper);
    return picture;
}

bool IsUntouched(const Picture& picture) {
    return std::ranges::all_of(picture.pixels, [](std::uint8_t byte) { return byte == paper; });
}

using Point = std::pair<int, int>; // x, y

/// Where the picture is not paper any more.
std::set<Point> Inked(const Picture& picture) {
    std::set<Point> inked;
    for (int y = 0; y < picture.height; ++y) {
        for (int x = 0; x < picture.width; ++x) {
            const std::uint8_t* pixel = picture.Pixel(x, y);
            if (pixel[0] != paper || pixel[1] != paper || pixel[2] != paper)
                inked.insert({x, y});
        }
    }
    return inked;
}

/// The smallest rectangle around the ink, right and bottom excluded.
SurfaceRectangle Bounds(const std::set<Point>& inked) {
    SurfaceRectangle bounds{INT_MAX, INT_MAX, INT_MIN, INT_MIN};
    for (const auto& [x, y] : inked) {
        bounds = {std::min(bounds.left, x), std::min(bounds.top, y), std::max(bounds.right, x + 1),
                  std::max(bounds.bottom, y + 1)};
    }
    return bounds;
}

/// The contract's words, pixel by pixel.
std::set<Point> FramePixels(int left, int top, int right, int bottom, int penWidth) {
    std::set<Point> frame;
    for (int y = top; y < bottom; ++y) {
        for (int x = left; x < right; ++x) {
            if (x == left || x == right - 1 || y == top || y == bottom - 1) {
                frame.insert({x, y});
                if (penWidth == 2) {
                    frame.insert({x, y - 1});
                    frame.insert({x - 1, y});
                }
            }
        }
    }
    return frame;
}

std::set<Point> ClippedTo(const std::set<Point>& points, int width, int height) {
    std::set<Point> inside;
    for (const Point& point : points)
        if (point.first >= 0 && point.second >= 0 && point.first < width && point.second < height)
            inside.insert(point);
    return inside;
}

constexpr std::array extremes{INT_MIN, INT_MIN + 1, -1'000'000, -1, 0, 5, 1'000'000, INT_MAX - 1, INT_MAX};

} // namespace

TEST(QtDrawingSurface, StoresAPixelAsBlueGreenRed) {
    Picture picture = GreyPicture(3, 2);
    QtDrawingSurface(picture).SetPixel(2, 1, {10, 20, 30});
    EXPECT_EQ(std::vector(picture.Pixel(2, 1), picture.Pixel(2, 1) + 4),
              (std::vector<std::uint8_t>{30, 20, 10, 255}));
    EXPECT_EQ(Inked(picture), (std::set<Point>{{2, 1}}));
}

TEST(QtDrawingSurface, IgnoresPixelsOutsideThePicture) {
    Picture picture = GreyPicture(4, 3);
    QtDrawingSurface surface(picture);
    for (const auto& [x, y] : {Point{-1, 0}, Point{0, -1}, Point{4, 0}, Point{0, 3}, Point{INT_MIN, INT_MIN},
                               Point{INT_MAX, INT_MAX}, Point{INT_MAX, 0}, Point{0, INT_MIN}})
        surface.SetPixel(x, y, pureRed);
    EXPECT_TRUE(IsUntouched(picture));
}

TEST(QtDrawingSurface, DrawsExactlyTheOutlineForEveryOrderOfCorners) {
    for (const int penWidth : {1, 2}) {
        for (const SurfaceRectangle corners :
             {SurfaceRectangle{3, 4, 10, 9}, SurfaceRectangle{10, 4, 3, 9}, SurfaceRectangle{3, 9, 10, 4},
              SurfaceRectangle{10, 9, 3, 4}}) {
            Picture picture = GreyPicture(16, 14);
            QtDrawingSurface(picture).DrawFrame(corners, penWidth, pureRed);
            EXPECT_EQ(Inked(picture), FramePixels(3, 4, 10, 9, penWidth));
        }
    }
}

TEST(QtDrawingSurface, DrawsATwoPixelFrameAsDrawnByHand) {
    Picture picture = GreyPicture(7, 7);
    QtDrawingSurface(picture).DrawFrame({2, 2, 6, 6}, 2, black);
    // The outline lies in rows 2 and 5 and in columns 2 and 5. Just above it are rows 1 and 4, just left of
    // it columns 1 and 4; the corner (1, 1) is neither.
    const std::vector<std::string> expected{
        ".......", //
        "..####.", //
        ".#####.", //
        ".##.##.", //
        ".#####.", //
        ".#####.", //
        ".......",
    };
    std::vector<std::string> drawn(7, std::string(7, '.'));
    for (const auto& [x, y] : Inked(picture))
        drawn[static_cast<std::size_t>(y)][static_cast<std::size_t>(x)] = '#';
    EXPECT_EQ(drawn, expected);
}

TEST(QtDrawingSurface, DrawsNothingForAFrameWithoutPixels) {
    Picture picture = GreyPicture(8, 8);
    QtDrawingSurface surface(picture);
    surface.DrawFrame({3, 2, 3, 6}, 2, pureRed);
    surface.DrawFrame({2, 3, 6, 3}, 2, pureRed);
    EXPECT_TRUE(IsUntouched(picture));
}

TEST(QtDrawingSurface, ClipsFramesAtEveryBorder) {
    for (const int penWidth : {1, 2}) {
        for (const int left : {-5, -1, 0, 1, 6, 9, 11}) {
            for (const int top : {-5, -1, 0, 1, 6, 9, 11}) {
                Picture picture = GreyPicture(10, 9);
                QtDrawingSurface(picture).DrawFrame({left, top, left + 6, top + 5}, penWidth, pureRed);
                EXPECT_EQ(Inked(picture),
                          ClippedTo(FramePixels(left, top, left + 6, top + 5, penWidth), 10, 9));
            }
        }
    }
}

TEST(QtDrawingSurface, TakesExtremeCornersForFramesAndText) {
    Picture picture = GreyPicture(10, 9);
    QtDrawingSurface surface(picture);
    for (const int left : extremes) {
        for (const int top : extremes) {
            for (const int right : extremes) {
                for (const int bottom : extremes)
                    surface.DrawFrame({left, top, right, bottom}, 2, pureRed);
                surface.DrawText("12.3", {left, top, right, top}, TextAlignment::Centre, black);
                surface.DrawText("12.3", {left, top, right, top}, TextAlignment::Right, black);
                surface.DrawText("12.3", {left, top, right, right}, TextAlignment::CentredBothWays, black);
            }
        }
    }
    Picture whole = GreyPicture(10, 9);
    QtDrawingSurface(whole).DrawFrame({INT_MIN, INT_MIN, INT_MAX, INT_MAX}, 2, pureRed);
    EXPECT_TRUE(IsUntouched(whole)) << "the outline lies far outside";
}

TEST(QtDrawingSurface, DrawsNothingOnAnEmptyPicture) {
    Picture picture;
    QtDrawingSurface surface(picture);
    surface.SetPixel(0, 0, black);
    surface.DrawFrame({-1, -1, 1, 1}, 2, black);
    surface.DrawText("12.3", {0, 0, 50, 12}, TextAlignment::Right, black);
    EXPECT_TRUE(picture.pixels.empty());
}

TEST(QtDrawingSurface, EndsRightAlignedTextAtTheRightOfTheArea) {
    for (const char* text : {"1", "12.34 %", "0.98", "graphene 1234"}) {
        Picture picture = GreyPicture(200, 40);
        QtDrawingSurface(picture).DrawText(text, {20, 10, 150, 22}, TextAlignment::Right, black);
        const SurfaceRectangle bounds = Bounds(Inked(picture));
        EXPECT_GE(bounds.right, 150 - 3) << text; // the last glyph's own margin
        EXPECT_LE(bounds.right, 150) << text;
    }
}

TEST(QtDrawingSurface, CentresTextBothWays) {
    for (const int height : {20, 91, 92}) {
        Picture picture = GreyPicture(200, 140);
        QtDrawingSurface(picture).DrawText("+X", {40, 10, 140, 10 + height}, TextAlignment::CentredBothWays,
                                           black);
        const SurfaceRectangle bounds = Bounds(Inked(picture));
        EXPECT_NEAR(bounds.left + bounds.right, 40 + 140, 3);
        // Capitals reach from the baseline upwards; what hangs below it counts for the middle of a line.
        EXPECT_NEAR(bounds.top + bounds.bottom, 10 + 10 + height, 4);
    }
}

TEST(QtDrawingSurface, CentresTextBetweenLeftAndRight) {
    for (const char* text : {"8", "88", "808.808"}) {
        Picture picture = GreyPicture(200, 40);
        QtDrawingSurface(picture).DrawText(text, {40, 10, 140, 22}, TextAlignment::Centre, black);
        const SurfaceRectangle bounds = Bounds(Inked(picture));
        EXPECT_NEAR((bounds.left + bounds.right) / 2.0, 90.0, 1.5) << text;
    }
}

TEST(QtDrawingSurface, PutsTheTopOfTheTextAtTheTopOfTheArea) {
    for (const int top : {0, 7, 20}) {
        Picture picture = GreyPicture(100, 40);
        QtDrawingSurface(picture).DrawText("0123456789", {0, top, 100, top + 12}, TextAlignment::Centre,
                                           black);
        const SurfaceRectangle bounds = Bounds(Inked(picture));
        EXPECT_GE(bounds.top, top);
        EXPECT_LE(bounds.top, top + 4);
        EXPECT_LE(bounds.bottom, top + 12);
        EXPECT_GE(bounds.bottom - bounds.top, 7) << "digits of a readable height";
    }
}

TEST(QtDrawingSurface, KeepsDigitsOfRowsElevenPixelsApartFromTouching) {
    Picture picture = GreyPicture(60, 40);
    QtDrawingSurface surface(picture);
    surface.DrawText("0.88 %", {0, 0, 60, 12}, TextAlignment::Right, black);
    const SurfaceRectangle first = Bounds(Inked(picture));
    Picture second = GreyPicture(60, 40);
    QtDrawingSurface(second).DrawText("0.88 %", {0, 11, 60, 23}, TextAlignment::Right, black);
    EXPECT_LT(first.bottom, Bounds(Inked(second)).top);
}

TEST(QtDrawingSurface, NeverClipsTextByItsArea) {
    Picture wide = GreyPicture(100, 30);
    Picture narrow = GreyPicture(100, 30);
    QtDrawingSurface(wide).DrawText("12.34 %", {0, 5, 90, 25}, TextAlignment::Right, black);
    QtDrawingSurface(narrow).DrawText("12.34 %", {90, 5, 90, 5}, TextAlignment::Right, black);
    EXPECT_FALSE(IsUntouched(wide));
    EXPECT_EQ(wide.pixels, narrow.pixels);
}

TEST(QtDrawingSurface, ClipsTextAtEveryBorder) {
    Picture large = GreyPicture(120, 90);
    QtDrawingSurface(large).DrawText("12.34 %", {40, 40, 80, 52}, TextAlignment::Centre, pureRed);
    constexpr int width = 20;
    constexpr int height = 8;
    for (int offsetX = 0; offsetX < 100; offsetX += 7) {
        for (int offsetY = 20; offsetY < 60; offsetY += 3) {
            Picture window = GreyPicture(width, height);
            QtDrawingSurface(window).DrawText("12.34 %",
                                              {40 - offsetX, 40 - offsetY, 80 - offsetX, 52 - offsetY},
                                              TextAlignment::Centre, pureRed);
            for (int y = 0; y < height; ++y)
                for (int x = 0; x < width; ++x)
                    EXPECT_EQ(window.Pixel(x, y)[2], large.Pixel(x + offsetX, y + offsetY)[2]);
        }
    }
}

TEST(QtDrawingSurface, DrawsTextInItsColourWithoutColouredEdges) {
    Picture picture = GreyPicture(100, 30);
    QtDrawingSurface(picture).DrawText("HHH", {0, 5, 90, 25}, TextAlignment::Right, {200, 128, 128});
    bool full = false;
    for (const auto& [x, y] : Inked(picture)) {
        const std::uint8_t* pixel = picture.Pixel(x, y);
        EXPECT_EQ(pixel[0], paper);
        EXPECT_EQ(pixel[1], paper);
        EXPECT_GT(pixel[2], paper);
        full |= pixel[2] == 200;
    }
    EXPECT_TRUE(full);
}

TEST(QtDrawingSurface, ReadsTextAsUtf8AndSurvivesWhatIsNot) {
    Picture micro = GreyPicture(60, 30);
    Picture letter = GreyPicture(60, 30);
    QtDrawingSurface(micro).DrawText("\xC2\xB5m", {0, 5, 50, 25}, TextAlignment::Right, black);
    QtDrawingSurface(letter).DrawText("m", {0, 5, 50, 25}, TextAlignment::Right, black);
    EXPECT_LT(Bounds(Inked(micro)).left, Bounds(Inked(letter)).left) << "one more letter";
    QtDrawingSurface surface(micro);
    surface.DrawText("\xFF\xC2 \x80\xE2\x82", {0, 5, 50, 25}, TextAlignment::Right, black);
    surface.DrawText(std::string_view("a\0b\nc", 5), {0, 5, 50, 25}, TextAlignment::Right, black);
    surface.DrawText("", {0, 5, 50, 25}, TextAlignment::Right, black);
    surface.DrawText(std::string(100'000, 'W'), {0, 5, 50, 25}, TextAlignment::Centre, black);
}

TEST(QtDrawingSurface, DrawsTheSameTextInSeveralThreadsAtOnce) {
    const auto draw = [](Picture& picture) {
        for (int i = 0; i < 50; ++i)
            QtDrawingSurface(picture).DrawText("12.34 %", {10, i, 90, i + 12}, TextAlignment::Right, pureRed);
    };
    Picture expected = GreyPicture(100, 70);
    draw(expected);
    std::vector<Picture> pictures(4, GreyPicture(100, 70));
    std::vector<std::jthread> threads;
    threads.reserve(pictures.size());
    for (Picture& picture : pictures)
        threads.emplace_back([&] { draw(picture); });
    threads.clear();
    for (const Picture& picture : pictures)
        EXPECT_EQ(picture.pixels, expected.pixels);
}

} // namespace tessaro
