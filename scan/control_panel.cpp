#include "scan/control_panel.h"

#include "app/dialog_numbers.h"
#include "app/number_text.h"
#include "app/resource_ids.h"
#include "scan/control_panel_ids.h"
#include "scan/scan_area.h"

namespace tessaro {
namespace {

constexpr std::int32_t coarseRangeUm = 2000;
constexpr std::int32_t fineRangeUm = 1000;
constexpr double jogUm = 1.0;

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

/// Each text that is written makes the panel take the ranges that it shows.
void ControlPanel::ShowRangesIn(WindowHandle dialog) {
    const std::int32_t x = m_reach.settings.xRange;
    const std::int32_t y = m_reach.settings.yRange;
    ShowInteger(m_reach.dialogs, dialog, panel::xRange, x);
    ShowInteger(m_reach.dialogs, dialog, panel::yRange, y);
    m_reach.settings.xRange = x;
    m_reach.settings.yRange = y;
}

void ControlPanel::Command(WindowHandle dialog, int controlId, [[maybe_unused]] Notification notification) {
    TakeTypedRanges(dialog);
    switch (controlId) {
    case panel::goToFarX:
        GoTo(FarX(m_reach.scan, m_reach.settings), m_reach.scan.originY);
        break;
    case panel::goToFarY:
        GoTo(m_reach.scan.originX, FarY(m_reach.scan, m_reach.settings));
        break;
    case panel::goToOrigin:
        GoTo(m_reach.scan.originX, m_reach.scan.originY);
        break;
    case panel::setOrigin:
        SetOriginHere();
        break;
    case panel::startScan:
        StartScan(dialog);
        break;
    case panel::testScore:
        TestScore();
        break;
    case panel::coarse:
        SweepCoarsely();
        break;
    case panel::fine:
        SweepFinely();
        break;
    case panel::autoFocus:
        FocusHere(dialog);
        break;
    case panel::slope:
        WorkOutSlopes(dialog);
        break;
    case panel::move:
        MoveToTargets(dialog);
        break;
    case panel::down:
        MoveZBy(dialog, -jogUm);
        break;
    case panel::up:
        MoveZBy(dialog, jogUm);
        break;
    case panel::stop: // the pump has asked already: it looks at every press before it is dispatched
        m_reach.windowSystem.SetKeyboardFocus(dialog);
        break;
    case panel::tiltCorrection:
        SwitchTiltCorrection(dialog);
        break;
    case commandCancel:
        Close();
        break;
    default:
        break;
    }
}

void ControlPanel::TakeTypedRanges(WindowHandle dialog) {
    TakeTyped(dialog, panel::xRange, m_reach.settings.xRange);
    TakeTyped(dialog, panel::yRange, m_reach.settings.yRange);
}

/// What is no number leaves the value as it was.
void ControlPanel::TakeTyped(WindowHandle dialog, int controlId, std::int32_t& value) {
    value = TypedInteger(m_reach.dialogs, dialog, controlId).value_or(value);
}

/// Not while another button's move is under way.
void ControlPanel::GoTo(std::int64_t x, std::int64_t y) {
    if (m_panelBusy != 0)
        return;
    m_panelBusy = 1;
    m_reach.motion.MoveXY(static_cast<double>(x), static_cast<double>(y));
    m_reach.status.ShowStagePosition();
    m_panelBusy = 0;
}

void ControlPanel::SetOriginHere() {
    m_reach.scan.originX = TruncatedToInt32(m_reach.stage.position[axisX]);
    m_reach.scan.originY = TruncatedToInt32(m_reach.stage.position[axisY]);
    m_reach.status.ShowInformation("Starting point is set here.");
}

void ControlPanel::StartScan(WindowHandle dialog) {
    m_reach.dialogs.SetItemText(dialog, panel::totalFound, "0");
    m_reach.scanRun.RunScan();
}

/// On the frame that is there.
void ControlPanel::TestScore() {
    m_reach.liveView.Switch(0);
    const bool wasLive = m_reach.liveTimer.previous != 0;
    m_reach.status.ShowProgress("Score testing");
    AnalyseFrame(m_reach.work, true);
    m_reach.status.ShowProgress("Test finished.");
    if (wasLive)
        m_reach.liveView.Switch(1);
}

/// One after the other; each is read when the one before has arrived.
void ControlPanel::MoveToTargets(WindowHandle dialog) {
    const auto& position = m_reach.stage.position;
    if (const auto x = Target(dialog, panel::targetX))
        m_reach.motion.MoveXY(*x, position[axisY]);
    if (const auto y = Target(dialog, panel::targetY))
        m_reach.motion.MoveXY(position[axisX], *y);
    if (const auto z = Target(dialog, panel::targetZ))
        m_reach.motion.MoveAxisTo(axisZ, *z);
    m_reach.status.ShowStagePosition();
}

std::optional<std::int32_t> ControlPanel::Target(WindowHandle dialog, int controlId) {
    return TypedInteger(m_reach.dialogs, dialog, controlId, longNumberBytes);
}

void ControlPanel::SweepCoarsely() {
    m_reach.autoFocus.CoarseFocus(m_reach.autoFocus.Hint(), coarseRangeUm, m_reach.focus.focusSpeed);
}

void ControlPanel::SweepFinely() {
    m_reach.autoFocus.CoarseFocus(m_reach.autoFocus.Hint(), fineRangeUm, m_reach.focus.focusSpeed / 2);
}

/// It does not make the panel busy: the buttons that move act within a search.
void ControlPanel::FocusHere(WindowHandle dialog) {
    m_reach.autoFocus.FineFocus(m_reach.autoFocus.Hint(), 1);
    RecordDepth(dialog);
}

/// Not while another button's move is under way.
void ControlPanel::MoveZBy(WindowHandle dialog, double um) {
    if (m_panelBusy != 0)
        return;
    m_panelBusy = 1;
    m_reach.motion.MoveAxisBy(axisZ, um);
    RecordDepth(dialog);
}

/// The focus heights that the tilt is worked out from fill themselves in, one at each of the three places.
void ControlPanel::RecordDepth(WindowHandle dialog) {
    m_reach.status.ShowStagePosition();
    const auto at = [this](std::size_t axis) {
        return std::int64_t{TruncatedToInt32(m_reach.stage.position[axis])};
    };
    ScanState& scan = m_reach.scan;
    const auto record = [&](std::int32_t& depth, int box) {
        depth = TruncatedToInt32(m_reach.stage.position[axisZ]);
        ShowInteger(m_reach.dialogs, dialog, box, depth);
    };
    if (at(axisX) == scan.originX && at(axisY) == scan.originY)
        record(scan.zOrigin, panel::depthAtOrigin);
    else if (at(axisX) == FarX(scan, m_reach.settings) && at(axisY) == scan.originY)
        record(scan.zXmax, panel::depthAtFarX);
    else if (at(axisX) == scan.originX && at(axisY) == FarY(scan, m_reach.settings))
        record(scan.zYmax, panel::depthAtFarY);
    m_panelBusy = 0;
}

void ControlPanel::WorkOutSlopes(WindowHandle dialog) {
    TakeTyped(dialog, panel::depthAtFarX, m_reach.scan.zXmax);
    TakeTyped(dialog, panel::depthAtOrigin, m_reach.scan.zOrigin);
    TakeTyped(dialog, panel::depthAtFarY, m_reach.scan.zYmax);
    m_reach.tilt.SetSlopes(m_reach.focus, "%.4f");
}

/// Switched off, it forgets the plane: the next scan measures it first.
void ControlPanel::SwitchTiltCorrection(WindowHandle dialog) {
    if (m_reach.dialogs.IsChecked(dialog, panel::tiltCorrection)) {
        m_reach.focus.tiltCorrection = 1;
        return;
    }
    m_reach.focus.tiltCorrection = 0;
    m_reach.dialogs.SetItemText(dialog, panel::xTilt, "");
    m_reach.dialogs.SetItemText(dialog, panel::yTilt, "");
    m_reach.focus.tiltMeasured = 0;
}

} // namespace tessaro
