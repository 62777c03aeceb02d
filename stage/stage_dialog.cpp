#include "stage/stage_dialog.h"

#include "app/dialog_numbers.h"
#include "app/resource_ids.h"
#include "scan/control_panel_ids.h"
#include "scan/scan_state.h"

#include <algorithm>

namespace tessaro {
namespace {

namespace control {
constexpr int x = 1007; // tens of um
constexpr int y = 1012;
constexpr int xyStep = 1015;
constexpr int zStep = 1000; // um
constexpr int scanWidth = 1005;
constexpr int scanHeight = 1006;
constexpr int go = 1009;
constexpr int goToOrigin = 1008;
constexpr int minusX = 1010;
constexpr int plusX = 1011;
constexpr int minusY = 1050;
constexpr int plusY = 1051; // the button has the id 1014, and does nothing: that is meant
constexpr int zUp = 1016;
constexpr int zDown = 1026;
} // namespace control

constexpr std::int32_t unitUm = 10;
constexpr const char* firstZStep = "100";
constexpr std::int32_t shortestLength = 1; // of the scan area's sides
constexpr std::int32_t longestLength = 50;

} // namespace

void StageDialog::Show(WindowHandle owner) {
    m_dialogs.RunModal(resource::stageDialog, owner, *this);
}

void StageDialog::Initialize(WindowHandle dialog) {
    ShowTens(dialog, control::x, m_link.position[0]);
    ShowTens(dialog, control::y, m_link.position[1]);
    m_dialogs.SetItemText(dialog, control::zStep, firstZStep);
    ShowInteger(m_dialogs, dialog, control::scanWidth, m_settings.xRange);
    ShowInteger(m_dialogs, dialog, control::scanHeight, m_settings.yRange);
    ShowTens(dialog, control::xyStep, fieldStepUm);
}

void StageDialog::Command(WindowHandle dialog, int controlId, [[maybe_unused]] Notification notification) {
    switch (controlId) {
    case control::go:
        Go(dialog);
        break;
    case control::goToOrigin:
        GoToOrigin(dialog);
        break;
    case control::minusX:
        StepX(dialog, -1);
        break;
    case control::plusX:
        StepX(dialog, 1);
        break;
    case control::minusY:
        StepY(dialog, -1);
        break;
    case control::plusY:
        StepY(dialog, 1);
        break;
    case control::zUp:
        StepZ(dialog, 1);
        break;
    case control::zDown:
        StepZ(dialog, -1);
        break;
    case commandOk: // leaves the dialog open
        Set(dialog);
        break;
    case commandCancel:
        m_dialogs.EndModal(dialog, commandCancel);
        break;
    default:
        break;
    }
}

/// Y is read when X has arrived: a dialog that has gone away meanwhile moves nothing any more.
void StageDialog::Go(WindowHandle dialog) {
    if (const auto x = TypedUm(dialog, control::x))
        m_motion.MoveXY(*x, m_link.position[1]);
    if (const auto y = TypedUm(dialog, control::y))
        m_motion.MoveXY(m_link.position[0], *y);
}

/// Wherever the stage is, both axes are sent to step 0: stored as being there, neither needs any time, and Y
/// is the one that is waited for.
void StageDialog::GoToOrigin(WindowHandle dialog) {
    m_link.SetStoredPosition(axisX, 0.0);
    m_link.SetStoredPosition(axisY, 0.0);
    m_motion.MoveXY(0.0, 0.0);
    ShowInteger(m_dialogs, dialog, control::x, 0);
    ShowInteger(m_dialogs, dialog, control::y, 0);
}

void StageDialog::StepX(WindowHandle dialog, int direction) {
    const auto step = TypedUm(dialog, control::xyStep);
    if (!step.has_value())
        return;
    m_motion.MoveXY(m_link.position[0] + direction * *step, m_link.position[1]);
    ShowTens(dialog, control::x, m_link.position[0]);
}

void StageDialog::StepY(WindowHandle dialog, int direction) {
    const auto step = TypedUm(dialog, control::xyStep);
    if (!step.has_value())
        return;
    m_motion.MoveXY(m_link.position[0], m_link.position[1] + direction * *step);
    ShowTens(dialog, control::y, m_link.position[1]);
}

void StageDialog::StepZ(WindowHandle dialog, int direction) {
    if (const auto step = TypedInteger(m_dialogs, dialog, control::zStep))
        m_motion.MoveAxisBy(axisZ, static_cast<double>(*step) * direction);
}

void StageDialog::Set(WindowHandle dialog) {
    SetPosition(dialog);
    SetScanArea(dialog);
}

/// The stage is where the operator says that it is. What goes into the panel is the text, into the box that
/// has the id of the Y position here and is the X range there: that is meant, as for the height below.
void StageDialog::SetPosition(WindowHandle dialog) {
    if (const auto x = TypedUm(dialog, control::x))
        m_link.SetStoredPosition(axisX, *x);
    if (const auto y = TypedUm(dialog, control::y)) {
        m_link.SetStoredPosition(axisY, *y);
        m_status.ShowItem(panel::xRange, m_dialogs.ItemText(dialog, control::y, numberBytes));
    }
}

void StageDialog::SetScanArea(WindowHandle dialog) {
    if (const auto width = ClampedLength(dialog, control::scanWidth))
        m_settings.xRange = *width;
    if (const auto height = ClampedLength(dialog, control::scanHeight)) {
        m_settings.yRange = *height;
        m_status.ShowItem(panel::yRange, Formatted("%d", *height));
    }
}

std::optional<std::int32_t> StageDialog::ClampedLength(WindowHandle dialog, int controlId) {
    const auto typed = TypedInteger(m_dialogs, dialog, controlId);
    if (!typed.has_value())
        return std::nullopt;
    const std::int32_t length = std::clamp(*typed, shortestLength, longestLength);
    ShowInteger(m_dialogs, dialog, controlId, length);
    return length;
}

/// A product that no 32 bits hold is a far away target, not one on the other side.
std::optional<double> StageDialog::TypedUm(WindowHandle dialog, int controlId) {
    const auto tens = TypedInteger(m_dialogs, dialog, controlId);
    return tens.has_value() ? std::optional(static_cast<double>(*tens) * unitUm) : std::nullopt;
}

void StageDialog::ShowTens(WindowHandle dialog, int controlId, double um) {
    ShowInteger(m_dialogs, dialog, controlId, TruncatedToInt32(um) / unitUm);
}

} // namespace tessaro
