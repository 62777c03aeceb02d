#pragma once

#include "app/live_view.h"
#include "app/program_windows.h"
#include "app/status_lines.h"
#include "platform/clock.h"
#include "platform/message_boxes.h"
#include "platform/message_loop.h"
#include "scan/scan_state.h"
#include "stage/stage_link.h"

#include <cstdint>

namespace tessaro {

/// Keeps the program alive while an operation takes its time: every wait of the program is one of these.
/// Operations may nest, since any message may be dispatched here.
class MessagePump {
public:
    MessagePump(Clock& clock, MessageLoop& messages, MessageBoxes& boxes, LiveView& liveView,
                StatusLines& status, ScanState& scan, StageLink& stage, const ProgramWindows& windows)
        : m_clock(clock), m_messages(messages), m_boxes(boxes), m_liveView(liveView), m_status(status),
          m_scan(scan), m_stage(stage), m_windows(windows) {}

    /// Dispatches messages for so long, with the live view suspended. A click, or the "Stop" command, asks
    /// whether a running scan is to stop, and stops the stage where none runs. 1 = the time has passed, 0 =
    /// the operator wants to stop; then the live view stays suspended. Once the program is told to quit,
    /// every wait ends so, and a stop counts as requested: nobody is there any more who could ask for it.
    int PumpMessages(std::uint32_t milliseconds);

private:
    bool AsksToStop(const Message& message) const;
    bool StopIsConfirmed();
    void StopStage();
    void TogglePause();

    Clock& m_clock;
    MessageLoop& m_messages;
    MessageBoxes& m_boxes;
    LiveView& m_liveView;
    StatusLines& m_status;
    ScanState& m_scan;
    StageLink& m_stage;
    const ProgramWindows& m_windows;
};

} // namespace tessaro
