#pragma once

#include "app/status_lines.h"
#include "camera/camera_session.h"

namespace tessaro {

/// Takes frames into the working frame; where there is no camera, or a grab fails, the test pattern moves
/// instead.
class Camera {
public:
    Camera(CameraSession& session, StatusLines& status) : m_session(session), m_status(status) {}

    /// Looks for a camera; 1 = found. Without one it says so and returns 0.
    int InitializeCamera();

    /// Mode 1 opens the camera and lets it adjust itself. Returns 0.
    int ControlCamera(int mode);

    /// The mean of so many exposures. Returns 0.
    int GrabFrame(int frames);

private:
    CameraSession& m_session;
    StatusLines& m_status;
};

} // namespace tessaro
