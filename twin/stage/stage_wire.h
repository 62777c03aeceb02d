#pragma once

#include "twin/stage/reply_faults.h"
#include "twin/stage/stage_controller.h"

#include <cstddef>
#include <deque>
#include <limits>
#include <string>
#include <string_view>

namespace tessaro {

/// The serial line between a host and the controller: every byte takes its time, in both directions at once.
/// The host gets a reply as a whole with its last byte, as from a port that collects what comes. Times are
/// seconds, never going back.
class StageWire {
public:
    explicit StageWire(StageController& controller) : m_controller(controller) {}

    ReplyFaultSettings& Faults() { return m_faults.settings; }

    /// From now on, for some seconds, NULs and a megabyte of anything come from the controller's side, faster
    /// than the line could carry them.
    void StartJunk(double now);
    void StopJunk() { m_junkSent = junkBytes; }

    /// How many bytes of the host's the line takes now: none as long as earlier ones are under way.
    std::size_t Room() const { return m_coming.empty() ? roomForBytes : 0; }

    void Receive(std::string_view bytes, double now);

    /// The host is gone, after it wrote these bytes too: its commands act at once, and nothing is left to be
    /// said to the next one.
    void EndWith(std::string_view lastBytes, double now);

    /// What has come out at the host's end meanwhile.
    std::string Run(double now);

    /// When Run has something to do next; infinity: when bytes come from the host.
    double NextTime() const;

    static constexpr double byteSeconds = 10.0 / 9600.0; // 8 bits, a start and a stop bit
    /// Of silence between two replies, and between two pieces of one: the host takes 10 ms for a reply's end.
    static constexpr double gapSeconds = 0.015;
    static constexpr double pieceGapSeconds = 0.025;
    static constexpr std::size_t roomForBytes = 64;

    static constexpr std::size_t junkNuls = 4096;
    static constexpr std::size_t junkBytes = junkNuls + 1'000'000;
    static constexpr double junkBytesPerSecond = 100'000.0;

private:
    struct TimedByte {
        double time;
        char byte;
    };

    /// A reply, or a piece of one, on its way to the host.
    struct Sent {
        double time; // at which it has gone over the line; whatever is late comes later
        std::string bytes;
        double silence; // after it
    };

    void Deliver(double now);
    double DueTime(const Sent& sent) const;
    double HandOverTime(const Sent& sent) const;
    std::string HandOver(double now);
    double SayTime() const;
    void Transmit(const LineReply& reply, double now);
    std::string JunkUntil(double now);

    StageController& m_controller;
    ReplyFaults m_faults;
    std::deque<TimedByte> m_coming; // to the controller
    std::deque<Sent> m_going;       // to the host
    double m_lineFree = 0.0;        // for the next reply
    double m_silenceEnd = 0.0;      // after what the host got last
    double m_junkStart = 0.0;
    std::size_t m_junkSent = junkBytes;
    ReproducibleRandom m_junk{1};
};

} // namespace tessaro
