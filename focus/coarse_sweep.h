#pragma once

#include "focus/focus_search.h"
#include "focus/sweep_curve.h"

#include <cstdint>

namespace tessaro {

/// One coarse search: up, then down at the speed while the focus curve is sampled, then to its peak. The way
/// down has to be longer than its wait of 2 s, and the stage silent about it: what is sampled is the rest.
class CoarseSweep : public FocusSearch {
public:
    CoarseSweep(const FocusReach& reach, std::int32_t range, std::int32_t speed)
        : FocusSearch(reach, "coarse"), m_range(range), m_speed(speed) {}

    void Run();

private:
    void Begin();
    bool Sweep();
    void Lift();
    void GoDown();
    bool Sample();
    bool ShowStep(std::size_t step);
    void GoToPeak(const SweepCurve& curve);
    void StayHere();
    void End();

    void DoubleSpeed();
    void AskWhereZIs();

    std::int32_t m_range; // um
    std::int32_t m_speed; // um/s
    std::int32_t m_startZ = 0;
    bool m_moved = false;
};

} // namespace tessaro
