#include "focus/focus_meter.h"

#include "analysis/frame_statistics.h"
#include "app/number_text.h"
#include "focus/focus_measures.h"
#include "scan/control_panel_ids.h"

namespace tessaro {

int FocusMeter::UpdateFocusMeasures(FrameRecord& frame) {
    ComputeFrameStatistics(frame, frame, m_measured);
    const FocusFigures figures = MeasureFocus(m_measured.reduced);
    Show(panel::deviation, "%.2f", figures.deviation);
    Show(panel::laplaceS, "%.2f", figures.laplaceS);
    Show(panel::laplaceM, "%.2f", figures.laplaceM);
    m_focusValue = figures.focusValue;
    Show(panel::focus, "%.2f", figures.focusValue);
    return 1;
}

float FocusMeter::FocusScore(FrameRecord& frame) {
    ComputeFrameStatistics(frame, frame, m_measured);
    const float score = MeasureFocusScore(m_measured.reduced);
    Show(panel::laplaceM, "%.3f", score);
    return score;
}

void FocusMeter::Show(int box, const char* format, float value) {
    m_status.ShowItem(box, Formatted(format, static_cast<double>(value)));
}

} // namespace tessaro
