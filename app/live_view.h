#pragma once

#include "app/live_timer.h"
#include "app/program_windows.h"
#include "platform/message_loop.h"

#include <cstdint>

namespace tessaro {

inline constexpr std::uint32_t liveTimerId = 1;
inline constexpr std::uint32_t liveTimerPeriodMs = 100;

/// Switches the timer of the main window that drives the live view.
class LiveView {
public:
    LiveView(LiveTimer& timer, MessageLoop& messages, const ProgramWindows& windows)
        : m_timer(timer), m_messages(messages), m_windows(windows) {}

    int Switch(std::int32_t on); // remembers what it was; returns 0

    /// For a while; neither touches `on`.
    void Suspend();
    void Resume();

private:
    void StartTimer();
    void StopTimer();

    LiveTimer& m_timer;
    MessageLoop& m_messages;
    const ProgramWindows& m_windows;
};

} // namespace tessaro
