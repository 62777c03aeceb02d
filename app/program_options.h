#pragma once

#include "app/unattended_options.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>

namespace tessaro {

/// What the command line asks of the operator's program.
struct ProgramOptions {
    bool help = false;
    bool version = false;
    std::string camera;                     // identity or address, "none"; empty: the first one found
    std::string cameraRuntime;              // "pylon", "aravis"; empty: the usual one
    std::string stagePort;                  // path, "none"; empty: that of the number in the settings
    std::string focusCurve;                 // a file; empty: not wanted
    std::string report;                     // the same
    std::optional<std::int32_t> focusSpeed; // um/s, 1 to 5000; not given: the usual one
    std::optional<UnattendedScan> scan;     // by itself; not given: an operator is there
};

/// The value of --camera and --stage-port that asks for no device.
inline constexpr std::string_view noDevice = "none";

/// Why a command line cannot be obeyed: a sentence for standard error.
struct OptionError {
    std::string reason;
};

/// The arguments behind the program's name; values follow their option or its '='.
std::variant<ProgramOptions, OptionError> ParseProgramOptions(std::span<const std::string_view> arguments);

std::string_view ProgramHelp();

} // namespace tessaro
