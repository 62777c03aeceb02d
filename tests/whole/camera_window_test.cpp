#include "app/settings.h"
#include "support/running_twin.h"
#include "support/sanitizer.h"
#include "whole/wafer_truth.h"
#include "whole/window_driver.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace tessaro {
namespace {

constexpr double pixelsPerUm = 2.464;
constexpr std::array<double, 3> singleLayerContrast = {-12.0, -8.0, -2.0}; // percent: red, green, blue
constexpr double frameMiddleX = 616.0;
constexpr double frameMiddleY = 514.0;

constexpr int liveFramesASecond = addressSanitizer ? 4 : 8; // of ten, as often as the test can look

/// The operator's program with the simulated microscope behind it. A single layer lies left of the image's
/// middle.
class CameraWindow : public WindowDriver {
protected:
    void SetUp() override {
        WindowDriver::SetUp();
        const std::string truth = (home.Path() / "truth.json").string();
        twin = std::make_unique<RunningTwin>(
            TESSARO_TWIN,
            std::vector<std::string>{"--wafer-mm", "1.5", "--seed", "5", "--truth", truth, "--quiet"});
        ASSERT_TRUE(twin->IsReady()) << twin->Errors();
        flake = SingleLayerNear({750.0, 750.0}, 400.0, truth);
        MoveStage({flake.x + 80.0, flake.y});
        arguments = {"--camera", "127.0.0.1", "--stage-port", "none"};
    }

    void MoveStage(PlaceOnWafer place) {
        stage = place;
        EXPECT_EQ(twin->Say("move " + std::to_string(place.x) + "," + std::to_string(place.y) + ",0"), "ok");
    }

    // Where a place of the wafer shows, in image pixels.
    int ColumnOf(PlaceOnWafer place) const {
        return static_cast<int>(std::lround(frameMiddleX + (place.x - stage.x) * pixelsPerUm));
    }
    int RowOf(PlaceOnWafer place) const {
        return static_cast<int>(std::lround(frameMiddleY - (place.y - stage.y) * pixelsPerUm));
    }

    /// The image lies below the menu bar, which is bright, and keeps its place.
    void FindImage(const Picture& screen) {
        const auto isDark = [&](int x, int y) { return screen.Pixel(x, y)[1] < 200; };
        for (imageTop = widestTitleAndMenu; imageTop > 0 && isDark(700, imageTop - 1); --imageTop) {
        }
        for (imageLeft = widestFrame; imageLeft > 0 && isDark(imageLeft - 1, 600); --imageLeft) {
        }
    }

    using Intensity = std::array<double, 3>; // red, green, blue

    Intensity MeanAround(const Picture& screen, int column, int row) const {
        constexpr int reach = 4;
        Intensity sum = {};
        for (int y = row - reach; y <= row + reach; ++y)
            for (int x = column - reach; x <= column + reach; ++x)
                for (std::size_t c = 0; c < sum.size(); ++c)
                    sum[c] += screen.Pixel(x + imageLeft, y + imageTop)[2 - c];
        for (double& channel : sum)
            channel /= (2 * reach + 1) * (2 * reach + 1);
        return sum;
    }

    /// What is on the screen shows the flake where it should be, each channel with the contrast that is
    /// expected, within 2.5 per cent.
    bool ShowsFlake(const std::array<double, 3>& contrast, const std::string& screenshot) {
        const auto screen = display.Screenshot(screenshots / (screenshot + ".png"));
        if (!screen.has_value())
            return false;
        FindImage(*screen);
        const Intensity inside = MeanAround(*screen, ColumnOf(flake), RowOf(flake));
        const Intensity beside = MeanAround(*screen, ColumnOf(flake) - beyondFlake, RowOf(flake));
        seen = {};
        for (std::size_t c = 0; c < seen.size(); ++c)
            seen[c] = (inside[c] / beside[c] - 1.0) * 100.0;
        return std::abs(seen[0] - contrast[0]) < 2.5 && std::abs(seen[1] - contrast[1]) < 2.5 &&
               std::abs(seen[2] - contrast[2]) < 2.5;
    }

    /// One channel alone, in its own colour.
    bool ShowsOnly(std::size_t channel, const std::string& screenshot) {
        ShowsWafer(screenshot);
        bool isAlone = true;
        for (std::size_t c = 0; c < seen.size(); ++c)
            isAlone = isAlone && (c == channel) != std::isnan(seen[c]); // 0 beside 0
        return isAlone && std::abs(seen[channel] - singleLayerContrast[channel]) < 2.5;
    }

    bool ShowsWafer(const std::string& screenshot) { return ShowsFlake(singleLayerContrast, screenshot); }

    /// Grey values of the test pattern repeat on rows; a picture of the wafer never saturates.
    bool ShowsTestPattern() {
        const auto screen = display.Screenshot(screenshots / "camera-gone.png");
        if (!screen.has_value())
            return false;
        std::set<int> levels;
        for (int x = 0; x < 700; ++x)
            levels.insert(screen->Pixel(x + imageLeft, 300 + imageTop)[1]);
        return levels.size() > 150;
    }

    /// Some of the image, in which the noise of each frame shows.
    std::vector<std::uint8_t> RowOfPixels() {
        const auto screen = display.Screenshot(screenshots / "row.png");
        if (!screen.has_value())
            return {};
        return {screen->Pixel(imageLeft, imageTop + 300), screen->Pixel(imageLeft + 400, imageTop + 300)};
    }

    /// Noise makes each frame another. Looks as often as it can, about 15 times a second.
    int FramesWithinASecond() {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(1);
        std::string last;
        int frames = 0;
        while (std::chrono::steady_clock::now() < end) {
            std::string now = display.PartOfScreen(imageLeft + 300, imageTop + 300);
            frames += now != last ? 1 : 0;
            last = std::move(now);
        }
        return frames;
    }

    void StartOnWafer(const std::string& screenshot) {
        Start();
        ASSERT_TRUE(Eventually([&] { return ShowsWafer(screenshot); }))
            << "saw " << seen[0] << " " << seen[1] << " " << seen[2];
    }

    std::chrono::milliseconds TimeToExit() {
        const auto start = std::chrono::steady_clock::now();
        display.Close(mainTitle);
        EXPECT_TRUE(Eventually([this] { return program->ExitStatus().has_value(); }));
        EXPECT_EQ(program->ExitStatus(), 0);
        return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() -
                                                                     start);
    }

    static constexpr int beyondFlake = 60; // pixels: bare substrate

    std::unique_ptr<RunningTwin> twin;
    PlaceOnWafer flake;
    PlaceOnWafer stage;
    Intensity seen = {};
};

TEST_F(CameraWindow, ShowsTheWaferLiveAndWhereTheStageGoes) {
    StartOnWafer("live");
    MoveStage({stage.x + 40.0, stage.y + 100.0});
    EXPECT_TRUE(Eventually([&] { return ShowsWafer("live-moved"); }))
        << "right and up on the wafer, left and down here";
    Exit();
    EXPECT_EQ(Output(),
              "Trying 'GainAuto = Continuous'.\nInitial Gain = 0\nExposureAuto 'GainAuto = Continuous'.\n"
              "Initial exposure time = 10000 us\n");
}

TEST_F(CameraWindow, ShowsNearlyTenFramesASecond) {
    StartOnWafer("live");
    int most = 0;
    EXPECT_TRUE(Eventually([&] {
        most = std::max(most, FramesWithinASecond());
        return most >= liveFramesASecond;
    })) << "at most "
        << most;
    Exit();
}

TEST_F(CameraWindow, ShowsEachChannelForTwoSecondsAndIsLiveAgain) {
    StartOnWafer("live");
    const std::array<const char*, 3> entries = {"Red image", "Green Image", "Blue image"};
    for (std::size_t channel = 0; channel < entries.size(); ++channel) {
        Menu(entries[channel]);
        EXPECT_TRUE(Eventually([&] { return ShowsOnly(channel, "channel-" + std::to_string(channel)); }))
            << entries[channel] << ": saw " << seen[0] << " " << seen[1] << " " << seen[2];
        EXPECT_TRUE(Eventually([&] { return ShowsWafer("live"); })) << "after " << entries[channel];
    }
    Exit();
}

TEST_F(CameraWindow, ProbesACapturedFlakeAndTakesItsContrast) {
    StartOnWafer("live");
    Menu("Stop/Start Grabbing");
    std::vector<std::uint8_t> still;
    ASSERT_TRUE(Eventually([&] { return RowOfPixels() == std::exchange(still, RowOfPixels()); }));
    Menu("Capture");
    ASSERT_TRUE(Eventually([&] { return RowOfPixels() != still && ShowsWafer("captured"); }));
    Menu("Red image"); // which measures the background of a frame of four exposures, too
    ASSERT_TRUE(Eventually([&] { return ShowsOnly(0, "captured-red"); }));
    display.Click(imageLeft + ColumnOf(flake), imageTop + RowOf(flake));
    ASSERT_TRUE(Eventually([&] { return display.Shows("Pixel Analysis at Position"); }));
    display.Screenshot(screenshots / "probe-on-flake.png");
    display.Keys({"Return"});
    ASSERT_TRUE(Eventually([this] { return !display.Shows("Pixel Analysis"); }));
    Exit();
    Settings settings;
    ASSERT_EQ(ReadSettingsLine(ReadText(ConfigFile()), settings), settingsFieldCount);
    for (std::size_t c = 0; c < singleLayerContrast.size(); ++c)
        EXPECT_NEAR(settings.targetContrast[c], singleLayerContrast[c], 1.5) << c;
}

TEST_F(CameraWindow, GoesOnWithTheTestPatternWhenTheCameraVanishesAndComesBackWithAutoContrastOnce) {
    StartOnWafer("live");
    EXPECT_EQ(twin->Say("fault camera-gone"), "ok");
    EXPECT_TRUE(Eventually([this] { return ShowsTestPattern(); }));
    Menu("Information");
    ASSERT_TRUE(Eventually([this] { return display.Shows("About Tessaro"); }))
        << "the window goes on working";
    display.Keys({"Return"});
    Menu("Auto Contrast Once"); // in vain
    EXPECT_EQ(twin->Say("clear camera-gone"), "ok");
    EXPECT_TRUE(Eventually([this] { return ShowsTestPattern(); })) << "nobody asked for the camera yet";
    Menu("Auto Contrast Once");
    EXPECT_TRUE(Eventually([this] { return ShowsWafer("live-again"); }));
    Exit();
}

TEST_F(CameraWindow, ExitsInTimeWhenTheCameraVanishedJustBefore) {
    StartOnWafer("live");
    twin->Signal(SIGKILL);
    EXPECT_LT(TimeToExit(), std::chrono::seconds(8));
}

TEST_F(CameraWindow, GoesOnShowingTheWaferWithOneInAHundredPacketsLost) {
    StartOnWafer("live");
    EXPECT_EQ(twin->Say("fault lost-packets=0.01"), "ok");
    MoveStage({stage.x + 40.0, stage.y + 100.0});
    EXPECT_TRUE(Eventually([&] { return ShowsWafer("packets-lost"); }));
    Exit();
}

TEST_F(CameraWindow, ShowsTheTestPatternInsteadOfFramesOfAnotherSize) {
    StartOnWafer("live");
    EXPECT_EQ(twin->Say("fault frame-size=1232x1028"), "ok");
    EXPECT_TRUE(Eventually([this] { return ShowsTestPattern(); }));
    EXPECT_EQ(twin->Say("clear frame-size"), "ok");
    EXPECT_TRUE(Eventually([&] { return ShowsWafer("whole-frames-again"); }));
    Exit();
}

TEST_F(CameraWindow, StartsWithoutACameraAndSaysSo) {
    EXPECT_EQ(twin->Say("fault camera-gone"), "ok");
    Start();
    EXPECT_TRUE(Eventually([this] { return ShowsTestPattern(); }));
    Exit();
    EXPECT_EQ(Output(), "") << "there was nothing to adjust";
}

} // namespace
} // namespace tessaro
