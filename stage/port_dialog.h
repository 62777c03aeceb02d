#pragma once

#include "app/program_windows.h"
#include "platform/dialogs.h"
#include "stage/stage_link.h"

#include <functional>
#include <utility>

namespace tessaro {

/// Opens the stage's serial line under another number and looks for the camera again, while the program runs
/// on. At most one is open.
class PortDialog : public DialogProcedure {
public:
    PortDialog(Dialogs& dialogs, ProgramWindows& windows, StageLink& link,
               std::function<void()> initializeCamera)
        : m_dialogs(dialogs), m_windows(windows), m_link(link),
          m_initializeCamera(std::move(initializeCamera)) {}

    /// Does nothing while it is open.
    void Open(WindowHandle owner);

    void Close();

    void Initialize(WindowHandle dialog) override;
    void Command(WindowHandle dialog, int controlId, Notification notification) override;

private:
    void InitializeStage(WindowHandle dialog);
    void TakeSpeed(WindowHandle dialog);

    Dialogs& m_dialogs;
    ProgramWindows& m_windows;
    StageLink& m_link;
    std::function<void()> m_initializeCamera;
};

} // namespace tessaro
