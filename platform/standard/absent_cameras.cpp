#include "platform/standard/absent_cameras.h"

namespace tessaro {

std::unique_ptr<CameraDevice> AbsentCameras::CreateFirstDevice() {
    throw CameraError("no camera is to be used");
}

} // namespace tessaro
