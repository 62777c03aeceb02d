#pragma once

#include "twin/stage/axis_motion.h"
#include "twin/stage_position.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <mutex>

namespace tessaro {

inline constexpr std::size_t stageAxisCount = 3;
inline constexpr double umPerStep = 0.625;

/// Between which places the stage can go, in um, ends included.
struct StageLimits {
    StagePosition low;
    StagePosition high;
};

bool IsWithin(const StagePosition& position, const StageLimits& limits);
StagePosition NearestWithin(const StagePosition& position, const StageLimits& limits);

/// 110 mm in X and Y and 3 mm in Z to both sides of a place.
StageLimits UsualLimitsAround(const StagePosition& start);

/// The three axes of the stage, X, Y and Z. Times are seconds on one clock for all. Any thread may ask where
/// they are while another one moves them.
class StageAxes {
public:
    /// Stands at the whole steps that are nearest to `start`. All motion is `timeFactor` times as fast.
    StageAxes(const StagePosition& start, const StageLimits& limits, double timeFactor);

    /// Goes to a step, or to the limit before it: false then.
    bool MoveTo(std::size_t axis, std::int64_t step, double stepsPerSecond, double now);
    void Stop(std::size_t axis, double now);
    void Put(const StagePosition& position, double now); // at once; no farther than to the limits

    StagePosition PositionAt(double time) const;
    std::int64_t StepAt(std::size_t axis, double time) const;
    bool MovesAt(std::size_t axis, double time) const;
    double EndTime(std::size_t axis) const; // since when it stands, or will stand

private:
    struct StepRange {
        std::int64_t low;
        std::int64_t high;
    };

    double m_timeFactor;
    std::array<StepRange, stageAxisCount> m_ranges;
    mutable std::mutex m_mutex;
    std::array<AxisMotion, stageAxisCount> m_motions;
};

} // namespace tessaro
