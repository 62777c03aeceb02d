#pragma once

#include "app/message_pump.h"
#include "app/status_lines.h"
#include "camera/camera_session.h"
#include "platform/camera_device.h"
#include "platform/clock.h"

#include <iosfwd>

namespace tessaro {

/// Takes frames into the working frame; where there is no camera, or a grab fails, the test pattern moves
/// instead. Every failure of the camera ends here.
class Camera {
public:
    /// How the automatic adjustment goes is written to `report`.
    Camera(CameraSession& session, CameraRuntime& runtime, StatusLines& status, MessagePump& pump,
           Clock& clock, std::ostream& report)
        : m_session(session), m_runtime(runtime), m_status(status), m_pump(pump), m_clock(clock),
          m_report(report) {}

    /// Looks for a camera; 1 = found. Without one it says so and returns 0.
    int InitializeCamera();

    /// Mode 1 opens the camera and lets it adjust itself from then on, 2 lets it adjust itself once, 3 takes
    /// a single frame into the accumulator, 4 applies stored values; nothing in any other mode. Returns 0.
    ///
    /// Mode 1 waits: another call, or a grab, may come in the middle.
    int ControlCamera(int mode);

    /// The mean of so many exposures. Returns 0.
    int GrabFrame(int frames);

    /// Whether the camera can send a Bayer mosaic.
    bool IsColorCamera();

private:
    void RunMode(int mode);
    void OpenAndAdjust();
    void AdjustOnce();
    void TakeSingleFrame();
    void ApplyStored();
    void SayThatThereIsNone();
    CameraDevice& Device();

    CameraSession& m_session;
    CameraRuntime& m_runtime;
    StatusLines& m_status;
    MessagePump& m_pump;
    Clock& m_clock;
    std::ostream& m_report;
};

} // namespace tessaro
