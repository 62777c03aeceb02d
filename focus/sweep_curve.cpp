#include "focus/sweep_curve.h"

#include <algorithm>

namespace tessaro {
namespace {

constexpr std::size_t firstBend = 2; // the first sample with two before it
constexpr float clearRatio = 1.5F;   // of the highest score to the lowest
constexpr float bendShare = 0.3F;    // of the score beside it
constexpr float sharpScore = 10.0F;
constexpr float leastScore = 0.01F; // below it there was nothing to see

} // namespace

SweepCurve::Verdict SweepCurve::Add(std::int32_t z, float score) {
    const std::size_t i = m_count++;
    m_z[i] = z;
    m_score[i] = score;
    if (i < firstBend)
        return Verdict::GoOn;
    m_curvature[i] = 2.0F * m_score[i - 1] - m_score[i - 2] - m_score[i];
    m_highest = std::max(m_highest, score);
    m_lowest = std::min(m_lowest, score);
    if (i == firstBend)
        m_sharpest = m_curvature[i];
    if (m_curvature[i] > m_sharpest) {
        m_sharpest = m_curvature[i];
        m_sharpestAt = i;
    }
    if (PeakIsPassed(i))
        return Verdict::PeakPassed;
    return score > sharpScore ? Verdict::AlreadySharp : Verdict::GoOn;
}

bool SweepCurve::PeakIsPassed(std::size_t i) const {
    return m_highest > m_lowest * clearRatio && m_score[i] < m_highest * 2.0F / 3.0F &&
           m_curvature[i] < m_sharpest * 2.0F / 3.0F && m_sharpest > m_score[i - 1] * bendShare;
}

/// A curvature is that of the sample before; the first one is that of sample 1.
std::optional<std::int32_t> SweepCurve::PeakZ() const {
    if (!(m_highest > leastScore))
        return std::nullopt;
    return m_z[m_sharpestAt == 0 ? 1 : m_sharpestAt - 1];
}

} // namespace tessaro
