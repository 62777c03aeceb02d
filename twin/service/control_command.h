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
struct QuitCommand {};

struct CommandError {
    std::string reason;
};

/// One line: "move X,Y,Z", "fault NAME[=ARG]", "clear NAME" or "quit".
std::variant<MoveCommand, Fault, ClearCommand, QuitCommand, CommandError>
ParseControlCommand(std::string_view line);

} // namespace tessaro
