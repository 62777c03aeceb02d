#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace tessaro {

inline constexpr std::size_t sweepSamples = 90;

/// The focus scores of one sweep over Z, and where their curve is bent most sharply: that is the peak. The
/// thresholds are part of the method.
class SweepCurve {
public:
    enum class Verdict { GoOn, PeakPassed, AlreadySharp };

    /// `firstScore`: of the frame before the sweep.
    explicit SweepCurve(float firstScore) : m_highest(firstScore), m_lowest(firstScore) {}

    /// The next of 90 samples, z in whole um.
    Verdict Add(std::int32_t z, float score);

    /// The Z of the sharpest bend in um; nothing where no score was worth anything.
    std::optional<std::int32_t> PeakZ() const;

private:
    bool PeakIsPassed(std::size_t i) const;

    std::size_t m_count = 0;
    std::array<float, sweepSamples> m_score = {};
    std::array<std::int32_t, sweepSamples> m_z = {};
    std::array<float, sweepSamples> m_curvature = {}; // at the sample before
    float m_highest;
    float m_lowest;
    float m_sharpest = 0.0F;      // of the curvatures
    std::size_t m_sharpestAt = 0; // its index; 0 as long as the first one is the sharpest
};

} // namespace tessaro
