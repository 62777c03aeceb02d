#include "focus/fine_climb.h"

#include "app/number_text.h"
#include "focus/coarse_sweep.h"

namespace tessaro {
namespace {

constexpr float nothingToSee = 0.001F;
constexpr float tooFarToClimb = 1.0F;
constexpr float leastAcceptable = 0.7F;
constexpr std::int32_t sweepRangeUm = 1000;
constexpr std::uint32_t settlePumpMs = 200;
constexpr int passes = 2;

constexpr const char* errorCaption = "Error in focusing";

} // namespace

int FineClimb::Run() {
    Begin();
    LookWhetherToClimb();
    Climb();
    End();
    Judge();
    return m_aborted ? 0 : 1;
}

void FineClimb::Begin() {
    m_reach.control.focusBusy = 1;
    m_reach.status.ShowInformation("Auto focusing has started.");
    StopLiveView();
    m_reach.view.GrabAndDraw();
    m_reach.view.UpdateFocusMeasures();
    Record(0, 0, Z());
}

/// Two different texts, here and at the end; this one as it has always been spelt.
void FineClimb::LookWhetherToClimb() {
    if (m_reach.focusValue < nothingToSee)
        m_reach.boxes.ShowWarning(m_reach.windows.main, "Please, adjust the sample posion", errorCaption);
    else if (m_reach.focusValue < tooFarToClimb)
        CoarseSweep(m_reach, sweepRangeUm, m_reach.control.focusSpeed).Run();
}

/// After a sweep the focus value is still the one before it, since a sweep looks at the score alone: the
/// first step is as long as it was blurred there. That is meant.
void FineClimb::Climb() {
    if (IsStopped()) {
        Leave("stopped");
        return;
    }
    if (m_reach.focusValue > sharpFocusValue) {
        Leave("in focus already");
        return;
    }
    for (int pass = 0; pass < passes; ++pass)
        if (!ClimbPass(pass) || !Turn())
            return;
    GoToBest();
}

/// False when the search has to end.
bool FineClimb::ClimbPass(int pass) {
    m_history.BeginPass(pass);
    for (int i = 0; i < ClimbSteps(pass); ++i) {
        const float previous = m_reach.focusValue;
        if (!Step(pass, i))
            return false;
        switch (m_history.Add(TruncatedToInt32(Z()), previous, m_reach.focusValue)) {
        case ClimbHistory::Verdict::GoOn:
            break;
        case ClimbHistory::Verdict::PassEnds:
            return true;
        case ClimbHistory::Verdict::InFocus:
            m_reach.stage.StopAxis(axisZ);
            return Leave("in focus");
        }
    }
    return true;
}

/// False when the operator has stopped it.
bool FineClimb::Step(int pass, int i) {
    m_reach.motion.MoveAxisBy(axisZ, ClimbStep(m_reach.focusValue) * m_direction);
    m_reach.status.ShowProgress(Formatted("Focusing step:%d-%d", pass, i));
    if (StopsWithin(settlePumpMs))
        return Abort();
    if (IsStopped())
        return Leave("stopped");
    m_reach.view.GrabAndDraw();
    m_reach.view.UpdateFocusMeasures();
    Record(pass + 1, i, Z());
    m_reach.status.ShowStagePosition();
    return true;
}

bool FineClimb::Turn() {
    m_direction = -m_direction;
    return !StopsWithin(settlePumpMs) || Abort();
}

/// Each pass begins where the one before has ended; where the second one ends at its first step, nothing
/// better is known than where Z is.
void FineClimb::GoToBest() {
    m_outcome = "best of the second pass";
    if (const auto best = m_history.BestZ())
        m_reach.motion.MoveAxisTo(axisZ, *best);
    WaitThere();
}

void FineClimb::End() {
    EndSearch(m_aborted ? "Focusing Aborted." : "Focusing completed.");
    m_reach.view.UpdateFocusMeasures();
    RecordEnd();
}

void FineClimb::Judge() {
    if (!(m_reach.focusValue < leastAcceptable))
        return;
    m_reach.boxes.ShowWarning(m_reach.windows.main, "Please, adjust the sample position", errorCaption);
    m_reach.scan.scanning = 0;
    m_aborted = true;
}

bool FineClimb::Abort() {
    m_aborted = true;
    return Leave("aborted");
}

} // namespace tessaro
