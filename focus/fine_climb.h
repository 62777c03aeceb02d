#pragma once

#include "focus/climb_history.h"
#include "focus/focus_search.h"

#include <cstdint>

namespace tessaro {

/// One fine search: in small steps one way until the image gets no sharper, then the other way, then back to
/// the best position of the second way.
class FineClimb : public FocusSearch {
public:
    FineClimb(const FocusReach& reach, const float* hint)
        : FocusSearch(reach, "fine"), m_direction(*hint > 0.0F ? 1 : -1) {}

    /// 1 = done, and the image is sharp enough; 0 otherwise.
    int Run();

private:
    void Begin();
    void LookWhetherToClimb();
    void Climb();
    bool ClimbPass(int pass);
    bool Step(int pass, int i);
    bool Turn();
    void GoToBest();
    void End();
    void Judge();

    bool Abort();

    int m_direction; // of Z
    bool m_aborted = false;
    ClimbHistory m_history;
};

} // namespace tessaro
