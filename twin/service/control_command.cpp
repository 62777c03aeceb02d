#include "twin/service/control_command.h"

#include "text/number_reading.h"

#include <array>
#include <cstddef>

namespace tessaro {

namespace {

ControlCommand ParseMove(std::string_view value) {
    std::array<double, 3> position = {};
    if (!ReadNumbers(value, -farthestUm, farthestUm, position))
        return CommandError{"'" + std::string(value) + "' is no position X,Y,Z"};
    return MoveCommand{{position[0], position[1], position[2]}};
}

ControlCommand ParseNewFault(std::string_view value) {
    const auto fault = ParseFault(value);
    if (const FaultError* error = std::get_if<FaultError>(&fault))
        return CommandError{error->reason};
    return std::get<Fault>(fault);
}

ControlCommand ParseClear(std::string_view value) {
    const auto kind = ParseFaultName(value);
    if (const FaultError* error = std::get_if<FaultError>(&kind))
        return CommandError{error->reason};
    return ClearCommand{std::get<FaultKind>(kind)};
}

} // namespace

ControlCommand ParseControlCommand(std::string_view line) {
    const std::size_t blank = line.find(' ');
    const std::string_view verb = line.substr(0, blank);
    const std::string_view value =
        blank == std::string_view::npos ? std::string_view() : line.substr(blank + 1);
    if (verb == "move")
        return ParseMove(value);
    if (verb == "fault")
        return ParseNewFault(value);
    if (verb == "clear")
        return ParseClear(value);
    if (line == "where")
        return WhereCommand{};
    if (line == "quit")
        return QuitCommand{};
    return CommandError{"there is no command '" + std::string(line) +
                        "', only move, where, fault, clear and quit"};
}

} // namespace tessaro
