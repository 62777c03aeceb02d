#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace tessaro {

inline constexpr float sharpFocusValue = 10.0F; // above it there is nothing to search for

/// Steps that the climb of a pass may take: 10, then 20.
constexpr int ClimbSteps(int pass) {
    return (pass + 1) * 10;
}

/// How far to go next, in whole um, at least 1: the sharper the image, the smaller the step.
std::int32_t ClimbStep(float focusValue);

/// The focus values of a climb in small steps and where they were seen. Both passes write into the same
/// history from its beginning, so that the best position is one of the second pass; that is meant.
class ClimbHistory {
public:
    enum class Verdict { GoOn, PassEnds, InFocus };

    void BeginPass(int pass);

    /// Step i of the pass, at z in whole um, with the focus value before it and after it.
    Verdict Add(std::int32_t z, float previous, float focusValue);

    /// Where it was sharpest in the last pass, without the step that ended it; nothing when that was the
    /// first.
    std::optional<std::int32_t> BestZ() const;

private:
    void FollowTrend(float previous, float focusValue);

    static constexpr std::size_t capacity = 20;
    std::array<float, capacity> m_focus = {};
    std::array<std::int32_t, capacity> m_z = {};
    std::size_t m_step = 0;
    int m_pass = 0;
    int m_trend = 0; // steps up; below 0 it went down
    int m_flat = 0;  // steps without a change to speak of
};

} // namespace tessaro
