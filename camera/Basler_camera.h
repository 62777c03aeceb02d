#pragma once

#include "platform/camera_device.h"
#include "platform/clock.h"

#include <iosfwd>

namespace tessaro {

// The camera sets its own gain, exposure and white balance from the picture. "Continuous": it goes on doing
// so while it grabs. "Once": it does so until it has found them, at most 101 images long; the others throw
// CameraError at that, or when an image takes longer than 5 s. What is done goes to `report`, line by line;
// a camera without the function says so there, and that is all.

void AdjustExposureContinuously(CameraDevice& camera, std::ostream& report);
void AdjustExposureOnce(CameraDevice& camera, Clock& clock, std::ostream& report);
void AdjustGainContinuously(CameraDevice& camera, std::ostream& report);
void AdjustGainOnce(CameraDevice& camera, Clock& clock, std::ostream& report);
void AdjustWhiteBalanceOnce(CameraDevice& camera, Clock& clock, std::ostream& report);

} // namespace tessaro
