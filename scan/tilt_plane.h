#pragma once

#include "app/settings.h"
#include "app/status_lines.h"
#include "focus/auto_focus.h"
#include "focus/focus_view.h"
#include "scan/focus_control.h"
#include "scan/scan_state.h"
#include "stage/stage_motion.h"

#include <cstdint>

namespace tessaro {

/// The plane of best focus over the scan area, from the focus heights at the origin and at the far ends of
/// both ranges.
class TiltPlane {
public:
    struct Reach {
        FocusView& view;
        AutoFocus& autoFocus;
        StageLink& stage;
        StageMotion& motion;
        MessagePump& pump;
        StatusLines& status;
        ScanState& scan;
        const Settings& settings;
    };

    explicit TiltPlane(const Reach& reach) : m_reach(reach) {}

    /// Goes to the three places and focuses at each, at the origin last. 1 = the plane is known; 0 = stopped,
    /// or a place that could not be focused.
    int MeasureTilt(FocusControl& fc);

    /// Moves Z onto the plane where the stage stands, in whole um; nothing when it is there. `mode` is not
    /// used. Returns 0.
    int ApplyTiltZ(FocusControl& fc, int mode);

    /// Works the slopes out from the three heights and shows them by a printf format: (far end - origin) /
    /// range, in single precision.
    void SetSlopes(FocusControl& fc, const char* format);

private:
    bool FocusAt(const char* text, double x, double y, std::int32_t& depth, int box);
    bool FocusAtOrigin();
    bool FocusHere(std::int32_t& depth, int box);

    Reach m_reach;
};

} // namespace tessaro
