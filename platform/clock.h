#pragma once

#include <cstdint>

namespace tessaro {

/// The wall clock's reading in the user's time zone.
struct LocalTime {
    int year = 0;
    int month = 0; // 1 to 12
    int day = 0;   // 1 to 31
    int hour = 0;
    int minute = 0;
    int second = 0;
};

class Clock {
public:
    virtual ~Clock() = default;

    /// Milliseconds since a moment that stays the same while the program runs; never runs backwards.
    virtual std::uint64_t TickMilliseconds() = 0;

    /// Does nothing for so long; no message is dispatched meanwhile.
    virtual void Sleep(std::uint32_t milliseconds) = 0;

    virtual LocalTime Now() = 0;
};

} // namespace tessaro
