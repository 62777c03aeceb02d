#pragma once

#include "app/number_text.h"
#include "platform/fake/scripted_serial_port.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tessaro {

/// An open line to a stage whose axes take their time: they travel at the speed that they are told, on the
/// way too, and stop when they are told or at a limit. It answers queries after a millisecond, says nothing
/// about a way and tells an arrival 5 ms after it; where a limit was in the way there is none.
class TravellingPort : public ScriptedSerialPorts {
public:
    explicit TravellingPort(VirtualClock& clock)
        : ScriptedSerialPorts(clock), line(Open("line 3")), m_clock(clock) {
        SetTimeouts(line, {10, 10, 50, 10, 50}); // as an opening does
        TakeAnyWrite([this](const std::string& written) { return AnswerTo(written.c_str()); });
    }

    bool Read(SerialHandle handle, std::span<std::uint8_t> bytes, std::uint32_t& count) override {
        TellArrivals();
        return ScriptedSerialPorts::Read(handle, bytes, count);
    }

    /// Where an axis is at the moment.
    double Um(int axis) const { return At(Axis(axis)) / stepsPerUm; }
    bool Moves(int axis) const { return m_clock.now < Axis(axis).EndsAt(); }

    /// What was sent, without terminators and questions.
    std::vector<std::string> Commands() const {
        std::vector<std::string> commands;
        for (const std::string& write : writes)
            if (write.size() > 2 || questions.find(write[0]) == std::string_view::npos)
                commands.push_back(write.substr(0, write.size() - 1));
        return commands;
    }

    const SerialHandle line;
    double limit = 1e9;              // steps, on either side
    bool silent = false;             // it moves and says nothing at all
    std::vector<std::int32_t> toldZ; // steps, every answer where Z is

private:
    static constexpr std::string_view questions = "pPQ";
    static constexpr std::string_view moves = "mML";
    static constexpr std::string_view stops = "nNO";
    static constexpr std::string_view speeds = "sST";
    static constexpr double stepsPerUm = 1.6;
    static constexpr std::uint64_t longestReadMs = 150;
    static constexpr std::uint64_t tellingMs = 5;

    struct Way {
        double from = 0.0; // steps
        double to = 0.0;
        double speed = 2400.0; // steps/s
        std::uint64_t start = 0;
        bool tells = false; // its arrival is still to be told

        std::uint64_t EndsAt() const {
            if (to == from)
                return start; // whatever the speed
            return start + static_cast<std::uint64_t>(std::ceil(std::abs(to - from) * 1000.0 / speed));
        }
    };

    const Way& Axis(int axis) const { return m_ways[static_cast<std::size_t>(axis)]; }

    double At(const Way& way) const {
        const double gone = way.speed * static_cast<double>(m_clock.now - way.start) / 1000.0;
        const double length = std::abs(way.to - way.from);
        return way.from + std::copysign(std::min(gone, length), way.to - way.from);
    }

    /// From where it is, at this moment.
    void Begin(Way& way, double to, double speed, bool tells) {
        way = {At(way), to, speed, m_clock.now, tells};
    }

    Reply AnswerTo(std::string_view command) {
        if (command.empty())
            return {};
        const std::int32_t number = ParsedInteger(command.substr(1)).value_or(0);
        const auto axisIn = [&](std::string_view letters) { return letters.find(command[0]); };
        if (const std::size_t axis = axisIn(moves); axis != std::string_view::npos) {
            const double target = std::clamp(static_cast<double>(number), -limit, limit);
            Begin(m_ways[axis], target, m_ways[axis].speed, target == number);
        } else if (const std::size_t stopped = axisIn(stops); stopped != std::string_view::npos) {
            Begin(m_ways[stopped], At(m_ways[stopped]), m_ways[stopped].speed, false);
        } else if (const std::size_t told = axisIn(speeds); told != std::string_view::npos) {
            Begin(m_ways[told], m_ways[told].to, number, m_ways[told].tells);
        } else if (const std::size_t asked = axisIn(questions); asked != std::string_view::npos && !silent) {
            const auto steps = static_cast<std::int32_t>(At(m_ways[asked]));
            if (asked == 2)
                toldZ.push_back(steps);
            return {{1, Terminated(std::to_string(steps))}};
        }
        return {};
    }

    /// Those that come while a read waits: a stop takes back the others.
    void TellArrivals() {
        for (std::size_t axis = 0; axis < m_ways.size(); ++axis) {
            const std::uint64_t at = m_ways[axis].EndsAt() + tellingMs;
            if (silent || !m_ways[axis].tells || at > m_clock.now + longestReadMs)
                continue;
            Arrive(at, Terminated(std::string(1, "XYZ"[axis])));
            m_ways[axis].tells = false;
        }
    }

    VirtualClock& m_clock;
    std::array<Way, 3> m_ways = {};
};

} // namespace tessaro
