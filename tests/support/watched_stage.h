#pragma once

#include "support/virtual_microscope.h"
#include "support/virtual_serial_ports.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tessaro {

/// The simulated stage with its controller, and what it was told.
class WatchedStage : public SerialFarEnd {
public:
    std::size_t Receive(std::string_view bytes, std::uint64_t nowMs) override {
        m_received += bytes;
        return m_stage.Receive(bytes, nowMs);
    }
    std::string Run(std::uint64_t nowMs) override {
        std::string said = m_stage.Run(nowMs);
        return silent || hungUp ? "" : said;
    }
    bool HasHungUp(std::uint64_t) override { return hungUp; }

    /// Those that begin with one of the letters.
    std::vector<std::string> Commands(std::string_view letters) const {
        std::vector<std::string> commands;
        for (std::size_t begin = 0; begin < m_received.size();) {
            const std::string command = m_received.c_str() + begin; // each ends with a NUL
            if (!command.empty() && letters.find(command[0]) != std::string_view::npos)
                commands.push_back(command);
            begin += command.size() + 1;
        }
        return commands;
    }

    bool MovesAt(std::uint64_t nowMs) { return m_stage.MovesAt(nowMs); }
    std::array<double, 2> Place(std::uint64_t nowMs) {
        m_stage.MovesAt(nowMs);
        const StagePosition place = m_stage.PositionAt(static_cast<double>(nowMs) / 1000.0);
        return {place.x, place.y};
    }

    bool silent = false;
    bool hungUp = false;

private:
    VirtualStage m_stage{{}, UsualLimitsAround({}), usualProgressAxes};
    std::string m_received;
};

} // namespace tessaro
