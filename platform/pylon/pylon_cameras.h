#pragma once

#include "platform/camera_device.h"

#include <memory>
#include <string>

namespace tessaro {

/// The cameras that their vendor's runtime knows: Basler pylon.
class PylonCameras : public CameraRuntime {
public:
    /// Serial number or IPv4 address of the camera to use; the first one found when it is empty.
    explicit PylonCameras(std::string camera = {});

    void Initialize() override;
    std::unique_ptr<CameraDevice> CreateFirstDevice() override;

private:
    std::string m_camera;
    std::shared_ptr<void> m_library; // every camera holds on to it, so that the last one ends the runtime
};

} // namespace tessaro
