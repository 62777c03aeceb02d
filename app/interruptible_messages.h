#pragma once

#include "app/program_windows.h"
#include "platform/message_loop.h"
#include "scan/scan_state.h"

#include <cstdint>
#include <functional>
#include <utility>

namespace tessaro {

/// The messages of the program, with an interrupt from outside among them. It comes as the "Stop" command of
/// the main window, ahead of all others and as long as a scan runs that is not told to stop.
class InterruptibleMessages : public MessageLoop {
public:
    InterruptibleMessages(MessageLoop& messages, const ScanState& scan, const ProgramWindows& windows,
                          std::function<bool()> interrupted)
        : m_messages(messages), m_scan(scan), m_windows(windows), m_interrupted(std::move(interrupted)) {}

    bool TakeMessage(Message& message, std::uint32_t milliseconds) override;
    bool WaitMessage(Message& message) override { return m_messages.WaitMessage(message); }
    void Dispatch(const Message& message) override { m_messages.Dispatch(message); }
    void SetTimer(WindowHandle window, std::uint32_t id, std::uint32_t milliseconds) override {
        m_messages.SetTimer(window, id, milliseconds);
    }
    void KillTimer(WindowHandle window, std::uint32_t id) override { m_messages.KillTimer(window, id); }
    void PostQuit(int exitCode) override { m_messages.PostQuit(exitCode); }
    bool HasQuit() const override { return m_messages.HasQuit(); }
    int ExitCode() const override { return m_messages.ExitCode(); }

    /// The message that was taken last is the "Stop" command, of the menu or of an interrupt; not a mere
    /// click.
    bool LastIsStop() const { return m_lastIsStop; }

private:
    MessageLoop& m_messages;
    const ScanState& m_scan;
    const ProgramWindows& m_windows;
    std::function<bool()> m_interrupted;
    bool m_lastIsStop = false;
};

} // namespace tessaro
