#pragma once

#include "platform/camera_device.h"

namespace tessaro {

/// A runtime that finds no camera, for running without one.
class AbsentCameras : public CameraRuntime {
public:
    void Initialize() override {}
    std::unique_ptr<CameraDevice> CreateFirstDevice() override;
};

} // namespace tessaro
