#pragma once

#include "twin/camera/gige_camera.h"
#include "twin/service/control_command.h"
#include "twin/service/fault.h"
#include "twin/service/served_stage.h"
#include "twin/wafer.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tessaro {

struct TwinServiceOptions {
    ServedStageOptions stage;
    std::string cameraAddress = "127.0.0.1"; // empty: there is no camera
    std::string serialNumber = "TWIN01";
    std::vector<Fault> faults;
    std::string controlPath; // empty: no control socket
    bool quiet = false;
};

/// The devices of a simulated microscope over one wafer, and the faults that they have.
class TwinDevices {
public:
    /// Works within the main loop of the calling thread. Throws std::runtime_error when a device cannot be
    /// served.
    TwinDevices(const Wafer& wafer, const TwinServiceOptions& options);

    void Set(const Fault& fault);
    void Clear(FaultKind kind);

    std::string StageLineName() const { return m_stage.LineName(); } // none while it is gone
    /// Called from now on with the name of every other line that takes its place.
    void TellNewStageLineNames(std::function<void(const std::string& name)> tell) {
        m_stage.TellNewLineNames(std::move(tell));
    }

    /// Obeys a line of the control socket. "ok", with what was asked for, or "error: " and why. Quit is the
    /// caller's: it sets `quit`.
    std::string Obey(std::string_view line, bool& quit);

private:
    void TakeFrame(const ExposureSettings& exposure, std::uint64_t noiseSeed, std::span<std::uint8_t> mosaic);
    std::string Move(const StagePosition& target);
    GigECamera& Camera();

    ServedStage m_stage;
    SensorRenderer m_renderer;
    std::optional<GigECamera> m_camera;
};

/// Serves the devices until SIGTERM, SIGINT or "quit"; says on standard output when they are ready, and
/// whenever the stage has another line. Throws std::runtime_error when they cannot be served.
void ServeTwin(const Wafer& wafer, const TwinServiceOptions& options);

} // namespace tessaro
