#include "platform/posix/interrupts.h"

#include <array>
#include <atomic>
#include <csignal>

namespace tessaro {
namespace {

constexpr std::array<int, 3> signals = {SIGINT, SIGTERM, SIGHUP};

std::atomic<bool> interrupted = false;
static_assert(std::atomic<bool>::is_always_lock_free); // a handler may touch nothing else

bool IsIgnored(int signal) {
    struct sigaction action = {};
    return sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

void SetHandler(int signal, void (*handler)(int)) {
    struct sigaction action = {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    sigemptyset(&action.sa_mask);
    sigaction(signal, &action, nullptr);
}

extern "C" void NoteInterrupt([[maybe_unused]] int signal) {
    interrupted = true;
    for (const int each : signals)
        if (!IsIgnored(each))
            SetHandler(each, SIG_DFL);
}

} // namespace

void HearInterrupts() {
    for (const int each : signals)
        if (each != SIGHUP || !IsIgnored(each))
            SetHandler(each, NoteInterrupt);
}

bool Interrupted() {
    return interrupted;
}

} // namespace tessaro
