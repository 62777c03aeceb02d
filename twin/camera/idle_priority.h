#pragma once

#include <sched.h>
#include <unistd.h>

namespace tessaro {

/// Lets the calling thread run only where nobody else wants to, unless it is root's. The server sends each
/// frame in one burst, and over the loopback interface what the receiver has not fetched when its buffer is
/// full is lost: a client that may not have a buffer for a whole frame, as ordinary users may not, needs the
/// sender to give way. (Root's clients read the interface itself and lose nothing, and a busy machine keeps
/// nobody waiting for answers.)
inline void RunWhenIdle() {
    thread_local const bool done = [] {
        const sched_param none = {};
        return geteuid() == 0 || sched_setscheduler(0, SCHED_IDLE, &none) == 0;
    }();
    static_cast<void>(done); // where the system refuses, frames get lost more often, and nothing else
}

} // namespace tessaro
