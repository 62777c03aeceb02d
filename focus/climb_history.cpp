#include "focus/climb_history.h"

#include "app/number_text.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace tessaro {
namespace {

constexpr float stepAtOne = 4.0F;   // um, at a focus value of 1
constexpr float flatChange = 0.1F;  // less is noise
constexpr float fallenBelow = 1.0F; // the first step of the same pass, by which step 0 is measured too
constexpr int flatStepsPerPass = 4; // 4 flat steps end the first pass, 8 the second

} // namespace

/// No frame has a focus value of 0 or less; there would be no direction to trust, and 1 um does no harm.
std::int32_t ClimbStep(float focusValue) {
    if (!(focusValue > 0.0F))
        return 1;
    return std::max(1, TruncatedToInt32(static_cast<double>(stepAtOne / std::sqrt(focusValue))));
}

void ClimbHistory::BeginPass(int pass) {
    m_pass = pass;
    m_step = 0;
    m_trend = 0;
    m_flat = 0;
}

ClimbHistory::Verdict ClimbHistory::Add(std::int32_t z, float previous, float focusValue) {
    m_focus[m_step] = focusValue;
    m_z[m_step] = z;
    FollowTrend(previous, focusValue);
    if (focusValue > sharpFocusValue)
        return Verdict::InFocus;
    if (m_trend < 0 || focusValue < m_focus[0] - fallenBelow ||
        m_flat >= m_pass * flatStepsPerPass + flatStepsPerPass)
        return Verdict::PassEnds;
    ++m_step;
    return Verdict::GoOn;
}

void ClimbHistory::FollowTrend(float previous, float focusValue) {
    if (focusValue < previous - flatChange) {
        m_trend = std::min(m_trend, 0) - 1;
        m_flat = 0;
    } else if (focusValue < previous + flatChange) {
        ++m_flat;
        if (m_flat > 1)
            m_trend = 0;
    } else {
        ++m_trend;
        m_flat = 0;
    }
}

std::optional<std::int32_t> ClimbHistory::BestZ() const {
    if (m_step == 0)
        return std::nullopt;
    const auto end = m_focus.begin() + static_cast<std::ptrdiff_t>(m_step);
    const auto best = std::max_element(m_focus.begin(), end); // the first of equals
    return m_z[static_cast<std::size_t>(std::distance(m_focus.begin(), best))];
}

} // namespace tessaro
