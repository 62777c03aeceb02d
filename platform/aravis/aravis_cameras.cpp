#include "platform/aravis/aravis_cameras.h"

#include "platform/aravis/aravis_camera.h"
#include "platform/aravis/camera_search.h"

#include <utility>

namespace tessaro {

AravisCameras::AravisCameras(std::string camera) : m_camera(std::move(camera)) {}

void AravisCameras::Initialize() {} // the library starts itself

std::unique_ptr<CameraDevice> AravisCameras::CreateFirstDevice() {
    CameraSearch search(m_camera);
    search.Find();
    return std::make_unique<AravisCamera>(std::move(search));
}

} // namespace tessaro
