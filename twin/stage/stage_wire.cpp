#include "twin/stage/stage_wire.h"

#include <algorithm>

namespace tessaro {
namespace {

constexpr double junkTickSeconds = 0.01;

} // namespace

void StageWire::StartJunk(double now) {
    m_junkStart = now;
    m_junkSent = 0;
}

void StageWire::Receive(std::string_view bytes, double now) {
    double time = m_coming.empty() ? now : std::max(now, m_coming.back().time);
    for (const char byte : bytes)
        m_coming.push_back({time += byteSeconds, byte});
}

std::string StageWire::Run(double now) {
    Deliver(now);
    if (std::max(m_lineFree, m_controller.NextSayTime()) <= now)
        if (const auto reply = m_controller.Say(now))
            if (const auto sent = m_faults.Send(*reply))
                Transmit(*sent, now);
    std::string bytes = JunkUntil(now);
    while (!m_going.empty() && m_going.front().time <= now) {
        bytes += m_going.front().byte;
        m_going.pop_front();
    }
    return bytes;
}

void StageWire::Deliver(double now) {
    while (!m_coming.empty() && m_coming.front().time <= now) {
        const TimedByte byte = m_coming.front();
        m_coming.pop_front();
        m_controller.Receive(byte.byte, byte.time);
    }
}

/// Replies that are late do not keep the line from the next ones: those are as late.
void StageWire::Transmit(const LineReply& reply, double now) {
    double time = now;
    std::size_t sent = 0;
    for (const char byte : reply.bytes) {
        m_going.push_back({(time += byteSeconds) + m_faults.settings.lateSeconds, byte});
        if (++sent == reply.pauseAfter)
            time += pieceGapSeconds;
    }
    m_lineFree = time + gapSeconds;
}

std::string StageWire::JunkUntil(double now) {
    std::string bytes;
    const auto due = static_cast<std::size_t>(
        std::clamp((now - m_junkStart) * junkBytesPerSecond, 0.0, static_cast<double>(junkBytes)));
    for (; m_junkSent < due; ++m_junkSent)
        bytes += m_junkSent < junkNuls ? '\0' : static_cast<char>(m_junk.Next() & 0xFF);
    return bytes;
}

double StageWire::NextTime() const {
    double next = std::max(m_lineFree, m_controller.NextSayTime());
    if (!m_coming.empty())
        next = std::min(next, m_coming.front().time);
    if (!m_going.empty())
        next = std::min(next, m_going.front().time);
    if (m_junkSent < junkBytes)
        next = std::min(next, m_junkStart + (static_cast<double>(m_junkSent) / junkBytesPerSecond) +
                                  junkTickSeconds);
    return next;
}

} // namespace tessaro
