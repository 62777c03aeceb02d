#include "scan/control_panel.h"

#include "app/dialog_numbers.h"
#include "app/number_text.h"
#include "app/resource_ids.h"
#include "scan/control_panel_ids.h"

namespace tessaro {
namespace {

constexpr std::int32_t coarseRangeUm = 2000;
constexpr std::int32_t fineRangeUm = 1000;
constexpr std::int32_t umPerMm = 1000;

} // namespace

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
    case panel::coarse:
        m_reach.autoFocus.CoarseFocus(m_reach.autoFocus.Hint(), coarseRangeUm, m_reach.focus.focusSpeed);
        break;
    case panel::fine:
        m_reach.autoFocus.CoarseFocus(m_reach.autoFocus.Hint(), fineRangeUm, m_reach.focus.focusSpeed / 2);
        break;
    case panel::autoFocus:
        FocusHere(dialog);
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

void ControlPanel::FocusHere(WindowHandle dialog) {
    m_reach.autoFocus.FineFocus(m_reach.autoFocus.Hint(), 1);
    RecordDepth(dialog);
}

/// The focus heights that the tilt is worked out from fill themselves in, one at each of the three places.
void ControlPanel::RecordDepth(WindowHandle dialog) {
    m_reach.status.ShowStagePosition();
    const auto at = [this](int axis) {
        return std::int64_t{TruncatedToInt32(m_reach.stage.position[static_cast<std::size_t>(axis)])};
    };
    ScanState& scan = m_reach.scan;
    const std::int64_t farX = scan.originX + std::int64_t{m_reach.settings.xRange} * umPerMm;
    const std::int64_t farY = scan.originY + std::int64_t{m_reach.settings.yRange} * umPerMm;
    const auto record = [&](std::int32_t& depth, int box) {
        depth = TruncatedToInt32(m_reach.stage.position[axisZ]);
        ShowInteger(m_reach.dialogs, dialog, box, depth);
    };
    if (at(axisX) == scan.originX && at(axisY) == scan.originY)
        record(scan.zOrigin, panel::depthAtOrigin);
    else if (at(axisX) == farX && at(axisY) == scan.originY)
        record(scan.zXmax, panel::depthAtFarX);
    else if (at(axisX) == scan.originX && at(axisY) == farY)
        record(scan.zYmax, panel::depthAtFarY);
    m_panelBusy = 0;
}

} // namespace tessaro
