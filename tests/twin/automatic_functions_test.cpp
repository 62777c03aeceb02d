#include "twin/camera/automatic_functions.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

namespace tessaro {
namespace {

/// A sensor that looks at an even surface: `level` at 10 ms without gain.
class EvenScene {
public:
    explicit EvenScene(double level, std::array<double, 3> tint = {1.0, 1.0, 1.0})
        : m_level(level), m_tint(tint) {}

    std::vector<std::uint8_t> Mosaic(const ExposureSettings& exposure) const {
        std::vector<std::uint8_t> mosaic(twinMosaicBytes);
        for (std::size_t i = 0; i < mosaic.size(); ++i) {
            const std::size_t x = i % twinSensorWidth;
            const std::size_t y = i / twinSensorWidth;
            mosaic[i] = Level(exposure, x % 2 + y % 2);
        }
        return mosaic;
    }

private:
    std::uint8_t Level(const ExposureSettings& exposure, std::size_t channel) const {
        const double signal = m_level * exposure.exposureTimeUs / 10'000.0 *
                              std::pow(10.0, exposure.gainDb / 20.0) * exposure.balanceRatios[channel] *
                              m_tint[channel];
        return static_cast<std::uint8_t>(std::clamp(signal, 0.0, 255.0));
    }

    double m_level;
    std::array<double, 3> m_tint; // red, green, blue
};

constexpr double usualTarget = 147.5; // 255 * 0.3^(1 / 2.2), the level of a brightness of 0.3

/// Frames until nothing is adjusted any more, at most 30.
int FramesUntilOff(CameraSettings& settings, const EvenScene& scene, AutomaticMode CameraSettings::*mode) {
    int frames = 0;
    while (settings.*mode != AutomaticMode::Off && frames < 30) {
        AdjustAutomatically(settings, scene.Mosaic(settings.exposure), false);
        ++frames;
    }
    return frames;
}

TEST(AutomaticFunctions, LeaveEverythingAloneWhenOff) {
    CameraSettings settings;
    AdjustAutomatically(settings, EvenScene(10.0).Mosaic(settings.exposure), false);
    EXPECT_EQ(settings.exposure.exposureTimeUs, 10'000.0);
    EXPECT_EQ(settings.exposure.gainDb, 0.0);
    EXPECT_EQ(settings.exposure.balanceRatios, (std::array<double, 3>{1.0, 1.0, 1.0}));
}

TEST(AutomaticFunctions, ExposureOnceReachesTheTargetInAFewFramesAndGoesBackToOff) {
    for (const double level : {20.0, 140.0, 4000.0}) {
        CameraSettings settings;
        settings.exposureAuto = AutomaticMode::Once;
        EXPECT_LE(FramesUntilOff(settings, EvenScene(level), &CameraSettings::exposureAuto), 8) << level;
        EXPECT_NEAR(EvenScene(level).Mosaic(settings.exposure)[0], usualTarget, 3.0) << level;
    }
}

TEST(AutomaticFunctions, BrightnessIsThatOfAScreen) {
    for (const auto& [brightness, level] :
         {std::pair{0.2176, 127.5}, {0.5, 186.1}, {0.8, 230.4}}) { // 255 * b^(1 / 2.2)
        CameraSettings settings;
        settings.targetBrightness = brightness;
        settings.exposureAuto = AutomaticMode::Once;
        FramesUntilOff(settings, EvenScene(140.0), &CameraSettings::exposureAuto);
        EXPECT_NEAR(EvenScene(140.0).Mosaic(settings.exposure)[0], level, 4.0) << brightness;
    }
}

TEST(AutomaticFunctions, ReachTheDarkestAndTheBrightestTarget) {
    for (const auto& [brightness, level] : {std::pair{0.1, 89.5}, {0.9, 243.1}}) // 255 * b^(1 / 2.2)
        for (const double start : {20.0, 140.0, 4000.0}) {
            CameraSettings settings;
            settings.targetBrightness = brightness;
            settings.exposureAuto = AutomaticMode::Once;
            EXPECT_LE(FramesUntilOff(settings, EvenScene(start), &CameraSettings::exposureAuto), 12) << start;
            EXPECT_NEAR(EvenScene(start).Mosaic(settings.exposure)[0], level, 5.0) << start;
        }
}

TEST(AutomaticFunctions, BalanceOnceEndsAndChangesNothingWhenThePictureIsSaturated) {
    CameraSettings settings;
    settings.balanceWhiteAuto = AutomaticMode::Once;
    EXPECT_EQ(
        FramesUntilOff(settings, EvenScene(4000.0, {0.01, 1.0, 1.0}), &CameraSettings::balanceWhiteAuto), 1);
    EXPECT_EQ(settings.exposure.balanceRatios, (std::array<double, 3>{1.0, 1.0, 1.0}));
}

TEST(AutomaticFunctions, GainOnceReachesTheTargetAndGoesBackToOff) {
    CameraSettings settings;
    settings.gainAuto = AutomaticMode::Once;
    EXPECT_LE(FramesUntilOff(settings, EvenScene(20.0), &CameraSettings::gainAuto), 5);
    EXPECT_NEAR(EvenScene(20.0).Mosaic(settings.exposure)[0], usualTarget, 3.0);
    EXPECT_EQ(settings.exposure.exposureTimeUs, 10'000.0);
}

TEST(AutomaticFunctions, OnceEndsAtTheLimitWhenTheTargetIsOutOfReach) {
    CameraSettings settings;
    settings.gainAuto = AutomaticMode::Once;
    EXPECT_LE(FramesUntilOff(settings, EvenScene(1.0), &CameraSettings::gainAuto), 5);
    EXPECT_EQ(settings.exposure.gainDb, gainBoundsDb.maximum);
}

TEST(AutomaticFunctions, GainMakesUpForWhatTheExposureTimeCannotReach) {
    CameraSettings settings;
    settings.exposure.exposureTimeUs = exposureTimeBoundsUs.maximum;
    settings.exposureAuto = AutomaticMode::Continuous;
    settings.gainAuto = AutomaticMode::Continuous;
    const EvenScene dark(0.8); // 80 at the longest exposure
    for (int frame = 0; frame < 5; ++frame)
        AdjustAutomatically(settings, dark.Mosaic(settings.exposure), false);
    EXPECT_EQ(settings.exposure.exposureTimeUs, exposureTimeBoundsUs.maximum);
    EXPECT_NEAR(settings.exposure.gainDb, 20.0 * std::log10(usualTarget / 80.0), 0.3);
}

TEST(AutomaticFunctions, ContinuousKeepsAdjustingWhenTheLightChanges) {
    CameraSettings settings;
    settings.exposureAuto = AutomaticMode::Continuous;
    for (const double level : {140.0, 35.0, 200.0}) {
        for (int frame = 0; frame < 6; ++frame)
            AdjustAutomatically(settings, EvenScene(level).Mosaic(settings.exposure), false);
        EXPECT_NEAR(EvenScene(level).Mosaic(settings.exposure)[0], usualTarget, 4.0) << level;
        EXPECT_EQ(settings.exposureAuto, AutomaticMode::Continuous);
    }
}

TEST(AutomaticFunctions, BalanceOnceMakesTheMeanGrey) {
    CameraSettings settings;
    settings.balanceWhiteAuto = AutomaticMode::Once;
    const EvenScene warm(100.0, {1.4, 1.0, 0.6});
    EXPECT_LE(FramesUntilOff(settings, warm, &CameraSettings::balanceWhiteAuto), 5);
    const std::vector<std::uint8_t> mosaic = warm.Mosaic(settings.exposure);
    EXPECT_NEAR(mosaic[0], 100, 1);
    EXPECT_NEAR(mosaic[twinSensorWidth + 1], 100, 1);
    EXPECT_EQ(settings.exposure.balanceRatios[1], 1.0) << "green is what the others follow";
}

TEST(AutomaticFunctions, NeverReachOffWhenEndless) {
    CameraSettings settings;
    settings.exposureAuto = settings.gainAuto = settings.balanceWhiteAuto = AutomaticMode::Once;
    for (int frame = 0; frame < 20; ++frame)
        AdjustAutomatically(settings, EvenScene(147.0).Mosaic(settings.exposure), true);
    EXPECT_EQ(settings.exposureAuto, AutomaticMode::Once);
    EXPECT_EQ(settings.gainAuto, AutomaticMode::Once);
    EXPECT_EQ(settings.balanceWhiteAuto, AutomaticMode::Once);
}

TEST(AutomaticFunctions, LookOnlyAtTheRegionThatDrivesBrightness) {
    CameraSettings settings;
    settings.exposureAuto = AutomaticMode::Once;
    settings.regions[0] = {.offsetX = 0, .offsetY = 0, .width = 64, .height = 64};
    std::vector<std::uint8_t> mosaic(twinMosaicBytes, 255);
    for (std::size_t y = 0; y < 64; ++y)
        std::fill_n(mosaic.begin() + static_cast<std::ptrdiff_t>(y * twinSensorWidth), 64, std::uint8_t{147});
    AdjustAutomatically(settings, mosaic, false);
    EXPECT_EQ(settings.exposureAuto, AutomaticMode::Off) << "that is at its target";
}

TEST(AutomaticFunctions, TakeRegionsBeyondTheSensorAsFarAsTheyLieOnIt) {
    CameraSettings settings;
    settings.exposureAuto = AutomaticMode::Continuous;
    const std::vector<std::uint8_t> mosaic(twinMosaicBytes, 147);
    for (const SensorRegion& region :
         {SensorRegion{.offsetX = 1'000'000, .offsetY = 1'000'000},
          SensorRegion{.offsetX = -5, .offsetY = -5, .width = 0, .height = 0},
          SensorRegion{.offsetX = 2462, .offsetY = 2054, .width = 9'000, .height = 9'000}}) {
        settings.regions[0] = region;
        AdjustAutomatically(settings, mosaic, false);
        EXPECT_EQ(settings.exposure.exposureTimeUs, 10'000.0);
    }
}

TEST(AutomaticFunctions, ComeBackFromBlackAndFromSaturation) {
    for (const int level : {0, 255}) {
        CameraSettings settings;
        settings.exposureAuto = settings.balanceWhiteAuto = AutomaticMode::Continuous;
        const std::vector<std::uint8_t> mosaic(twinMosaicBytes, static_cast<std::uint8_t>(level));
        AdjustAutomatically(settings, mosaic, false);
        EXPECT_EQ(settings.exposure.exposureTimeUs, level == 0 ? 40'000.0 : 2'500.0);
    }
}

} // namespace
} // namespace tessaro
