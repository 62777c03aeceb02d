#include "scan/control_panel.h"

#include "app/dialog_numbers.h"
#include "app/resource_ids.h"
#include "scan/control_panel_ids.h"

namespace tessaro {

void ControlPanel::Open(WindowHandle owner) {
    if (m_reach.windows.controlPanel != WindowHandle::None)
        return;
    m_reach.windows.controlPanel = m_reach.dialogs.CreateModeless(resource::controlPanel, owner, *this);
    m_reach.dialogs.ShowModeless(m_reach.windows.controlPanel);
}

void ControlPanel::Close() {
    const WindowHandle dialog = m_reach.windows.controlPanel;
    m_reach.windows.controlPanel = WindowHandle::None;
    m_reach.dialogs.DestroyModeless(dialog);
}

void ControlPanel::Initialize(WindowHandle dialog) {
    ShowRangesIn(dialog);
    m_reach.dialogs.SetChecked(dialog, panel::tiltCorrection, m_reach.focus.tiltCorrection == 1);
}

void ControlPanel::ShowRanges() {
    ShowRangesIn(m_reach.windows.controlPanel);
}

void ControlPanel::ShowRangesIn(WindowHandle dialog) {
    ShowInteger(m_reach.dialogs, dialog, panel::xRange, m_reach.settings.xRange);
    ShowInteger(m_reach.dialogs, dialog, panel::yRange, m_reach.settings.yRange);
}

void ControlPanel::Command(WindowHandle dialog, int controlId, [[maybe_unused]] Notification notification) {
    switch (controlId) {
    case panel::move:
        MoveToTargets(dialog);
        break;
    case commandCancel:
        Close();
        break;
    default:
        break;
    }
}

/// One after the other; each is read when the one before has arrived.
void ControlPanel::MoveToTargets(WindowHandle dialog) {
    const auto& position = m_reach.stage.position;
    if (const auto x = Target(dialog, panel::targetX))
        m_reach.motion.MoveXY(*x, position[1]);
    if (const auto y = Target(dialog, panel::targetY))
        m_reach.motion.MoveXY(position[0], *y);
    if (const auto z = Target(dialog, panel::targetZ))
        m_reach.motion.MoveAxisTo(axisZ, *z);
    m_reach.status.ShowStagePosition();
}

std::optional<std::int32_t> ControlPanel::Target(WindowHandle dialog, int controlId) {
    return TypedInteger(m_reach.dialogs, dialog, controlId, longNumberBytes);
}

} // namespace tessaro
