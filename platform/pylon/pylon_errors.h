#pragma once

#include "platform/camera_device.h"

#include <pylon/PylonIncludes.h>

namespace tessaro {

/// Runs something that calls the vendor's runtime; its exceptions become CameraError with the same text.
template<class Action>
auto WithCameraErrors(const Action& action) {
    try {
        return action();
    } catch (const Pylon::GenericException& error) {
        throw CameraError(error.GetDescription());
    }
}

} // namespace tessaro
