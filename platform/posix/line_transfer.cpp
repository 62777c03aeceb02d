#include "platform/posix/line_transfer.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <poll.h>
#include <unistd.h>

namespace tessaro {
namespace {

using SteadyClock = std::chrono::steady_clock;
using std::chrono::milliseconds;

/// Far beyond every time-out in use, and still a time that the clock can tell.
constexpr milliseconds longestWait = std::chrono::hours(24 * 365 * 100);

constexpr short brokenLine = POLLHUP | POLLERR | POLLNVAL;

SteadyClock::time_point EndOfTransfer(std::size_t size, std::uint32_t multiplierMs,
                                      std::uint32_t constantMs) {
    const double wanted = static_cast<double>(size) * multiplierMs + constantMs;
    const bool endless = wanted >= static_cast<double>(longestWait.count());
    return SteadyClock::now() +
           (endless ? longestWait : milliseconds(static_cast<milliseconds::rep>(wanted)));
}

timespec TimeUntil(SteadyClock::time_point end) {
    using namespace std::chrono;
    const nanoseconds left = std::max<nanoseconds>(end - SteadyClock::now(), nanoseconds(0));
    const seconds whole = duration_cast<seconds>(left);
    return {static_cast<time_t>(whole.count()), static_cast<long>((left - whole).count())};
}

/// What has become of the device until then; 0 when nothing has.
short Await(int device, short wanted, SteadyClock::time_point end) {
    pollfd state = {device, wanted, 0};
    for (;;) {
        const timespec left = TimeUntil(end);
        const int changed = ppoll(&state, 1, &left, nullptr);
        if (changed >= 0)
            return state.revents;
        if (errno != EINTR)
            return POLLERR;
    }
}

/// The number of the error by which a transfer of `moved` bytes shows that the line is broken; 0 when it is
/// not. A line that hung up reads as the end of a file; one where there was nothing to do after all, as busy.
int ErrorOf(ssize_t moved, short state) {
    if (moved > 0)
        return 0;
    const bool later = moved == 0 || errno == EAGAIN || errno == EINTR;
    if (!later)
        return errno;
    return (state & brokenLine) != 0 ? EIO : 0;
}

} // namespace

LineTransfer ReadFromLine(int device, std::span<std::uint8_t> bytes, const SerialTimeouts& timeouts) {
    const auto end = EndOfTransfer(bytes.size(), timeouts.readMultiplier, timeouts.readConstant);
    auto silence = end;
    LineTransfer done;
    while (done.count < bytes.size()) {
        const short state = Await(device, POLLIN, std::min(end, silence));
        if (state == 0)
            break;
        const ssize_t taken = read(device, bytes.data() + done.count, bytes.size() - done.count);
        if (const int error = ErrorOf(taken, state); error != 0) {
            done.error = done.count == 0 ? error : 0; // what came before is handed over first
            break;
        }
        if (taken <= 0) {
            if (SteadyClock::now() >= end) // a driver that goes on calling the device ready
                break;
            continue;
        }
        done.count += static_cast<std::uint32_t>(taken);
        if (timeouts.readInterval != 0)
            silence = SteadyClock::now() + milliseconds(timeouts.readInterval);
    }
    return done;
}

LineTransfer WriteToLine(int device, std::span<const std::uint8_t> bytes, const SerialTimeouts& timeouts) {
    const auto end = EndOfTransfer(bytes.size(), timeouts.writeMultiplier, timeouts.writeConstant);
    LineTransfer done;
    while (done.count < bytes.size() && done.error == 0) {
        const short state = Await(device, POLLOUT, end);
        if (state == 0)
            break;
        const ssize_t sent = write(device, bytes.data() + done.count, bytes.size() - done.count);
        done.error = ErrorOf(sent, state);
        if (sent > 0)
            done.count += static_cast<std::uint32_t>(sent);
        else if (SteadyClock::now() >= end)
            break;
    }
    return done;
}

} // namespace tessaro
