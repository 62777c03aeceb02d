#include "reference/plain_auto_focus.h"

#include <cmath>

namespace tessaro::reference {
namespace {

int Truncated(double value) {
    return static_cast<int>(value);
}

} // namespace

void CoarseFocus(FocusMachine& machine, int range, int speed) {
    // 1.
    float score[90] = {};
    int z[90] = {};
    float curvature[90] = {};
    float cmax = 0.0F;
    float cmin = 0.0F;
    float maxS = 0.0F;
    float minS = 0.0F;
    int idxMax = 0;
    int startZ = 0;
    double target = 0.0;
    bool moved = false;     // beside the steps: a search that ends without its final move
    bool finalMove = false; // stops the axis
    machine.FocusBusy() = 1;
    machine.StopRequested() = 0;
    const bool wasRunning = machine.LiveViewRuns();
    machine.SwitchLiveView(false);
    machine.ShowInformation("Course Focusing has started");
    // 2.
    if (machine.PumpMessages(10) == 0 || machine.StopRequested() == 1)
        goto step9;
    // 3.
    machine.GrabAndDraw();
    startZ = Truncated(machine.QueryPosition());
    machine.ShowStagePosition();
    machine.ShowInformation("Stage lifting");
    // 4.
    machine.SetSpeed(speed * 2);
    moved = true;
    machine.MoveAxisBy(+range);
    // 5.
    if (machine.PumpMessages(10) == 0 || machine.StopRequested() == 1)
        goto step9;
    // 6.
    machine.SetSpeed(speed);
    machine.QueryPosition();
    machine.ShowStagePosition();
    machine.ShowInformation("Stage going down");
    machine.MoveAxisBy(-2 * range);
    // 7.
    if (machine.PumpMessages(10) == 0 || machine.StopRequested() == 1)
        goto step9;
    machine.GrabAndDraw();
    maxS = minS = machine.FocusScore();
    curvature[0] = curvature[1] = 0.0F;
    // 8.
    for (int i = 0; i <= 89; i++) {
        machine.GrabAndDraw();
        z[i] = Truncated(machine.QueryPosition());
        score[i] = machine.FocusScore();
        if (i >= 2) {
            curvature[i] = 2 * score[i - 1] - score[i - 2] - score[i];
            if (score[i] > maxS)
                maxS = score[i];
            if (score[i] < minS)
                minS = score[i];
            if (i == 2)
                cmax = cmin = curvature[2];
            if (curvature[i] > cmax) {
                cmax = curvature[i];
                idxMax = i;
            }
            if (curvature[i] < cmin)
                cmin = curvature[i];
            if (maxS > minS * 1.5F && score[i] < maxS * 2 / 3 && curvature[i] < cmax * 2 / 3 &&
                cmax > score[i - 1] * 0.3F)
                break;
            if (score[i] > 10.0F)
                goto step9;
        }
        machine.ShowInformation("Course Focusing step:" + std::to_string(i));
        machine.ShowStagePosition();
        if (machine.PumpMessages(10) == 0)
            goto step9;
    }
    finalMove = true;
    machine.SetSpeed(speed * 2);
    machine.Position() = machine.QueryPosition();
    if (maxS > 0.01F)
        target = z[idxMax > 0 ? idxMax - 1 : 1] + 20;
    else
        target = startZ;
    machine.MoveAxisTo(target);
    machine.PumpMessages(300);
step9:
    if (moved && !finalMove)
        machine.StopAxis();
    machine.SetSpeed(speed * 2);
    machine.Position() = machine.QueryPosition();
    machine.ShowInformation("Course Focusing Completed");
    machine.ShowStagePosition();
    machine.FocusBusy() = 0;
    if (wasRunning)
        machine.SwitchLiveView(true);
}

int FineFocus(FocusMachine& machine, float hint, int focusSpeed) {
    // 1.
    bool aborted = false;
    bool found = false;
    float focusHistory[20] = {};
    int zHistory[20] = {};
    int trend = 0;
    int flat = 0;
    int i = 0;
    int best = 0;
    machine.FocusBusy() = 1;
    machine.ShowInformation("Auto focusing has started.");
    int dir = hint > 0 ? +1 : -1;
    // 2.
    const bool wasRunning = machine.LiveViewRuns();
    machine.SwitchLiveView(false);
    machine.GrabAndDraw();
    machine.UpdateFocusMeasures();
    // 3.
    if (machine.FocusValue() < 0.001F)
        machine.ShowErrorBox("Please, adjust the sample posion", "Error in focusing");
    else if (machine.FocusValue() < 1.0F)
        CoarseFocus(machine, 1000, focusSpeed);
    // 4.
    if (machine.PumpMessages(10) == 0 || machine.StopRequested() == 1)
        goto step9;
    // 5.
    focusHistory[0] = machine.FocusValue();
    if (focusHistory[0] > 10.0F)
        goto step9;
    // 6.
    for (int pass = 0; pass <= 1; pass++) {
        i = 0;
        while (i < (pass + 1) * 10) {
            const float previous = machine.FocusValue();
            int step = static_cast<int>(4.0F / std::sqrt(machine.FocusValue()));
            if (step < 1)
                step = 1;
            machine.MoveAxisBy(step * dir);
            machine.ShowProgress("Focusing step:" + std::to_string(pass) + "-" + std::to_string(i));
            if (machine.PumpMessages(200) == 0) {
                aborted = true;
                goto step9;
            }
            if (machine.PumpMessages(10) == 0 || machine.StopRequested() == 1)
                goto step9;
            machine.GrabAndDraw();
            machine.UpdateFocusMeasures();
            focusHistory[i] = machine.FocusValue();
            zHistory[i] = Truncated(machine.Position());
            machine.ShowStagePosition();
            if (machine.FocusValue() < previous - 0.1F) {
                if (trend > 0)
                    trend = 0;
                trend -= 1;
                flat = 0;
            } else if (machine.FocusValue() < previous + 0.1F) {
                flat += 1;
                if (flat > 1)
                    trend = 0;
            } else {
                trend += 1;
                flat = 0;
            }
            if (machine.FocusValue() > 10.0F) {
                found = true;
                break;
            }
            if (trend < 0 || machine.FocusValue() < focusHistory[0] - 1.0F || flat >= pass * 4 + 4)
                break;
            i += 1;
        }
        if (found) {
            machine.StopAxis();
            goto step9;
        }
        trend = 0;
        dir = -dir;
        flat = 0;
        if (machine.PumpMessages(200) == 0) {
            aborted = true;
            goto step9;
        }
    }
    // 7.
    for (int k = 1; k <= i - 1; k++)
        if (focusHistory[k] > focusHistory[best])
            best = k;
    // 8. Without a candidate Z stays.
    if (i > 0)
        machine.MoveAxisTo(zHistory[best]);
    machine.PumpMessages(300);
step9:
    machine.ShowInformation(aborted ? "Focusing Aborted." : "Focusing completed.");
    machine.ShowStagePosition();
    machine.FocusBusy() = 0;
    if (wasRunning)
        machine.SwitchLiveView(true);
    machine.UpdateFocusMeasures();
    // 10.
    if (machine.FocusValue() < 0.7F) {
        machine.ShowErrorBox("Please, adjust the sample position", "Error in focusing");
        if (machine.Scanning() != 0)
            machine.Scanning() = 0;
        aborted = true;
    }
    // 11.
    return aborted ? 0 : 1;
}

} // namespace tessaro::reference
