#pragma once

#include "platform/clock.h"

namespace tessaro {

/// The clock of the C++ library. Ticks count from the program's start.
class StandardClock : public Clock {
public:
    std::uint64_t TickMilliseconds() override;
    void Sleep(std::uint32_t milliseconds) override;
    LocalTime Now() override;
};

} // namespace tessaro
