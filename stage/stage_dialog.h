#pragma once

#include "app/settings.h"
#include "app/status_lines.h"
#include "platform/dialogs.h"
#include "stage/stage_link.h"
#include "stage/stage_motion.h"

#include <cstdint>
#include <optional>

namespace tessaro {

/// Moves the stage to typed positions and by typed steps, says where it is, and sets the scan area, until
/// "Done". X, Y and their step are in tens of um, whatever the labels say.
class StageDialog : public DialogProcedure {
public:
    StageDialog(Dialogs& dialogs, StageLink& link, StageMotion& motion, Settings& settings,
                StatusLines& status)
        : m_dialogs(dialogs), m_link(link), m_motion(motion), m_settings(settings), m_status(status) {}

    void Show(WindowHandle owner);

    void Initialize(WindowHandle dialog) override;
    void Command(WindowHandle dialog, int controlId, Notification notification) override;

private:
    void Go(WindowHandle dialog);
    void GoToOrigin(WindowHandle dialog);
    void StepX(WindowHandle dialog, int direction);
    void StepY(WindowHandle dialog, int direction);
    void StepZ(WindowHandle dialog, int direction);
    void Set(WindowHandle dialog);
    void SetPosition(WindowHandle dialog);
    void SetScanArea(WindowHandle dialog);

    std::optional<double> TypedUm(WindowHandle dialog, int controlId);
    void ShowTens(WindowHandle dialog, int controlId, double um);
    std::optional<std::int32_t> ClampedLength(WindowHandle dialog, int controlId);

    Dialogs& m_dialogs;
    StageLink& m_link;
    StageMotion& m_motion;
    Settings& m_settings;
    StatusLines& m_status;
};

} // namespace tessaro
