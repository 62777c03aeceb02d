#pragma once

#include "platform/camera_device.h"

#include <array>

namespace tessaro {

// What adjusting needs of a camera's features. Each is called by its name in the current standard where the
// camera has that, else by its older name; the names are in the source file's tables alone.

double ReadGain(CameraDevice& camera);
void WriteGain(CameraDevice& camera, double gain);

double ReadExposureTime(CameraDevice& camera); // us
void WriteExposureTime(CameraDevice& camera, double exposureTimeUs);

/// Red, green, blue.
std::array<double, 3> ReadBalanceRatios(CameraDevice& camera);

/// Lets the automatic functions look at the whole picture. A camera without regions does so anyway.
void MeasureWholePicture(CameraDevice& camera);

/// The brightness that the automatic functions aim at. Nothing where the camera cannot be told.
void SetBrightnessTarget(CameraDevice& camera);

} // namespace tessaro
