#pragma once

#include "twin/sensor_renderer.h"
#include "twin/service/fault.h"
#include "twin/stage/stage_axes.h"
#include "twin/stage/stage_controller.h"
#include "twin/wafer.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace tessaro {

/// What the command line asks of the simulated microscope.
struct TwinOptions {
    WaferOptions wafer;
    std::optional<StagePosition> at;         // not given: the wafer's middle, in focus
    std::string truthFile;                   // empty: not wanted
    std::string renderFile;                  // empty: not wanted
    std::string cameraAddress = "127.0.0.1"; // empty: no camera
    std::string stageLink;                   // empty: none
    std::string stageLog;                    // empty: none
    std::optional<StageLimits> limits;       // not given: the usual ones
    double timeFactor = 1.0;
    ProgressAxes progressAxes = usualProgressAxes;
    std::string serialNumber = "TWIN01";
    std::vector<Fault> faults;
    std::string controlSocket; // empty: none
    bool quiet = false;
    bool help = false;
    bool version = false;
};

/// Why a command line cannot be obeyed: a phrase for standard error.
struct TwinOptionError {
    std::string reason;
};

/// The arguments behind the program's name; values follow their option or its '='.
std::variant<TwinOptions, TwinOptionError> ParseTwinOptions(std::span<const std::string_view> arguments);

std::string_view TwinHelp();

/// Where the stage stands at first: never beyond limits that were given.
StagePosition StartPosition(const TwinOptions& options, const Wafer& wafer);

/// The MIME type of a picture file by its suffix; nothing when it has none that can be written.
std::optional<std::string_view> PictureType(std::string_view file);

} // namespace tessaro
