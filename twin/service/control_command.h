#pragma once

#include "twin/sensor_renderer.h"
#include "twin/service/fault.h"

#include <string>
#include <string_view>
#include <variant>

namespace tessaro {

struct MoveCommand {
    StagePosition target; // um
};
struct ClearCommand {
    FaultKind kind = FaultKind::CameraGone;
};
struct WhereCommand {};
struct QuitCommand {};

struct CommandError {
    std::string reason;
};

using ControlCommand =
    std::variant<MoveCommand, WhereCommand, Fault, ClearCommand, QuitCommand, CommandError>;

/// One line: "move X,Y,Z", "where", "fault NAME[=ARG]", "clear NAME" or "quit".
ControlCommand ParseControlCommand(std::string_view line);

} // namespace tessaro
