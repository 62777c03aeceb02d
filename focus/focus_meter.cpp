#include "focus/focus_meter.h"

#include "analysis/frame_statistics.h"
#include "app/number_text.h"
#include "focus/focus_measures.h"
#include "scan/control_panel_ids.h"

namespace tessaro {

int FocusMeter::UpdateFocusMeasures(FrameRecord& frame) {
    ComputeFrameStatistics(frame, frame, m_measured);
    const FocusFigures figures = MeasureFocus(m_measured.reduced);
    const auto show = [this](int box, float value) {
        m_status.ShowItem(box, Formatted("%.2f", static_cast<double>(value)));
    };
    show(panel::deviation, figures.deviation);
    show(panel::laplaceS, figures.laplaceS);
    show(panel::laplaceM, figures.laplaceM);
    m_focusValue = figures.focusValue;
    show(panel::focus, figures.focusValue);
    return 1;
}

float FocusMeter::FocusScore(FrameRecord& frame) {
    ComputeFrameStatistics(frame, frame, m_measured);
    const float score = MeasureFocusScore(m_measured.reduced);
    m_status.ShowItem(panel::laplaceM, Formatted("%.3f", static_cast<double>(score)));
    return score;
}

} // namespace tessaro
