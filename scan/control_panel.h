#pragma once

#include "app/program_windows.h"
#include "app/settings.h"
#include "app/status_lines.h"
#include "focus/auto_focus.h"
#include "platform/dialogs.h"
#include "scan/focus_control.h"
#include "scan/scan_state.h"
#include "stage/stage_motion.h"

#include <cstdint>
#include <optional>

namespace tessaro {

/// The operator's console: position, scan area, status lines. At most one is open.
class ControlPanel : public DialogProcedure {
public:
    /// What the panel shows and sets, and what its buttons make work.
    struct Reach {
        Dialogs& dialogs;
        ProgramWindows& windows;
        Settings& settings;
        FocusControl& focus;
        ScanState& scan;
        StageLink& stage;
        StageMotion& motion;
        AutoFocus& autoFocus;
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
    void MoveToTargets(WindowHandle dialog);
    std::optional<std::int32_t> Target(WindowHandle dialog, int controlId);
    void FocusHere(WindowHandle dialog);
    void RecordDepth(WindowHandle dialog);

    Reach m_reach;
    std::int32_t m_panelBusy = 0; // a move by one of the buttons is in progress
};

} // namespace tessaro
