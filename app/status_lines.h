#pragma once

#include "app/program_windows.h"
#include "app/status_listener.h"
#include "platform/dialogs.h"
#include "stage/stage_link.h"

#include <array>
#include <cstdint>
#include <string_view>

namespace tessaro {

/// What the position boxes of the control panel showed last. A panel that is opened again starts with empty
/// boxes and keeps them until the stage has moved: `shownOnce` is never cleared.
struct ShownPosition {
    std::array<std::int32_t, 3> um = {};
    std::int32_t shownOnce = 0;
};

/// Writes into the control panel; while the panel is not open nothing is written. A listener hears the two
/// lines in any case.
class StatusLines {
public:
    StatusLines(Dialogs& dialogs, const ProgramWindows& windows, const StageLink& stage, ShownPosition& shown,
                StatusListener* listener = nullptr)
        : m_dialogs(dialogs), m_windows(windows), m_stage(stage), m_shown(shown), m_listener(listener) {}

    int ShowInformation(std::string_view text); // the program's message line; returns 1
    int ShowProgress(std::string_view text);    // the motion and progress line; returns 1

    /// The stage position in whole um, truncated; only what has changed is written. 0 = the panel is not
    /// open.
    int ShowStagePosition();

    /// Any box of the panel.
    void ShowItem(int controlId, std::string_view text);

private:
    Dialogs& m_dialogs;
    const ProgramWindows& m_windows;
    const StageLink& m_stage;
    ShownPosition& m_shown;
    StatusListener* m_listener; // null: nobody listens
};

} // namespace tessaro
