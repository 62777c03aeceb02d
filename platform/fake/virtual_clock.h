#pragma once

#include "platform/clock.h"

namespace tessaro {

/// Time that passes only when somebody waits: a sleep costs nothing and moves the clock.
class VirtualClock : public Clock {
public:
    std::uint64_t TickMilliseconds() override { return now; }
    void Sleep(std::uint32_t milliseconds) override { now += milliseconds; }
    LocalTime Now() override { return localTime; }

    std::uint64_t now = 0;
    LocalTime localTime{2024, 3, 15, 14, 7};
};

} // namespace tessaro
