#pragma once

#include "platform/message.h"

#include <cstdint>

namespace tessaro {

/// The messages of all windows of the program, which arrive on one thread in the order in which they
/// happened.
class MessageLoop {
public:
    virtual ~MessageLoop() = default;

    /// Takes the oldest message out of the queue; where there is none, waits for one, at most so long and
    /// without burning the processor. False: none has come. 0 asks without waiting.
    virtual bool TakeMessage(Message& message, std::uint32_t milliseconds) = 0;

    /// Takes the oldest message, however long it takes to come. False once PostQuit has been called and no
    /// message is left.
    virtual bool WaitMessage(Message& message) = 0;

    /// Gives a taken message to its window. The window may be gone by now; then nothing happens.
    virtual void Dispatch(const Message& message) = 0;

    /// A Timer message to the window every so many milliseconds, from one period from now on. A timer that is
    /// set again starts anew. A tick that has not been taken when the next is due is not doubled.
    virtual void SetTimer(WindowHandle window, std::uint32_t id, std::uint32_t milliseconds) = 0;

    /// No tick of the timer is taken any more, one that waits included.
    virtual void KillTimer(WindowHandle window, std::uint32_t id) = 0;

    virtual void PostQuit(int exitCode) = 0;

    /// PostQuit has been called.
    virtual bool HasQuit() const = 0;

    /// What PostQuit was told; 0 before.
    virtual int ExitCode() const = 0;
};

} // namespace tessaro
