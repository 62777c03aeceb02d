#include "platform/standard/standard_clock.h"

#include <chrono>
#include <ctime>
#include <thread>

namespace tessaro {

std::uint64_t StandardClock::TickMilliseconds() {
    using std::chrono::steady_clock;
    static const steady_clock::time_point start = steady_clock::now();
    const auto passed = std::chrono::duration_cast<std::chrono::milliseconds>(steady_clock::now() - start);
    return static_cast<std::uint64_t>(passed.count());
}

void StandardClock::Sleep(std::uint32_t milliseconds) {
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

LocalTime StandardClock::Now() {
    const std::time_t now = std::time(nullptr);
    const std::tm* local = std::localtime(&now); // one thread asks for the time
    if (local == nullptr)
        return {};
    return {local->tm_year + 1900, local->tm_mon + 1, local->tm_mday,
            local->tm_hour,        local->tm_min,     local->tm_sec};
}

} // namespace tessaro
