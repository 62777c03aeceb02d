#include "stage/port_dialog.h"

#include "app/dialog_numbers.h"
#include "app/resource_ids.h"

#include <algorithm>

namespace tessaro {
namespace {

namespace control {
constexpr int portNumber = 1000;
constexpr int initializeStage = 1008;
constexpr int initializeCamera = 1009;

/// The dialog has no such control, on purpose: the speed is not for operators to set, and the OK button
/// changes nothing.
constexpr int speed = 200;
} // namespace control

constexpr std::int32_t slowest = 100; // um/s
constexpr std::int32_t fastest = 2000;

} // namespace

void PortDialog::Open(WindowHandle owner) {
    if (m_windows.portConfiguration != WindowHandle::None)
        return;
    m_windows.portConfiguration = m_dialogs.CreateModeless(resource::portDialog, owner, *this);
    m_dialogs.ShowModeless(m_windows.portConfiguration);
}

void PortDialog::Close() {
    const WindowHandle dialog = m_windows.portConfiguration;
    m_windows.portConfiguration = WindowHandle::None;
    m_dialogs.DestroyModeless(dialog);
}

void PortDialog::Initialize(WindowHandle dialog) {
    ShowInteger(m_dialogs, dialog, control::portNumber, m_link.portNumber);
    ShowInteger(m_dialogs, dialog, control::speed, m_link.speed[0]);
}

void PortDialog::Command(WindowHandle dialog, int controlId, [[maybe_unused]] Notification notification) {
    switch (controlId) {
    case control::initializeStage:
        InitializeStage(dialog);
        break;
    case control::initializeCamera:
        m_initializeCamera();
        break;
    case commandOk: // leaves the dialog open
        TakeSpeed(dialog);
        break;
    case commandCancel:
        Close();
        break;
    default:
        break;
    }
}

/// Without a number the line is opened anew under the old one.
void PortDialog::InitializeStage(WindowHandle dialog) {
    m_link.portNumber =
        TypedInteger(m_dialogs, dialog, control::portNumber, longNumberBytes).value_or(m_link.portNumber);
    m_link.Open(m_windows.main);
}

void PortDialog::TakeSpeed(WindowHandle dialog) {
    const auto typed = TypedInteger(m_dialogs, dialog, control::speed, longNumberBytes);
    if (!typed.has_value())
        return;
    const std::int32_t speed = std::clamp(*typed, slowest, fastest);
    ShowInteger(m_dialogs, dialog, control::speed, speed);
    m_link.SetSpeed(axisX, speed);
    m_link.SetSpeed(axisY, speed);
}

} // namespace tessaro
