#pragma once

#include "app/program_windows.h"
#include "app/settings.h"
#include "platform/dialogs.h"
#include "scan/focus_control.h"

namespace tessaro {

/// The operator's console: position, scan area, status lines. At most one is open.
class ControlPanel : public DialogProcedure {
public:
    ControlPanel(Dialogs& dialogs, ProgramWindows& windows, const Settings& settings,
                 const FocusControl& focus)
        : m_dialogs(dialogs), m_windows(windows), m_settings(settings), m_focus(focus) {}

    /// Opens it beside its owner; does nothing while it is open.
    void Open(WindowHandle owner);

    void Close();

    /// Writes the scan ranges of the settings into the open panel.
    void ShowRanges();

    void Initialize(WindowHandle dialog) override;
    void Command(WindowHandle dialog, int controlId, Notification notification) override;

private:
    void ShowRangesIn(WindowHandle dialog);

    Dialogs& m_dialogs;
    ProgramWindows& m_windows;
    const Settings& m_settings;
    const FocusControl& m_focus;
};

} // namespace tessaro
