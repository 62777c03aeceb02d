#pragma once

#include "twin/stage/stage_axes.h"
#include "twin/stage/stage_controller.h"
#include "twin/stage/stage_wire.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

namespace tessaro {

inline constexpr double byteTime = 10.0 / 9600.0; // s
inline constexpr double rounding = 1e-6;          // of the times in a test, s

/// A reply as the host gets it: when its first and its last byte had gone over the line, and its text without
/// the NUL.
struct HeardReply {
    double begin = 0.0;
    double end = 0.0;
    std::string text;
};

/// A host at the other end of the wire, in a time of its own. The stage stands at (0, 0, 0) at first.
class VirtualLine {
public:
    explicit VirtualLine(double timeFactor = 1.0, const ProgressAxes& progressAxes = usualProgressAxes)
        : axes({}, {{-1000.0, -1000.0, -1000.0}, {5000.0, 5000.0, 5000.0}}, timeFactor),
          controller(
              axes, [this](std::string_view text, double) { log.emplace_back(text); }, progressAxes),
          wire(controller) {}

    /// Sends commands, each with its NUL, one right after the other. It takes until the last byte has come.
    void Send(const std::vector<std::string>& commands) {
        std::string all;
        for (const std::string& command : commands)
            all += command + '\0';
        SendBytes(all);
    }

    void SendBytes(const std::string& all) {
        for (std::size_t sent = 0; sent < all.size(); sent += StageWire::roomForBytes) {
            const std::string piece = all.substr(sent, StageWire::roomForBytes);
            wire.Receive(piece, now);
            RunUntil(now + static_cast<double>(piece.size()) * StageWire::byteSeconds + 1e-9);
        }
    }

    void RunFor(double seconds) { RunUntil(now + seconds); }

    void RunUntil(double time) {
        while (wire.NextTime() <= time) {
            now = std::max(now, wire.NextTime());
            Hear(wire.Run(now));
        }
        now = time;
    }

    std::vector<std::string> Texts() const {
        std::vector<std::string> texts;
        for (const HeardReply& reply : heard)
            texts.push_back(reply.text);
        return texts;
    }

    /// What is said until nothing is to come; heard before, it is forgotten.
    std::vector<std::string> TextsUntilSilence() {
        heard.clear();
        while (std::isfinite(wire.NextTime()))
            RunUntil(std::max(now, wire.NextTime()));
        return Texts();
    }

    StageAxes axes;
    std::vector<std::string> log;
    StageController controller;
    StageWire wire;
    double now = 100.0;
    std::string bytes; // all that came
    std::vector<double> byteTimes;
    std::vector<HeardReply> heard;

private:
    /// The bytes that come together went over the line one by one before.
    void Hear(const std::string& come) {
        double time = now - static_cast<double>(come.size()) * StageWire::byteSeconds;
        for (const char byte : come) {
            time += StageWire::byteSeconds;
            bytes += byte;
            byteTimes.push_back(time);
            if (m_begun.text.empty())
                m_begun.begin = time;
            if (byte != '\0') {
                m_begun.text += byte;
                continue;
            }
            m_begun.end = time;
            heard.push_back(m_begun);
            m_begun = {};
        }
    }

    HeardReply m_begun;
};

} // namespace tessaro
