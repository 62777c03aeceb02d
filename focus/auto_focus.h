#pragma once

#include "app/live_timer.h"
#include "app/live_view.h"
#include "app/message_pump.h"
#include "app/program_windows.h"
#include "app/status_lines.h"
#include "focus/focus_curve.h"
#include "focus/focus_view.h"
#include "platform/message_boxes.h"
#include "scan/focus_control.h"
#include "scan/scan_state.h"
#include "stage/stage_motion.h"

#include <cstdint>

namespace tessaro {

/// What a search for the focus works on.
struct FocusReach {
    FocusView& view;
    FocusControl& control;
    float& focusValue; // the last one measured, by whomever
    ScanState& scan;
    StageLink& stage;
    StageMotion& motion;
    MessagePump& pump;
    LiveView& liveView;
    const LiveTimer& liveTimer;
    StatusLines& status;
    MessageBoxes& boxes;
    const ProgramWindows& windows;
    FocusCurve* curve = nullptr; // null: nobody wants it
};

/// Brings the sample into focus by Z. Both searches are modal: they take and show a frame at every step and
/// pump messages, so that the operator can stop them, or start something else in the middle.
class AutoFocus {
public:
    explicit AutoFocus(const FocusReach& reach) : m_reach(reach) {}

    /// Sweeps from `range` um above to `range` um below, downwards at `speed` um/s, and goes to where the
    /// focus curve is bent most sharply. Z stays where it is when the operator stops it. `hint` is not used.
    void CoarseFocus(const float* hint, std::int32_t range, std::int32_t speed);

    /// Climbs in small steps, one way and then the other, and returns to the best position of the second way;
    /// sweeps first where there is too little to climb by. It begins upwards when what `hint` points at is
    /// above 0. `flag` is not used. 1 = done and acceptable; 0 otherwise, and a running scan is ended when
    /// the image is not sharp.
    int FineFocus(const float* hint, int flag);

    /// The first number of the focus record says where to begin: the search goes up where the sample rises
    /// along X.
    const float* Hint() const { return &m_reach.control.xTilt; }

private:
    FocusReach m_reach;
};

} // namespace tessaro
