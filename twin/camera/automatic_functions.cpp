#include "twin/camera/automatic_functions.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace tessaro {
namespace {

constexpr double fullScale = 255.0;
constexpr double levelTolerance = 0.02; // relative
constexpr double balanceTolerance = 0.01;
constexpr double largestStep = 4.0; // in one frame; a saturated picture tells no more than "too bright"
constexpr double saturatedLevel = 0.95 * fullScale;
constexpr double darkestMean = 0.5; // levels; below, a channel tells nothing
constexpr int cellStride = 8;       // sensor pixels from one 2 x 2 cell that is looked at to the next

using ChannelMeans = std::array<double, 3>; // red, green, blue, 0 to 255

SensorRegion OnSensor(SensorRegion region) {
    region.offsetX = std::clamp(region.offsetX, 0, twinSensorWidth - 2) & ~1;
    region.offsetY = std::clamp(region.offsetY, 0, twinSensorHeight - 2) & ~1;
    region.width = std::clamp(region.width, 2, twinSensorWidth - region.offsetX);
    region.height = std::clamp(region.height, 2, twinSensorHeight - region.offsetY);
    return region;
}

ChannelMeans MeansOf(std::span<const std::uint8_t> mosaic, const SensorRegion& wanted) {
    const SensorRegion region = OnSensor(wanted);
    ChannelMeans sums = {};
    double cells = 0.0;
    for (int y = region.offsetY; y + 1 < region.offsetY + region.height; y += cellStride) {
        for (int x = region.offsetX; x + 1 < region.offsetX + region.width; x += cellStride) {
            const std::size_t upper =
                static_cast<std::size_t>(y) * twinSensorWidth + static_cast<std::size_t>(x);
            const std::size_t lower = upper + twinSensorWidth;
            sums[0] += mosaic[upper];
            sums[1] += (mosaic[upper + 1] + mosaic[lower]) / 2.0;
            sums[2] += mosaic[lower + 1];
            cells += 1.0;
        }
    }
    return {sums[0] / cells, sums[1] / cells, sums[2] / cells};
}

/// The first region that is used for this; without one, the whole picture.
SensorRegion RegionFor(const CameraSettings& settings, bool SensorRegion::*use) {
    for (const SensorRegion& region : settings.regions)
        if (region.*use)
            return region;
    return {};
}

double Kept(double value, const Bounds& bounds) {
    return std::clamp(value, bounds.minimum, bounds.maximum);
}

/// Brightness is that of a screen which shows the picture.
double LevelOfBrightness(double brightness) {
    constexpr double gammaOfScreens = 2.2;
    return fullScale * std::pow(brightness, 1.0 / gammaOfScreens);
}

void FinishOnce(AutomaticMode& mode, bool finished) {
    if (finished && mode == AutomaticMode::Once)
        mode = AutomaticMode::Off;
}

/// By how much the signal has to grow.
double BrightnessFactor(const CameraSettings& settings, std::span<const std::uint8_t> mosaic) {
    const ChannelMeans means = MeansOf(mosaic, RegionFor(settings, &SensorRegion::useBrightness));
    const double level = (means[0] + 2.0 * means[1] + means[2]) / 4.0;
    const double target = LevelOfBrightness(settings.targetBrightness);
    if (level >= std::max(saturatedLevel, target * (1.0 + levelTolerance)))
        return 1.0 / largestStep;
    return std::clamp(target / std::max(level, darkestMean), 1.0 / largestStep, largestStep);
}

/// Scales a value within its bounds and takes what was reached out of the factor; false when it stays as it
/// is.
bool ScaleWithin(double& value, double& factor, const Bounds& bounds) {
    const double before = value;
    value = Kept(before * factor, bounds);
    factor *= before / value;
    return value != before;
}

void AdjustBrightness(CameraSettings& settings, std::span<const std::uint8_t> mosaic, bool endless) {
    const bool automaticExposure = settings.exposureAuto != AutomaticMode::Off;
    const bool automaticGain = settings.gainAuto != AutomaticMode::Off;
    if (!automaticExposure && !automaticGain)
        return;
    double factor = BrightnessFactor(settings, mosaic);
    bool changed = false;
    if (std::abs(factor - 1.0) > levelTolerance) {
        ExposureSettings& exposure = settings.exposure;
        changed = automaticExposure && ScaleWithin(exposure.exposureTimeUs, factor, exposureTimeBoundsUs);
        if (automaticGain) {
            const double before = exposure.gainDb;
            exposure.gainDb = Kept(before + 20.0 * std::log10(factor), gainBoundsDb);
            changed = changed || exposure.gainDb != before;
        }
    }
    FinishOnce(settings.exposureAuto, !changed && !endless);
    FinishOnce(settings.gainAuto, !changed && !endless);
}

void AdjustBalance(CameraSettings& settings, std::span<const std::uint8_t> mosaic, bool endless) {
    if (settings.balanceWhiteAuto == AutomaticMode::Off)
        return;
    const ChannelMeans means = MeansOf(mosaic, RegionFor(settings, &SensorRegion::useWhiteBalance));
    const bool saturated = std::ranges::any_of(means, [](double mean) { return mean >= saturatedLevel; });
    bool done = true; // a saturated picture tells nothing of its colour
    for (const std::size_t channel : {0U, 2U}) {
        const double factor = means[1] / std::max(means[channel], darkestMean);
        double& ratio = settings.exposure.balanceRatios[channel];
        const double before = ratio;
        if (!saturated && std::abs(factor - 1.0) > balanceTolerance)
            ratio = Kept(before * std::clamp(factor, 1.0 / largestStep, largestStep), balanceRatioBounds);
        done = done && ratio == before;
    }
    FinishOnce(settings.balanceWhiteAuto, done && !endless);
}

} // namespace

void AdjustAutomatically(CameraSettings& settings, std::span<const std::uint8_t> mosaic, bool endless) {
    AdjustBrightness(settings, mosaic, endless);
    AdjustBalance(settings, mosaic, endless);
}

} // namespace tessaro
