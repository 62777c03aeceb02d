#pragma once

#include "twin/sensor_renderer.h"

#include <array>
#include <cstdint>
#include <span>

namespace tessaro {

/// Values as camera_description.xml numbers them.
enum class AutomaticMode : std::uint32_t { Off = 0, Once = 1, Continuous = 2 };

/// Where automatic functions look, in sensor pixels.
struct SensorRegion {
    int offsetX = 0;
    int offsetY = 0;
    int width = twinSensorWidth;
    int height = twinSensorHeight;
    bool useBrightness = true;
    bool useWhiteBalance = true;
};

/// Pixels that a camera has; what it sends is the upper left part of the scene then.
struct SensorSize {
    int width = twinSensorWidth;
    int height = twinSensorHeight;
};

/// What the camera is set to.
struct CameraSettings {
    ExposureSettings exposure;
    AutomaticMode exposureAuto = AutomaticMode::Off;
    AutomaticMode gainAuto = AutomaticMode::Off;
    AutomaticMode balanceWhiteAuto = AutomaticMode::Off;
    double targetBrightness = 0.3; // of a screen that shows the picture; 1 is white
    std::array<SensorRegion, 2> regions = {SensorRegion(), SensorRegion{.useBrightness = false}};
};

struct Bounds {
    double minimum = 0.0;
    double maximum = 0.0;
};

inline constexpr Bounds exposureTimeBoundsUs = {20.0, 1'000'000.0};
inline constexpr Bounds gainBoundsDb = {0.0, 24.0};
inline constexpr Bounds balanceRatioBounds = {0.1, 8.0};
inline constexpr Bounds targetBrightnessBounds = {0.1, 0.9};

/// One step of the automatic functions after a frame (twinSensorWidth x twinSensorHeight samples, RGGB) was
/// taken with these settings: exposure and gain go toward the target brightness of the first region that
/// drives brightness, the balance toward a grey mean, but stays as it is when a channel is saturated. The
/// exposure time goes first; the gain makes up for what it cannot reach. "Once" goes back to "Off" when
/// nothing is left to do or to gain, unless it is told to go on for ever.
void AdjustAutomatically(CameraSettings& settings, std::span<const std::uint8_t> mosaic, bool endless);

} // namespace tessaro
