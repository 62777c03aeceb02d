#include "scan/control_panel.h"

#include "app/number_text.h"
#include "app/resource_ids.h"
#include "scan/control_panel_ids.h"

namespace tessaro {

void ControlPanel::Open(WindowHandle owner) {
    if (m_windows.controlPanel != WindowHandle::None)
        return;
    m_windows.controlPanel = m_dialogs.CreateModeless(resource::controlPanel, owner, *this);
    m_dialogs.ShowModeless(m_windows.controlPanel);
}

void ControlPanel::Close() {
    const WindowHandle dialog = m_windows.controlPanel;
    m_windows.controlPanel = WindowHandle::None;
    m_dialogs.DestroyModeless(dialog);
}

void ControlPanel::Initialize(WindowHandle dialog) {
    ShowRangesIn(dialog);
    m_dialogs.SetChecked(dialog, panel::tiltCorrection, m_focus.tiltCorrection == 1);
}

void ControlPanel::ShowRanges() {
    ShowRangesIn(m_windows.controlPanel);
}

void ControlPanel::ShowRangesIn(WindowHandle dialog) {
    m_dialogs.SetItemText(dialog, panel::xRange, Formatted("%d", m_settings.xRange));
    m_dialogs.SetItemText(dialog, panel::yRange, Formatted("%d", m_settings.yRange));
}

void ControlPanel::Command([[maybe_unused]] WindowHandle dialog, int controlId,
                           [[maybe_unused]] Notification notification) {
    if (controlId == commandCancel)
        Close();
}

} // namespace tessaro
