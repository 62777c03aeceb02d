#pragma once

#include "platform/fake/recording_port.h"
#include "stage/stage_units.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <span>
#include <string>
#include <string_view>

namespace tessaro {

/// A line to a stage that arrives as soon as it is told where to go.
class ArrivingPort : public RecordingPort {
public:
    bool Write(SerialHandle handle, std::span<const std::uint8_t> bytes, std::uint32_t& written) override {
        if (!RecordingPort::Write(handle, bytes, written))
            return false;
        const std::string command = writes.back().substr(0, writes.back().size() - 1);
        if (const std::size_t axis = std::string_view("mML").find(command[0]); axis != std::string::npos) {
            steps[axis] = ParsedInteger(command.substr(1)).value_or(0);
            m_replies.emplace_back(1, "XYZ"[axis]);
        } else if (const std::size_t asked = std::string_view("pPQ").find(command[0]);
                   asked != std::string::npos) {
            m_replies.push_front(std::to_string(steps[asked]));
        }
        return true;
    }

    bool Read(SerialHandle handle, std::span<std::uint8_t> bytes, std::uint32_t& count) override {
        count = 0;
        if (!RecordingPort::Read(handle, bytes, count) || m_replies.empty())
            return !broken;
        const std::string reply = m_replies.front() + '\0';
        m_replies.pop_front();
        count = static_cast<std::uint32_t>(std::min(reply.size(), bytes.size()));
        std::copy_n(reply.begin(), count, bytes.begin());
        return true;
    }

    /// What was sent, without terminators and questions.
    std::vector<std::string> Commands() const {
        std::vector<std::string> commands;
        for (const std::string& write : writes) {
            if (write.size() > 2 || std::string_view("pPQ").find(write[0]) == std::string_view::npos)
                commands.push_back(write.substr(0, write.size() - 1));
        }
        return commands;
    }

    std::array<std::int32_t, 3> steps = {};

private:
    std::deque<std::string> m_replies;
};

} // namespace tessaro
