#include "stage/stage_motion.h"

#include "app/number_text.h"
#include "stage/arrival_wait.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace tessaro {
namespace {

constexpr std::int32_t fastestTogether = 800; // um/s
constexpr double millisecondsPerSecond = 1000.0;
constexpr double longestMs = 1e18; // nothing that a controller can be told takes as long

/// Toward zero; what does not fit is the longest time.
std::uint32_t Milliseconds(double distance, std::int32_t umPerSecond) {
    const double time = std::abs(distance) * millisecondsPerSecond / umPerSecond;
    constexpr auto longest = std::numeric_limits<std::uint32_t>::max();
    return time < static_cast<double>(longest) ? static_cast<std::uint32_t>(time) : longest;
}

/// What is no way of a stage is not waited for.
std::uint64_t TimeOfLongerWay(double way, std::int32_t umPerSecond) {
    const double time = way * millisecondsPerSecond / umPerSecond;
    return static_cast<std::uint64_t>(time < longestMs ? time : 0.0);
}

/// The speed of the shorter way that takes as long. A way too short for a millisecond needs no other speed.
std::int32_t SpeedOfShorterWay(double way, std::uint64_t milliseconds, std::int32_t speedOfLonger) {
    return milliseconds == 0
               ? speedOfLonger
               : TruncatedToInt32(way * millisecondsPerSecond / static_cast<double>(milliseconds));
}

} // namespace

/// Two ways that take the same time.
struct StageMotion::SharedMove {
    double x = 0.0; // um, the targets
    double y = 0.0;
    double longerWay = 0.0;
    bool xIsLonger = false;
    std::uint64_t milliseconds = 0;
    std::int32_t speedX = 0; // um/s
    std::int32_t speedY = 0;
};

void StageMotion::MoveAxisTo(int axis, double target) {
    if (!IsAxis(axis))
        return; // there is no way to go
    const auto at = static_cast<std::size_t>(axis);
    const std::uint32_t estimate = Milliseconds(target - m_link.position[at], m_link.speed[at]);
    m_link.StartMove(axis, target);
    WaitForArrival(axis, target, estimate);
}

void StageMotion::MoveAxisBy(int axis, double distance) {
    if (IsAxis(axis))
        MoveAxisTo(axis, m_link.position[static_cast<std::size_t>(axis)] + distance);
}

void StageMotion::MoveXY(double x, double y) {
    const std::uint32_t timeX = Milliseconds(x - m_link.position[0], m_link.speed[0]);
    const std::uint32_t timeY = Milliseconds(y - m_link.position[1], m_link.speed[1]);
    if (timeX > timeY) {
        m_link.StartMove(axisY, y);
        MoveAxisTo(axisX, x);
    } else {
        m_link.StartMove(axisX, x);
        MoveAxisTo(axisY, y);
    }
}

void StageMotion::WaitForArrival(int axis, double target, [[maybe_unused]] std::uint32_t estimatedMs) {
    ArrivalWait(m_link, m_pump, m_status, m_clock, axis, target).Run();
}

void StageMotion::MoveXYTogether(double x, double y, std::int32_t speed) {
    const std::int32_t clamped = std::clamp(speed, 0, fastestTogether);
    if (clamped == 0)
        return; // it would take for ever
    const SharedMove move = SharedMoveTo(x, y, clamped);
    StartTogether(move);
    WaitTogether(move);
    m_link.SetStoredPosition(axisX, x);
    m_link.SetStoredPosition(axisY, y);
    m_status.ShowStagePosition();
}

StageMotion::SharedMove StageMotion::SharedMoveTo(double x, double y, std::int32_t speed) const {
    const double dx = std::abs(x - m_link.position[0]);
    const double dy = std::abs(y - m_link.position[1]);
    const bool xIsLonger = dx > dy;
    const std::uint64_t time = TimeOfLongerWay(xIsLonger ? dx : dy, speed);
    const std::int32_t slower = SpeedOfShorterWay(xIsLonger ? dy : dx, time, speed);
    return {x, y, std::max(dx, dy), xIsLonger, time, xIsLonger ? speed : slower, xIsLonger ? slower : speed};
}

void StageMotion::StartTogether(const SharedMove& move) {
    m_status.ShowProgress(Formatted("Dist. to move %.1lfum", move.longerWay));
    m_link.SetSpeed(axisX, move.speedX);
    m_link.SetSpeed(axisY, move.speedY);
    m_link.StartMove(axisX, move.x);
    m_link.StartMove(axisY, move.y);
}

void StageMotion::WaitTogether(const SharedMove& move) {
    const std::uint64_t start = m_clock.TickMilliseconds();
    m_status.ShowInformation("Started    ");
    Settling settling;
    while (m_clock.TickMilliseconds() - start < move.milliseconds) {
        if (settling.RestsAt(AskDistance(move)))
            break;
        m_pump.PumpMessages(motionPumpMs);
    }
}

/// Of the axis with the longer way from its target.
double StageMotion::AskDistance(const SharedMove& move) {
    const double atX = m_link.QueryPosition(axisX);
    const double atY = m_link.QueryPosition(axisY);
    m_status.ShowStagePosition();
    return move.xIsLonger ? std::abs(atX - move.x) : std::abs(atY - move.y);
}

} // namespace tessaro
