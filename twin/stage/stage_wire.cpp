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

/// A machine that is too busy to call in time must not make replies run together.
std::string StageWire::Run(double now) {
    Deliver(now);
    std::string bytes = DueBytes(now);
    if (!bytes.empty() && m_faults.settings.lateSeconds == 0.0)
        m_lineFree = std::max(m_lineFree, now + gapSeconds);
    bytes += JunkUntil(now);
    if (std::max(m_lineFree, m_controller.NextSayTime()) <= now)
        if (const auto reply = m_controller.Say(now))
            if (const auto sent = m_faults.Send(*reply))
                Transmit(*sent, now);
    return bytes;
}

std::string StageWire::DueBytes(double now) {
    std::string bytes;
    while (!m_going.empty() && m_going.front().time <= now) {
        bytes += m_going.front().bytes;
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
    const std::string_view all = reply.bytes;
    double time = now;
    const auto send = [&](std::string_view piece) {
        time += static_cast<double>(piece.size()) * byteSeconds;
        m_going.push_back({time + m_faults.settings.lateSeconds, std::string(piece)});
    };
    if (reply.pauseAfter > 0) {
        send(all.substr(0, reply.pauseAfter));
        time += pieceGapSeconds;
    }
    send(all.substr(reply.pauseAfter));
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
