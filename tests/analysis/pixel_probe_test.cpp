#include "analysis/pixel_probe.h"
#include "platform/fake/scripted_message_boxes.h"
#include "support/drawn_frames.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace tessaro {
namespace {

/// Client position of the main window that shows buffer position (x, y).
std::uint32_t ClickOn(int x, int y) {
    return PackPosition(x, 1028 - y);
}

class PixelProbe : public testing::Test {
protected:
    PixelProbe() {
        frame.pixels = painter.frame.Data();
        painter.Fill(substrate100);
        SetBackground(100.0F);
    }

    void SetBackground(float value) {
        for (int channel = 0; channel < 3; ++channel)
            for (int gx = 0; gx < 16; ++gx)
                for (int gy = 0; gy < 16; ++gy)
                    background.SetMeasured(channel, gx, gy, value);
    }

    ProbedPixel Measure(std::uint32_t position) const { return MeasurePixel(frame, background, position); }
    void Probe(std::uint32_t position) {
        ProbePixel(frame, background, position, boxes, static_cast<WindowHandle>(9), settings);
    }

    FramePainter painter;
    FrameRecord frame;
    BackgroundGrid background;
    ScriptedMessageBoxes boxes;
    Settings settings;
};

TEST_F(PixelProbe, TurnsTheWindowsRowIntoABufferRow) {
    const ProbedPixel pixel = Measure(PackPosition(300, 28));
    EXPECT_EQ(pixel.x, 300);
    EXPECT_EQ(pixel.y, 1000);
}

TEST_F(PixelProbe, MeasuresARowAndAColumnOfThreePixels) {
    painter.Set(299, 500, {10, 11, 12});
    painter.Set(300, 500, {20, 21, 22});
    painter.Set(301, 500, {30, 31, 34});
    painter.Set(300, 499, {41, 42, 43});
    painter.Set(300, 501, {50, 51, 52});
    const ProbedPixel pixel = Measure(ClickOn(300, 500));
    // Red: (10 + 20 + 30) / 3 = 20 and (41 + 20 + 50) / 3 = 37; (20 + 37) / 2 = 28, each truncated.
    // Green: 63 / 3 = 21, 114 / 3 = 38, 59 / 2 = 29. Blue: 68 / 3 = 22, 117 / 3 = 39, 61 / 2 = 30.
    EXPECT_EQ(pixel.intensity, (std::array<float, 3>{28.0F, 29.0F, 30.0F}));
    EXPECT_EQ(pixel.contrast, (std::array<float, 3>{-72.0F, -71.0F, -70.0F}));
}

TEST_F(PixelProbe, ComparesWithTheBlockUnderThePixelChannelByChannel) {
    // 16 * 308 / 1232 = 4 and 16 * 514 / 1028 = 8
    background.SetMeasured(0, 4, 8, 200.0F);
    background.SetMeasured(1, 4, 8, 80.0F);
    background.SetMeasured(2, 4, 8, 400.0F);
    EXPECT_EQ(Measure(ClickOn(308, 514)).contrast, (std::array<float, 3>{-50.0F, 25.0F, -75.0F}));
    EXPECT_EQ(Measure(ClickOn(307, 514)).contrast, (std::array<float, 3>{0.0F, 0.0F, 0.0F}));
    EXPECT_EQ(Measure(ClickOn(308, 513)).contrast, (std::array<float, 3>{0.0F, 0.0F, 0.0F}));
    EXPECT_EQ(Measure(ClickOn(384, 578)).contrast[0], -50.0F) << "the block's last pixel";
    EXPECT_EQ(Measure(ClickOn(385, 578)).contrast[0], 0.0F);
    EXPECT_EQ(Measure(ClickOn(384, 579)).contrast[0], 0.0F);
}

TEST_F(PixelProbe, OnBareSubstrateFindsNoContrast) {
    const ProbedPixel pixel = Measure(ClickOn(600, 500));
    EXPECT_EQ(pixel.contrast, (std::array<float, 3>{0.0F, 0.0F, 0.0F}));
    TakeAsTarget(pixel, settings);
    EXPECT_EQ(settings.contrastTolerance, 0.0F);
}

TEST_F(PixelProbe, OnTheWindowsTopRowReadsTheBuffersLastRow) {
    painter.Rectangle(0, 1027, frameWidth, 1, {10, 10, 10});
    const ProbedPixel pixel = Measure(PackPosition(600, 0));
    EXPECT_EQ(pixel.y, 1028);
    EXPECT_EQ(pixel.intensity[0], 10.0F); // rows 1027, 1028 and 1029 are all the last one
}

// A row below the last block is the first row of the next column of blocks.
TEST_F(PixelProbe, OnTheWindowsTopRowComparesWithTheNeighbourInTheGrid) {
    background.SetMeasured(0, 8, 0, 50.0F); // 16 * 600 / 1232 = 7, and one column on
    EXPECT_EQ(Measure(PackPosition(600, 0)).contrast[0], 100.0F);
    EXPECT_EQ(Measure(PackPosition(600, 1)).contrast[0], 0.0F);
}

TEST_F(PixelProbe, OnTheWindowsBottomRowReadsTheFirstRows) {
    painter.Rectangle(0, 0, frameWidth, 1, {40, 40, 40});
    const ProbedPixel pixel = Measure(PackPosition(600, 1027));
    EXPECT_EQ(pixel.y, 1);
    EXPECT_EQ(pixel.intensity[0], 90.0F); // 100 along the row; (40 + 100 + 100) / 3 = 80 across
}

TEST_F(PixelProbe, InTheFirstColumnCountsItTwice) {
    painter.Rectangle(0, 0, 1, frameHeight, {40, 40, 40});
    // Along the row (40 + 40 + 100) / 3 = 60, across 40.
    EXPECT_EQ(Measure(ClickOn(0, 500)).intensity[0], 50.0F);
}

TEST_F(PixelProbe, OutsideTheFrameReadsItsBorder) {
    painter.Rectangle(1231, 0, 1, frameHeight, {60, 60, 60});
    painter.Rectangle(0, 0, 1, frameHeight, {30, 30, 30});
    EXPECT_EQ(Measure(PackPosition(5000, 500)).intensity[0], 60.0F);
    EXPECT_EQ(Measure(PackPosition(5000, 500)).x, 5000);
    EXPECT_EQ(Measure(PackPosition(-7, 500)).intensity[0], 30.0F);
    EXPECT_EQ(Measure(PackPosition(-7, 500)).x, -7);
    const ProbedPixel corner = Measure(PackPosition(-32768, -32768));
    EXPECT_EQ(corner.y, 1028 + 32768);
    EXPECT_EQ(corner.intensity[0], 30.0F);
    EXPECT_EQ(Measure(PackPosition(32767, 32767)).intensity[0], 60.0F);
}

TEST_F(PixelProbe, OnAZeroBackgroundFindsAnInfiniteContrast) {
    SetBackground(0.0F);
    painter.Fill({10, 0, 5});
    const ProbedPixel pixel = Measure(ClickOn(600, 500));
    EXPECT_EQ(pixel.contrast[0], std::numeric_limits<float>::infinity());
    EXPECT_TRUE(std::isnan(pixel.contrast[1]));
    EXPECT_NE(ProbeText(pixel).find("Contrast: \tR:inf% \tG:"), std::string::npos);
    TakeAsTarget(pixel, settings);
    EXPECT_TRUE(std::isnan(settings.targetContrast[1])) << "taken as it is";
}

TEST_F(PixelProbe, ShowsPositionIntensityAndContrast) {
    ProbedPixel pixel;
    pixel.x = 12;
    pixel.y = -3;
    pixel.intensity = {88.0F, 92.0F, 98.5F};
    pixel.contrast = {-12.4F, -7.6F, 130.0F};
    EXPECT_EQ(ProbeCaption(pixel), "Pixel Analysis at Position: (12,-3)");
    EXPECT_EQ(ProbeText(pixel), "Intensity: \tR:88.0 \tG:92.0 \tB:98.5\n"
                                "Contrast: \tR:-12% \tG:-8% \tB:130%\n"
                                "\n"
                                "Do you want to change the contrast with these values?");
}

TEST_F(PixelProbe, AsksWithTheMainWindowAsOwner) {
    boxes.answers = {false};
    Probe(PackPosition(600, 500));
    ASSERT_EQ(boxes.questions.size(), 1U);
    EXPECT_EQ(boxes.questions[0].owner, static_cast<WindowHandle>(9));
    EXPECT_EQ(boxes.questions[0].caption, "Pixel Analysis at Position: (600,528)");
    EXPECT_EQ(boxes.questions[0].text, "Intensity: \tR:100.0 \tG:100.0 \tB:100.0\n"
                                       "Contrast: \tR:0% \tG:0% \tB:0%\n\n"
                                       "Do you want to change the contrast with these values?");
}

TEST_F(PixelProbe, AnsweredNoChangesNothing) {
    painter.Fill(singleLayer100);
    settings.material = 1;
    settings.targetContrast = {1.0F, 2.0F, 3.0F};
    boxes.answers = {false};
    Probe(PackPosition(600, 500));
    EXPECT_EQ(settings.targetContrast, (std::array<float, 3>{1.0F, 2.0F, 3.0F}));
    EXPECT_EQ(settings.contrastTolerance, 6.0F);
    EXPECT_EQ(settings.material, 1);
}

TEST_F(PixelProbe, AnsweredYesTakesTheContrastHalfOfItAsToleranceAndMaterial4) {
    painter.Fill(singleLayer100);
    settings.material = 1;
    boxes.answers = {true};
    Probe(PackPosition(600, 500));
    EXPECT_EQ(settings.targetContrast, (std::array<float, 3>{-12.0F, -8.0F, -2.0F}));
    EXPECT_EQ(settings.contrastTolerance, 6.0F);
    EXPECT_EQ(settings.material, 4);
    EXPECT_EQ(settings.scoreThreshold, 70.0F);
    EXPECT_EQ(settings.minimumFlakeArea, 100);
}

TEST_F(PixelProbe, AnsweredYesStoresWhatItShowedEvenIfTheFrameHasChanged) {
    boxes.answers = {true};
    boxes.whileAsking = [&] { painter.Fill({1, 2, 3}); };
    Probe(PackPosition(600, 500));
    EXPECT_EQ(settings.targetContrast, (std::array<float, 3>{0.0F, 0.0F, 0.0F}));
}

struct Tolerance {
    std::array<float, 3> contrast;
    float tolerance;
};

class ProbeTolerance : public testing::TestWithParam<Tolerance> {};

TEST_P(ProbeTolerance, IsHalfTheLargestContrastAtMost20) {
    ProbedPixel pixel;
    pixel.contrast = GetParam().contrast;
    Settings settings;
    TakeAsTarget(pixel, settings);
    EXPECT_EQ(settings.contrastTolerance, GetParam().tolerance);
    EXPECT_EQ(settings.targetContrast, GetParam().contrast);
}

INSTANTIATE_TEST_SUITE_P(
    Contrasts, ProbeTolerance,
    testing::Values(Tolerance{{-12.0F, -8.0F, -2.0F}, 6.0F}, Tolerance{{-50.0F, -10.0F, 0.0F}, 20.0F},
                    Tolerance{{1.0F, -30.0F, 2.0F}, 15.0F}, Tolerance{{1.0F, 2.0F, 39.0F}, 19.5F},
                    Tolerance{{40.0F, 0.0F, 0.0F}, 20.0F}, Tolerance{{0.0F, 0.0F, 0.0F}, 0.0F},
                    Tolerance{{0.0F, std::numeric_limits<float>::infinity(), 0.0F}, 20.0F}));

} // namespace
} // namespace tessaro
