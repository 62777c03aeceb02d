#include "camera/camera.h"

#include "camera/test_pattern.h"

namespace tessaro {

int Camera::InitializeCamera() {
    m_session.present = 0;
    m_status.ShowInformation("No camera detected");
    return 0;
}

int Camera::ControlCamera(int mode) {
    if (mode == camera_mode::openAndAdjust && m_session.present == 0)
        m_status.ShowInformation("No camera detected");
    return 0;
}

int Camera::GrabFrame([[maybe_unused]] int frames) {
    DrawTestPattern(m_session);
    return 0;
}

} // namespace tessaro
