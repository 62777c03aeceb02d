#include "platform/pylon/pylon_cameras.h"

#include "platform/pylon/pylon_camera.h"
#include "platform/pylon/pylon_errors.h"

#include <utility>

namespace tessaro {

PylonCameras::PylonCameras(std::string camera) : m_camera(std::move(camera)) {}

void PylonCameras::Initialize() {
    if (m_library == nullptr)
        m_library = WithCameraErrors([] { return std::make_shared<Pylon::PylonAutoInitTerm>(); });
}

std::unique_ptr<CameraDevice> PylonCameras::CreateFirstDevice() {
    if (m_library == nullptr)
        throw CameraError("The camera runtime has not been started");
    return std::make_unique<PylonCamera>(m_library, m_camera);
}

} // namespace tessaro
