#include "twin/stage/stage_axes.h"

#include <algorithm>
#include <cmath>

namespace tessaro {
namespace {

constexpr double usualReachUm = 110'000.0; // of X and Y: a wafer of 100 mm, whole
constexpr double usualFocusReachUm = 3'000.0;

constexpr std::array<double StagePosition::*, stageAxisCount> coordinates = {
    &StagePosition::x, &StagePosition::y, &StagePosition::z};

AxisDrive FasterBy(double timeFactor) {
    const AxisDrive usual;
    return {usual.acceleration * timeFactor * timeFactor, usual.deceleration * timeFactor * timeFactor};
}

AxisMotion Standing(double um, double timeFactor) {
    return AxisMotion(std::llround(um / umPerStep), FasterBy(timeFactor));
}

std::int64_t FirstStep(double um) {
    return static_cast<std::int64_t>(std::ceil(um / umPerStep));
}
std::int64_t LastStep(double um) {
    return static_cast<std::int64_t>(std::floor(um / umPerStep));
}

} // namespace

bool IsWithin(const StagePosition& position, const StageLimits& limits) {
    return std::ranges::all_of(coordinates, [&](auto axis) {
        return limits.low.*axis <= position.*axis && position.*axis <= limits.high.*axis;
    });
}

StagePosition NearestWithin(const StagePosition& position, const StageLimits& limits) {
    StagePosition nearest;
    for (const auto axis : coordinates)
        nearest.*axis = std::min(std::max(position.*axis, limits.low.*axis), limits.high.*axis);
    return nearest;
}

StageLimits UsualLimitsAround(const StagePosition& start) {
    return {{start.x - usualReachUm, start.y - usualReachUm, start.z - usualFocusReachUm},
            {start.x + usualReachUm, start.y + usualReachUm, start.z + usualFocusReachUm}};
}

StageAxes::StageAxes(const StagePosition& start, const StageLimits& limits, double timeFactor)
    : m_timeFactor(timeFactor), m_motions({Standing(start.x, timeFactor), Standing(start.y, timeFactor),
                                           Standing(start.z, timeFactor)}) {
    for (std::size_t axis = 0; axis < stageAxisCount; ++axis)
        m_ranges[axis] = {FirstStep(limits.low.*coordinates[axis]), LastStep(limits.high.*coordinates[axis])};
    Put(start, 0.0);
}

bool StageAxes::MoveTo(std::size_t axis, std::int64_t step, double stepsPerSecond, double now) {
    const auto& [low, high] = m_ranges[axis];
    const std::int64_t reached = std::max(low, std::min(step, high));
    const std::lock_guard lock(m_mutex);
    m_motions[axis].MoveTo(reached, stepsPerSecond * m_timeFactor, now);
    return reached == step;
}

void StageAxes::Stop(std::size_t axis, double now) {
    const std::lock_guard lock(m_mutex);
    m_motions[axis].Stop(now);
}

void StageAxes::Put(const StagePosition& position, double now) {
    const std::lock_guard lock(m_mutex);
    for (std::size_t axis = 0; axis < stageAxisCount; ++axis) {
        const auto& [low, high] = m_ranges[axis];
        const std::int64_t step = std::llround(position.*coordinates[axis] / umPerStep);
        m_motions[axis].Put(std::max(low, std::min(step, high)), now);
    }
}

StagePosition StageAxes::PositionAt(double time) const {
    const std::lock_guard lock(m_mutex);
    StagePosition position;
    for (std::size_t axis = 0; axis < stageAxisCount; ++axis)
        position.*coordinates[axis] = m_motions[axis].PositionAt(time) * umPerStep;
    return position;
}

std::int64_t StageAxes::StepAt(std::size_t axis, double time) const {
    const std::lock_guard lock(m_mutex);
    return m_motions[axis].StepAt(time);
}

bool StageAxes::MovesAt(std::size_t axis, double time) const {
    const std::lock_guard lock(m_mutex);
    return m_motions[axis].MovesAt(time);
}

double StageAxes::EndTime(std::size_t axis) const {
    const std::lock_guard lock(m_mutex);
    return m_motions[axis].EndTime();
}

} // namespace tessaro
