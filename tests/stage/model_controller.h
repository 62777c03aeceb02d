#pragma once

#include "tests/stage/stage_fixture.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

namespace tessaro {

/// A controller as it should be: it answers queries at once, reports progress every 50 ms and its arrival at
/// the end, unless a limit is in the way. Its axes need a millisecond a step.
class ModelController {
public:
    using Reply = ScriptedSerialPorts::Reply;

    explicit ModelController(const VirtualClock& clock) : m_clock(clock) {}

    Reply Answer(const std::string& written) {
        const std::string text = written.substr(0, written.find('\0'));
        if (const std::size_t axis = AxisOf("pPQ", text); axis < axes)
            return {{1, Terminated(std::to_string(Steps(axis)))}};
        if (const std::size_t axis = AxisOf("mML", text); axis < axes)
            return Move(axis, std::atoi(text.c_str() + 1));
        return {};
    }

    /// Where the axis really is.
    std::int64_t Steps(std::size_t axis) const {
        const Way& way = m_ways[axis];
        const auto gone = static_cast<std::int64_t>(m_clock.now - way.start);
        const std::int64_t length = std::abs(way.to - way.from);
        return way.to > way.from ? way.from + std::min(gone, length) : way.from - std::min(gone, length);
    }

private:
    static constexpr std::size_t axes = 3;
    static constexpr std::uint64_t progressMs = 50;
    static constexpr std::int64_t limit = 2000; // steps

    struct Way {
        std::int64_t from = 0;
        std::int64_t to = 0;
        std::uint64_t start = 0;
    };

    static std::size_t AxisOf(std::string_view letters, const std::string& text) {
        return text.empty() ? std::string_view::npos : letters.find(text[0]);
    }

    Reply Move(std::size_t axis, std::int64_t target) {
        Way& way = m_ways[axis];
        way = {Steps(axis), std::clamp(target, -limit, limit), m_clock.now};
        const auto duration = static_cast<std::uint64_t>(std::abs(way.to - way.from));
        const std::int64_t direction = way.to > way.from ? 1 : -1;
        Reply reply;
        for (std::uint64_t at = progressMs; at < duration; at += progressMs) {
            const std::int64_t steps = way.from + direction * static_cast<std::int64_t>(at);
            reply.push_back({at, Terminated(std::string(1, "pPQ"[axis]) + std::to_string(steps))});
        }
        if (way.to == target)
            reply.push_back({std::max(duration, progressMs) + 1, Terminated(std::string(1, "XYZ"[axis]))});
        return reply;
    }

    const VirtualClock& m_clock;
    std::array<Way, axes> m_ways = {};
};

} // namespace tessaro
