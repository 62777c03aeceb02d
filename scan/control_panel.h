#pragma once

#include "app/live_timer.h"
#include "app/live_view.h"
#include "app/program_windows.h"
#include "app/settings.h"
#include "app/status_lines.h"
#include "focus/auto_focus.h"
#include "platform/dialogs.h"
#include "platform/window_system.h"
#include "scan/field_work.h"
#include "scan/focus_control.h"
#include "scan/scan_run.h"
#include "scan/scan_state.h"
#include "scan/tilt_plane.h"
#include "stage/stage_motion.h"

#include <cstdint>
#include <optional>

namespace tessaro {

/// The operator's console: position, scan area, focus heights, status lines. At most one is open. Whatever
/// happens in it, the scan's ranges become what is typed in it, as far as that is a number. Nothing else in
/// it is the panel's own: it can be closed and opened again at any time, in a scan as well.
class ControlPanel : public DialogProcedure {
public:
    /// What the panel shows and sets, and what its buttons make work.
    struct Reach {
        Dialogs& dialogs;
        WindowSystem& windowSystem;
        ProgramWindows& windows;
        Settings& settings;
        FocusControl& focus;
        ScanState& scan;
        StageLink& stage;
        StageMotion& motion;
        AutoFocus& autoFocus;
        TiltPlane& tilt;
        FieldWork& work;
        ScanRun& scanRun;
        LiveView& liveView;
        const LiveTimer& liveTimer;
        StatusLines& status;
    };

    explicit ControlPanel(const Reach& reach) : m_reach(reach) {}

    /// Opens it beside its owner; does nothing while it is open.
    void Open(WindowHandle owner);

    void Close();

    /// Writes the scan ranges of the settings into the open panel.
    void ShowRanges();

    void Initialize(WindowHandle dialog) override;
    void Command(WindowHandle dialog, int controlId, Notification notification) override;

private:
    void ShowRangesIn(WindowHandle dialog);
    void TakeTypedRanges(WindowHandle dialog);
    void TakeTyped(WindowHandle dialog, int controlId, std::int32_t& value);
    void GoTo(std::int64_t x, std::int64_t y);
    void SetOriginHere();
    void MoveToTargets(WindowHandle dialog);
    std::optional<std::int32_t> Target(WindowHandle dialog, int controlId);
    void SweepCoarsely();
    void SweepFinely();
    void FocusHere(WindowHandle dialog);
    void MoveZBy(WindowHandle dialog, double um);
    void RecordDepth(WindowHandle dialog);
    void WorkOutSlopes(WindowHandle dialog);
    void SwitchTiltCorrection(WindowHandle dialog);
    void StartScan(WindowHandle dialog);
    void TestScore();

    Reach m_reach;
    std::int32_t m_panelBusy = 0; // a move by one of the buttons is in progress
};

} // namespace tessaro
