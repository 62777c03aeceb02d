#include "twin/stage/stage_wire.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace tessaro {
namespace {

constexpr double junkTickSeconds = 0.01;
constexpr double never = std::numeric_limits<double>::infinity();

double SecondsOf(std::string_view bytes) {
    return static_cast<double>(bytes.size()) * StageWire::byteSeconds;
}

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

void StageWire::EndWith(std::string_view lastBytes, double now) {
    Receive(lastBytes, now);
    for (const TimedByte& byte : m_coming)
        m_controller.Receive(byte.byte, now);
    m_coming.clear();
    m_going.clear();
    m_controller.ForgetHost();
}

/// A machine that is too busy to call in time must not make replies run together.
std::string StageWire::Run(double now) {
    Deliver(now);
    std::string bytes = HandOver(now);
    bytes += JunkUntil(now);
    if (SayTime() <= now)
        if (const auto reply = m_controller.Say(now))
            if (const auto sent = m_faults.Send(*reply))
                Transmit(*sent, now);
    return bytes;
}

double StageWire::DueTime(const Sent& sent) const {
    return sent.time + m_faults.settings.lateSeconds;
}

/// What should be there already, as after replies have stopped being late, keeps its distance all the same.
double StageWire::HandOverTime(const Sent& sent) const {
    return std::max(DueTime(sent), m_silenceEnd + SecondsOf(sent.bytes));
}

std::string StageWire::HandOver(double now) {
    if (m_going.empty() || HandOverTime(m_going.front()) > now)
        return {};
    const Sent sent = std::move(m_going.front());
    m_going.pop_front();
    m_silenceEnd = now + sent.silence;
    if (m_faults.settings.lateSeconds == 0.0)
        m_lineFree = std::max(m_lineFree, m_silenceEnd);
    return sent.bytes;
}

/// The controller waits for what should have gone before.
double StageWire::SayTime() const {
    const double time = std::max(m_lineFree, m_controller.NextSayTime());
    return m_going.empty() || time < DueTime(m_going.front()) ? time : never;
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
    const auto send = [&](std::string_view piece, double silence) {
        time += SecondsOf(piece);
        m_going.push_back({time, std::string(piece), silence});
        time += silence;
    };
    if (reply.pauseAfter > 0)
        send(all.substr(0, reply.pauseAfter), pieceGapSeconds);
    send(all.substr(reply.pauseAfter), gapSeconds);
    m_lineFree = time;
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
    double next = SayTime();
    if (!m_coming.empty())
        next = std::min(next, m_coming.front().time);
    if (!m_going.empty())
        next = std::min(next, HandOverTime(m_going.front()));
    if (m_junkSent < junkBytes)
        next = std::min(next, m_junkStart + (static_cast<double>(m_junkSent) / junkBytesPerSecond) +
                                  junkTickSeconds);
    return next;
}

} // namespace tessaro
