#pragma once

#include "focus/auto_focus.h"

#include <cstdint>
#include <string_view>

namespace tessaro {

/// What both searches do alike: one is under way while this lives.
class FocusSearch {
public:
    FocusSearch(const FocusReach& reach, std::string_view name);

protected:
    ~FocusSearch() = default;

    void StopLiveView() { m_reach.liveView.Switch(0); }

    /// Says so, and is busy no more; nor is the search within which it ran. The live view comes back only if
    /// it was on.
    void EndSearch(std::string_view information);

    /// Pumps messages for 10 ms; true when the search has to end.
    bool IsStopped();
    bool StopsAtStep(); // the same, but a wish to stop of earlier does not count

    /// Pumps messages for so long; true when the operator has stopped a scan.
    bool StopsWithin(std::uint32_t milliseconds) { return m_reach.pump.PumpMessages(milliseconds) == 0; }

    /// After the final move.
    void WaitThere();

    /// False, for the reason why the search ends.
    bool Leave(std::string_view outcome);

    void Record(int pass, int step, double z);
    void RecordEnd();

    double Z() const { return m_reach.stage.position[axisZ]; }

    const FocusReach& m_reach;
    std::string_view m_outcome;

private:
    SearchRecord m_record;
    bool m_wasLive;
};

} // namespace tessaro
