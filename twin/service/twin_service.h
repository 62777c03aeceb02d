#pragma once

#include "twin/camera/gige_camera.h"
#include "twin/service/control_command.h"
#include "twin/service/fault.h"
#include "twin/wafer.h"

#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace tessaro {

/// Where the stage is; set by one thread, looked at by the camera's.
class SharedPosition {
public:
    explicit SharedPosition(const StagePosition& position) : m_position(position) {}
    StagePosition Get() const;
    void Set(const StagePosition& position);

private:
    mutable std::mutex m_mutex;
    StagePosition m_position;
};

struct TwinServiceOptions {
    StagePosition position;
    std::string cameraAddress = "127.0.0.1";
    std::string serialNumber = "TWIN01";
    std::vector<Fault> faults;
    std::string controlPath; // empty: no control socket
    bool quiet = false;
};

/// The devices of a simulated microscope over one wafer, and the faults that they have.
class TwinDevices {
public:
    /// Throws std::runtime_error when a device cannot be served.
    TwinDevices(const Wafer& wafer, const TwinServiceOptions& options);

    void Set(const Fault& fault);
    void Clear(FaultKind kind);

    /// Obeys a line of the control socket. "ok", or "error: " and why. Quit is the caller's: it sets `quit`.
    std::string Obey(std::string_view line, bool& quit);

private:
    SensorRenderer m_renderer;
    SharedPosition m_position;
    GigECamera m_camera;
};

/// Serves the devices until SIGTERM, SIGINT or "quit"; says on standard output when they are ready. Throws
/// std::runtime_error when they cannot be served.
void ServeTwin(const Wafer& wafer, const TwinServiceOptions& options);

} // namespace tessaro
