#include "focus/focus_search.h"

namespace tessaro {

FocusSearch::FocusSearch(const FocusReach& reach, std::string_view name)
    : m_reach(reach), m_record(reach.curve, name), m_wasLive(reach.liveTimer.on != 0) {}

void FocusSearch::RestoreLiveView() {
    if (m_wasLive)
        m_reach.liveView.Switch(1);
}

bool FocusSearch::IsStopped() {
    return StopsWithin(stepPumpMs) || m_reach.scan.stopRequested == 1;
}

void FocusSearch::Record(int pass, int step) {
    if (m_record.IsWanted())
        m_record.Add(pass, step, Z(), m_reach.view.Figures());
}

} // namespace tessaro
