#pragma once

#include "app/live_view.h"
#include "app/message_pump.h"
#include "app/program_windows.h"
#include "app/status_lines.h"
#include "platform/window_drawing.h"
#include "platform/window_system.h"
#include "stage/stage_motion.h"

#include <cstdint>
#include <functional>
#include <utility>

namespace tessaro {

struct JogButton;

/// The popup window for moving the stage by hand: a button that is held moves an axis step by step. It stands
/// for the whole run; closing only hides it.
class MotorController : public WindowProcedure {
public:
    /// `refreshView` takes a frame and shows it.
    MotorController(WindowSystem& windows, WindowDrawing& drawing, ProgramWindows& handles,
                    LiveView& liveView, const LiveTimer& liveTimer, StageMotion& motion, StatusLines& status,
                    MessagePump& pump, std::function<void()> refreshView)
        : m_windows(windows), m_drawing(drawing), m_handles(handles), m_liveView(liveView),
          m_liveTimer(liveTimer), m_motion(motion), m_status(status), m_pump(pump),
          m_refreshView(std::move(refreshView)) {}

    bool HandleMessage(const Message& message) override;

private:
    void Create(WindowHandle window);
    void Close();
    void Destroy();
    void Press(std::uint32_t position);
    void Release();
    void TakeTypedStep();
    void MoveWhileHeld(const JogButton& button);
    void DrawButtons();
    void DrawPressed(const JogButton& button);

    WindowSystem& m_windows;
    WindowDrawing& m_drawing;
    ProgramWindows& m_handles;
    LiveView& m_liveView;
    const LiveTimer& m_liveTimer;
    StageMotion& m_motion;
    StatusLines& m_status;
    MessagePump& m_pump;
    std::function<void()> m_refreshView;

    WindowHandle m_window = WindowHandle::None;
    WindowHandle m_stepEdit = WindowHandle::None;
    std::int32_t m_jogStep = 100;   // um
    bool m_jogReleased = false;     // set by button-up, cleared when a jog starts
    bool m_jogBusy = false;         // another press is ignored
    bool m_releaseAwaited = false;  // of a press that was not ignored
    bool m_liveViewStopped = false; // by that press
};

} // namespace tessaro
