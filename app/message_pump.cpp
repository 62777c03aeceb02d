#include "app/message_pump.h"

#include "app/resource_ids.h"

namespace tessaro {

int MessagePump::PumpMessages(std::uint32_t milliseconds) {
    const std::uint64_t start = m_clock.TickMilliseconds();
    m_liveView.Suspend();
    for (;;) {
        const std::uint64_t elapsed = m_clock.TickMilliseconds() - start;
        const auto left = elapsed < milliseconds ? static_cast<std::uint32_t>(milliseconds - elapsed) : 0U;
        if (m_messages.HasQuit()) {
            m_scan.stopRequested = 1;
            return 0;
        }
        Message message;
        if (!m_messages.TakeMessage(message, left)) {
            if (left > 0)
                continue;
            m_liveView.Resume();
            return 1;
        }
        if (AsksToStop(message)) {
            if (m_scan.scanning == 1) {
                if (StopIsConfirmed())
                    return 0;
            } else {
                StopStage();
            }
        } else if (LowWord(message.parameter) == command::pauseResume) {
            TogglePause();
        }
        m_messages.Dispatch(message);
    }
}

/// The kind of a message whose parameter is the stop command's is not looked at.
bool MessagePump::AsksToStop(const Message& message) const {
    const bool asks =
        LowWord(message.parameter) == command::stop || message.kind == MessageKind::LeftButtonPress;
    return asks &&
           (m_windows.motorController == WindowHandle::None || message.window != m_windows.motorController);
}

bool MessagePump::StopIsConfirmed() {
    if (!m_boxes.AskYesNo(m_windows.main, "Do you want to stop, now ?", "Warning"))
        return false;
    m_scan.stopRequested = 1;
    return true;
}

void MessagePump::StopStage() {
    m_stage.StopAxis(axisX);
    m_stage.StopAxis(axisY);
    m_stage.StopAxis(axisZ);
}

/// Nothing reads the flag: a paused scan keeps moving.
void MessagePump::TogglePause() {
    m_scan.paused = m_scan.paused == 0 ? 1 : 0;
    m_status.ShowInformation(m_scan.paused == 1 ? "Paused..." : "Scanning resumed...");
}

} // namespace tessaro
