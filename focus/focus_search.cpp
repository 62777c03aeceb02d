#include "focus/focus_search.h"

namespace tessaro {
namespace {

constexpr std::uint32_t stepPumpMs = 10;
constexpr std::uint32_t arrivedPumpMs = 300;

} // namespace

FocusSearch::FocusSearch(const FocusReach& reach, std::string_view name)
    : m_reach(reach), m_record(reach.curve, name), m_wasLive(reach.liveTimer.on != 0) {}

void FocusSearch::EndSearch(std::string_view information) {
    m_reach.status.ShowInformation(information);
    m_reach.status.ShowStagePosition();
    m_reach.control.focusBusy = 0;
    if (m_wasLive)
        m_reach.liveView.Switch(1);
}

bool FocusSearch::IsStopped() {
    return StopsAtStep() || m_reach.scan.stopRequested == 1;
}

bool FocusSearch::StopsAtStep() {
    return StopsWithin(stepPumpMs);
}

void FocusSearch::WaitThere() {
    if (StopsWithin(arrivedPumpMs) || m_reach.scan.stopRequested == 1)
        m_outcome = "stopped on the final move";
}

bool FocusSearch::Leave(std::string_view outcome) {
    m_outcome = outcome;
    return false;
}

void FocusSearch::Record(int pass, int step, double z) {
    if (m_record.IsWanted())
        m_record.Add(pass, step, z, m_reach.view.Figures());
}

void FocusSearch::RecordEnd() {
    if (m_record.IsWanted())
        m_record.End(m_outcome, Z(), m_reach.view.Figures());
}

} // namespace tessaro
