#include "camera/camera_features.h"

#include <algorithm>
#include <cmath>

namespace tessaro {
namespace {

struct FeatureNames {
    std::string_view current;
    std::string_view older;
};

constexpr FeatureNames gainNames = {"Gain", "GainRaw"}; // the older one is a whole number
constexpr FeatureNames exposureTimeNames = {"ExposureTime", "ExposureTimeAbs"};
constexpr std::string_view balanceSelector = "BalanceRatioSelector";
constexpr std::array<std::string_view, 3> balanceChannels = {"Red", "Green", "Blue"};
constexpr FeatureNames balanceRatioNames = {"BalanceRatio", "BalanceRatioAbs"};
constexpr FeatureNames brightnessTargetNames = {"AutoTargetBrightness", "AutoTargetValue"};

struct RegionFeatures {
    std::string_view selector;
    std::string_view first; // values of the selector
    std::string_view second;
    FeatureNames drivesBrightness;
    std::string_view offsetX;
    std::string_view offsetY;
    std::string_view width;
    std::string_view height;
};

// Some cameras have the older regions with the newer switch.
constexpr std::array<RegionFeatures, 2> regionNames = {{
    {"AutoFunctionROISelector",
     "ROI1",
     "ROI2",
     {"AutoFunctionROIUseBrightness", {}},
     "AutoFunctionROIOffsetX",
     "AutoFunctionROIOffsetY",
     "AutoFunctionROIWidth",
     "AutoFunctionROIHeight"},
    {"AutoFunctionAOISelector",
     "AOI1",
     "AOI2",
     {"AutoFunctionAOIUseBrightness", "AutoFunctionAOIUsageIntensity"},
     "AutoFunctionAOIOffsetX",
     "AutoFunctionAOIOffsetY",
     "AutoFunctionAOIWidth",
     "AutoFunctionAOIHeight"},
}};

constexpr double targetBrightness = 0.3;     // of the full scale
constexpr std::int64_t targetGreyValue = 80; // the same on the older scale

/// The name that the camera has for it.
std::string_view Name(CameraDevice& camera, const FeatureNames& names) {
    return camera.IsReadable(names.current) ? names.current : names.older;
}

/// False where the camera has no such region.
bool SelectRegion(CameraDevice& camera, const RegionFeatures& region, std::string_view which) {
    const std::vector<std::string> regions = camera.SettableValues(region.selector);
    if (std::find(regions.begin(), regions.end(), which) == regions.end())
        return false;
    camera.SetEnumeration(region.selector, which);
    return true;
}

/// Lets the region that is selected drive the brightness, or not.
void DriveBrightness(CameraDevice& camera, const RegionFeatures& region, bool drives) {
    for (const std::string_view feature : {region.drivesBrightness.current, region.drivesBrightness.older}) {
        if (!feature.empty() && camera.IsWritable(feature)) {
            camera.SetBoolean(feature, drives);
            return;
        }
    }
}

/// The offsets first: they limit how large it may be.
void EnlargeRegion(CameraDevice& camera, const RegionFeatures& region) {
    for (const std::string_view offset : {region.offsetX, region.offsetY})
        if (camera.IsWritable(offset))
            camera.SetInteger(offset, camera.GetIntegerRange(offset).minimum);
    for (const std::string_view size : {region.width, region.height})
        if (camera.IsWritable(size))
            camera.SetInteger(size, camera.GetIntegerRange(size).maximum);
}

/// What the camera does not have of it is left out: it measures the whole picture without.
void SelectWholePicture(CameraDevice& camera, const RegionFeatures& region) {
    if (SelectRegion(camera, region, region.first))
        DriveBrightness(camera, region, true);
    if (SelectRegion(camera, region, region.second))
        DriveBrightness(camera, region, false);
    if (SelectRegion(camera, region, region.first))
        EnlargeRegion(camera, region);
}

} // namespace

double ReadGain(CameraDevice& camera) {
    if (camera.IsReadable(gainNames.current))
        return camera.GetFloat(gainNames.current);
    return static_cast<double>(camera.GetInteger(gainNames.older));
}

void WriteGain(CameraDevice& camera, double gain) {
    if (camera.IsReadable(gainNames.current)) {
        camera.SetFloat(gainNames.current, gain);
        return;
    }
    const IntegerRange range = camera.GetIntegerRange(gainNames.older);
    const double nearest = std::clamp(std::round(gain), static_cast<double>(range.minimum),
                                      static_cast<double>(std::max(range.minimum, range.maximum)));
    camera.SetInteger(gainNames.older, static_cast<std::int64_t>(nearest));
}

double ReadExposureTime(CameraDevice& camera) {
    return camera.GetFloat(Name(camera, exposureTimeNames));
}

void WriteExposureTime(CameraDevice& camera, double exposureTimeUs) {
    camera.SetFloat(Name(camera, exposureTimeNames), exposureTimeUs);
}

std::array<double, 3> ReadBalanceRatios(CameraDevice& camera) {
    std::array<double, 3> ratios = {};
    for (std::size_t channel = 0; channel < ratios.size(); ++channel) {
        camera.SetEnumeration(balanceSelector, balanceChannels[channel]);
        ratios[channel] = camera.GetFloat(Name(camera, balanceRatioNames));
    }
    return ratios;
}

void MeasureWholePicture(CameraDevice& camera) {
    const auto* region =
        std::find_if(regionNames.begin(), regionNames.end(),
                     [&](const RegionFeatures& names) { return camera.IsWritable(names.selector); });
    if (region != regionNames.end())
        SelectWholePicture(camera, *region);
}

void SetBrightnessTarget(CameraDevice& camera) {
    if (camera.IsWritable(brightnessTargetNames.current))
        camera.SetFloat(brightnessTargetNames.current, targetBrightness);
    else if (camera.IsWritable(brightnessTargetNames.older))
        camera.SetInteger(brightnessTargetNames.older, targetGreyValue);
}

} // namespace tessaro
