#pragma once

#include "platform/message_loop.h"

#include <memory>

namespace tessaro {

class QtWindowTable;

/// A queue of our own between Qt and the windows. Qt delivers events as soon as it looks at them; here mouse
/// and key events are taken away from it before they reach a window, wait their turn with commands and
/// timers, and are delivered by Dispatch. Only so can the pump look at a press before a button does.
/// WaitMessage, whose messages nobody looks at, leaves mouse and keys to Qt, so that they keep their order
/// with shortcuts, popups and focus.
class QtMessageLoop : public MessageLoop {
public:
    explicit QtMessageLoop(QtWindowTable& windows);
    ~QtMessageLoop() override;
    QtMessageLoop(const QtMessageLoop&) = delete;
    QtMessageLoop& operator=(const QtMessageLoop&) = delete;

    bool TakeMessage(Message& message, std::uint32_t milliseconds) override;
    bool WaitMessage(Message& message) override;
    void Dispatch(const Message& message) override;
    void SetTimer(WindowHandle window, std::uint32_t id, std::uint32_t milliseconds) override;
    void KillTimer(WindowHandle window, std::uint32_t id) override;
    void PostQuit(int exitCode) override;
    bool HasQuit() const override;
    int ExitCode() const override;

    /// WaitMessage for the loop of a dialog or question. One that was asked while the pump decides about a
    /// message leaves the input behind that message in the queue, so that nothing overtakes it.
    bool WaitMessageInDialog(Message& message);

    /// Puts a message that is none of Qt's events at the end of the queue.
    void Post(Message message);

    /// Its timers and waiting messages go with a window.
    void Forget(WindowHandle window);

    /// What the operator did to windows before they were hidden, and what still waits, does not happen.
    void ForgetInputOfHidden();

    /// Around calls into Qt that may report something at once, and so dispatch messages: while one lives,
    /// what was told to delete itself stays, for it may be in the middle of reporting.
    class QtCall {
    public:
        explicit QtCall(QtMessageLoop& messages);
        ~QtCall();
        QtCall(const QtCall&) = delete;
        QtCall& operator=(const QtCall&) = delete;

    private:
        QtMessageLoop& m_messages;
    };

private:
    struct State;
    std::unique_ptr<State> m_state;
};

} // namespace tessaro
