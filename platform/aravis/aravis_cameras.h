#pragma once

#include "platform/camera_device.h"

#include <memory>
#include <string>

namespace tessaro {

/// Cameras that speak GigE Vision or USB3 Vision, by the library Aravis.
///
/// Nothing here blocks its caller for long: every call into the library is made on a thread of the camera's
/// own, and is given up when the camera no longer answers. What the library still has to do then happens
/// behind the scenes.
class AravisCameras final : public CameraRuntime {
public:
    /// `camera` is an IPv4 address, which is opened directly, or the identification of a camera, which is
    /// looked for on all interfaces. Empty: the first camera found.
    explicit AravisCameras(std::string camera = {});

    void Initialize() override;
    std::unique_ptr<CameraDevice> CreateFirstDevice() override;

private:
    std::string m_camera;
};

} // namespace tessaro
