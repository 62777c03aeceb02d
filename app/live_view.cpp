#include "app/live_view.h"

namespace tessaro {

int LiveView::Switch(std::int32_t on) {
    m_timer.previous = m_timer.on;
    m_timer.on = on;
    if (on == 1)
        StartTimer();
    else
        StopTimer();
    return 0;
}

void LiveView::Suspend() {
    m_timer.saved = m_timer.on;
    StopTimer();
}

void LiveView::Resume() {
    if (m_timer.saved != 0)
        StartTimer();
}

void LiveView::StartTimer() {
    m_messages.SetTimer(m_windows.main, liveTimerId, liveTimerPeriodMs);
}

void LiveView::StopTimer() {
    m_messages.KillTimer(m_windows.main, liveTimerId);
}

} // namespace tessaro
