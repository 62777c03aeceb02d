#include "focus/coarse_sweep.h"

#include "app/number_text.h"

#include <algorithm>
#include <limits>

namespace tessaro {
namespace {

constexpr double abovePeakUm = 20.0; // the stage had gone on when it was asked for the sample's position

std::int32_t Doubled(std::int32_t speed) {
    using Limits = std::numeric_limits<std::int32_t>;
    return static_cast<std::int32_t>(
        std::clamp<std::int64_t>(std::int64_t{2} * speed, Limits::min(), Limits::max()));
}

} // namespace

void CoarseSweep::Run() {
    Begin();
    if (!Sweep())
        StayHere();
    End();
}

void CoarseSweep::Begin() {
    m_reach.control.focusBusy = 1;
    m_reach.scan.stopRequested = 0;
    StopLiveView();
    m_reach.status.ShowInformation("Course Focusing has started");
}

/// False when it ends before the final move.
bool CoarseSweep::Sweep() {
    if (IsStopped())
        return Leave("stopped");
    Lift();
    if (IsStopped())
        return Leave("stopped");
    GoDown();
    if (IsStopped())
        return Leave("stopped");
    return Sample();
}

void CoarseSweep::Lift() {
    m_reach.view.GrabAndDraw();
    m_startZ = TruncatedToInt32(m_reach.stage.QueryPosition(axisZ));
    m_reach.status.ShowStagePosition();
    m_reach.status.ShowInformation("Stage lifting");
    DoubleSpeed();
    m_moved = true;
    m_reach.motion.MoveAxisBy(axisZ, m_range);
}

void CoarseSweep::GoDown() {
    m_reach.stage.SetSpeed(axisZ, m_speed);
    m_reach.stage.QueryPosition(axisZ);
    m_reach.status.ShowStagePosition();
    m_reach.status.ShowInformation("Stage going down");
    m_reach.motion.MoveAxisBy(axisZ, -2.0 * m_range);
}

bool CoarseSweep::Sample() {
    m_reach.view.GrabAndDraw();
    SweepCurve curve(m_reach.view.FocusScore());
    Record(0, 0, Z());
    m_outcome = "all samples taken";
    for (std::size_t i = 0; i < sweepSamples; ++i) {
        m_reach.view.GrabAndDraw();
        const double z = m_reach.stage.QueryPosition(axisZ);
        const SweepCurve::Verdict verdict = curve.Add(TruncatedToInt32(z), m_reach.view.FocusScore());
        Record(1, static_cast<int>(i), z);
        if (verdict == SweepCurve::Verdict::PeakPassed) {
            m_outcome = "peak passed";
            break;
        }
        if (verdict == SweepCurve::Verdict::AlreadySharp)
            return Leave("already sharp");
        if (!ShowStep(i))
            return Leave("stopped");
    }
    GoToPeak(curve);
    return true;
}

/// False when the operator has stopped a scan.
bool CoarseSweep::ShowStep(std::size_t step) {
    m_reach.status.ShowInformation(Formatted("Course Focusing step:%d", static_cast<int>(step)));
    m_reach.status.ShowStagePosition();
    return !StopsAtStep();
}

void CoarseSweep::GoToPeak(const SweepCurve& curve) {
    DoubleSpeed();
    AskWhereZIs();
    const auto peak = curve.PeakZ();
    m_reach.motion.MoveAxisTo(axisZ, peak.has_value() ? *peak + abovePeakUm : m_startZ);
    WaitThere();
}

/// Without the final move Z would go on to the lower end of the sweep. One that was sent goes on, whoever
/// stops the search in it.
void CoarseSweep::StayHere() {
    if (m_moved)
        m_reach.stage.StopAxis(axisZ);
}

void CoarseSweep::End() {
    DoubleSpeed();
    AskWhereZIs();
    RecordEnd();
    EndSearch("Course Focusing Completed");
}

void CoarseSweep::DoubleSpeed() {
    m_reach.stage.SetSpeed(axisZ, Doubled(m_speed));
}

/// What the answer says counts, also where the line has failed.
void CoarseSweep::AskWhereZIs() {
    m_reach.stage.SetStoredPosition(axisZ, m_reach.stage.QueryPosition(axisZ));
}

} // namespace tessaro
