#pragma once

#include "app/number_text.h"
#include "platform/fake/scripted_serial_port.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace tessaro {

/// An open line to a stage that arrives as soon as it is told where to go.
class ArrivingPort : public ScriptedSerialPorts {
public:
    explicit ArrivingPort(VirtualClock& clock)
        : ScriptedSerialPorts(clock), line(Open("line 3")), m_clock(clock) {
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
    bool tellsXY = false; // where X and Y are, instead of that they have arrived
    std::function<void(const std::string& command)> onCommand; // not of questions

private:
    static constexpr std::string_view questions = "pPQ";
    static constexpr std::uint64_t nextLookMs = 12; // a wait looks every 10 ms

    Reply AnswerTo(std::string_view command) {
        if (command.empty())
            return {};
        if (const std::size_t axis = questions.find(command[0]); axis != std::string::npos)
            return {{0, Terminated(std::to_string(steps[axis]))}};
        if (onCommand)
            onCommand(std::string(command));
        if (const std::size_t axis = std::string_view("mML").find(command[0]); axis != std::string::npos) {
            steps[axis] = ParsedInteger(command.substr(1)).value_or(0);
            return ArrivalOf(axis);
        }
        return {};
    }

    /// Of two axes that are sent off together the second one is waited for: it tells after the first.
    Reply ArrivalOf(std::size_t axis) {
        if (!tellsXY || axis == 2)
            return {{0, Terminated(std::string(1, "XYZ"[axis]))}};
        const bool second = m_sentOffMs == m_clock.now;
        m_sentOffMs = m_clock.now;
        return {{second ? nextLookMs : 0, Terminated(questions[axis] + std::to_string(steps[axis]))}};
    }

    VirtualClock& m_clock;
    std::uint64_t m_sentOffMs = ~std::uint64_t{0};
};

} // namespace tessaro
