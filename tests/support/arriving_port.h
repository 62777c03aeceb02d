#pragma once

#include "app/number_text.h"
#include "platform/fake/scripted_serial_port.h"

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace tessaro {

/// An open line to a stage that arrives as soon as it is told where to go.
class ArrivingPort : public ScriptedSerialPorts {
public:
    explicit ArrivingPort(VirtualClock& clock) : ScriptedSerialPorts(clock), line(Open("line 3")) {
        TakeAnyWrite([this](const std::string& written) { return AnswerTo(written.c_str()); });
    }

    /// What was sent, without terminators and questions.
    std::vector<std::string> Commands() const {
        std::vector<std::string> commands;
        for (const std::string& write : writes) {
            if (write.size() > 2 || questions.find(write[0]) == std::string_view::npos)
                commands.push_back(write.substr(0, write.size() - 1));
        }
        return commands;
    }

    const SerialHandle line;
    std::array<std::int32_t, 3> steps = {};

private:
    static constexpr std::string_view questions = "pPQ";

    Reply AnswerTo(std::string_view command) {
        if (command.empty())
            return {};
        if (const std::size_t axis = std::string_view("mML").find(command[0]); axis != std::string::npos) {
            steps[axis] = ParsedInteger(command.substr(1)).value_or(0);
            return {{0, Terminated(std::string(1, "XYZ"[axis]))}};
        }
        if (const std::size_t axis = questions.find(command[0]); axis != std::string::npos)
            return {{0, Terminated(std::to_string(steps[axis]))}};
        return {};
    }
};

} // namespace tessaro
