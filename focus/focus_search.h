#pragma once

#include "focus/auto_focus.h"

#include <cstdint>
#include <string_view>

namespace tessaro {

inline constexpr std::uint32_t stepPumpMs = 10;

/// What both searches do alike: one is under way while this lives.
class FocusSearch {
public:
    FocusSearch(const FocusReach& reach, std::string_view name);

protected:
    ~FocusSearch() = default;

    /// The live view is off meanwhile, and comes back only if it was on.
    void StopLiveView() { m_reach.liveView.Switch(0); }
    void RestoreLiveView();

    /// Pumps messages for 10 ms; true when the search has to end.
    bool IsStopped();

    /// Pumps messages for so long; true when the operator has stopped a scan.
    bool StopsWithin(std::uint32_t milliseconds) { return m_reach.pump.PumpMessages(milliseconds) == 0; }

    void Record(int pass, int step);
    double Z() const { return m_reach.stage.position[axisZ]; }

    const FocusReach& m_reach;
    SearchRecord m_record;
    std::string_view m_outcome;

private:
    bool m_wasLive;
};

} // namespace tessaro
