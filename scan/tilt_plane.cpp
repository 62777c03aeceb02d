#include "scan/tilt_plane.h"

#include "app/number_text.h"
#include "scan/control_panel_ids.h"
#include "scan/scan_area.h"

namespace tessaro {
namespace {

constexpr std::uint32_t originPumpMs = 100;

/// A range of nothing has no slope: the quotient would not be finite, and nor would the heights made of it.
float Slope(std::int32_t farDepth, std::int32_t originDepth, std::int32_t rangeUm) {
    if (rangeUm == 0)
        return 0.0F;
    return (static_cast<float>(farDepth) - static_cast<float>(originDepth)) / static_cast<float>(rangeUm);
}

} // namespace

int TiltPlane::MeasureTilt(FocusControl& fc) {
    ScanState& scan = m_reach.scan;
    const auto farX = static_cast<double>(FarX(scan, m_reach.settings));
    if (!FocusAt("Moving to Xmax position.", farX, scan.originY, scan.zXmax, panel::depthAtFarX))
        return 0;
    const auto farY = static_cast<double>(FarY(scan, m_reach.settings));
    if (!FocusAt("Moving to Ymax position.", scan.originX, farY, scan.zYmax, panel::depthAtFarY))
        return 0;
    if (!FocusAtOrigin())
        return 0;
    SetSlopes(fc, "%.3f");
    return 1;
}

bool TiltPlane::FocusAt(const char* text, double x, double y, std::int32_t& depth, int box) {
    m_reach.status.ShowInformation(text);
    m_reach.motion.MoveXY(x, y);
    if (m_reach.scan.stopRequested == 1)
        return false;
    m_reach.view.GrabAndDraw();
    return FocusHere(depth, box);
}

/// Without a frame of its own: the figures are refreshed from the last one of the search before.
bool TiltPlane::FocusAtOrigin() {
    ScanState& scan = m_reach.scan;
    m_reach.status.ShowInformation("Moving to Origin position.");
    m_reach.motion.MoveXY(scan.originX, scan.originY);
    m_reach.pump.PumpMessages(originPumpMs);
    if (scan.stopRequested == 1)
        return false;
    return FocusHere(scan.zOrigin, panel::depthAtOrigin);
}

bool TiltPlane::FocusHere(std::int32_t& depth, int box) {
    m_reach.view.UpdateFocusMeasures();
    if (m_reach.autoFocus.FineFocus(m_reach.autoFocus.Hint(), 1) == 0)
        return false;
    depth = TruncatedToInt32(m_reach.stage.position[axisZ]);
    m_reach.status.ShowItem(box, Formatted("%d", depth));
    return true;
}

void TiltPlane::SetSlopes(FocusControl& fc, const char* format) {
    const ScanState& scan = m_reach.scan;
    const auto show = [&](int box, float slope) {
        m_reach.status.ShowItem(box, Formatted(format, static_cast<double>(slope)));
    };
    fc.xTilt = Slope(scan.zXmax, scan.zOrigin, RangeUm(m_reach.settings.xRange));
    show(panel::xTilt, fc.xTilt);
    fc.yTilt = Slope(scan.zYmax, scan.zOrigin, RangeUm(m_reach.settings.yRange));
    show(panel::yTilt, fc.yTilt);
    fc.tiltMeasured = 1;
}

int TiltPlane::ApplyTiltZ(FocusControl& fc, [[maybe_unused]] int mode) {
    const auto& position = m_reach.stage.position;
    const ScanState& scan = m_reach.scan;
    const std::int32_t z = TruncatedToInt32(static_cast<double>(scan.zOrigin) +
                                            static_cast<double>(fc.xTilt) * (position[axisX] - scan.originX) +
                                            (position[axisY] - scan.originY) * static_cast<double>(fc.yTilt));
    if (static_cast<double>(z) != position[axisZ])
        m_reach.motion.MoveAxisTo(axisZ, z);
    return 0;
}

} // namespace tessaro
