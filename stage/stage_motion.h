#pragma once

#include "app/message_pump.h"
#include "app/status_lines.h"
#include "platform/clock.h"
#include "stage/stage_link.h"

#include <cstdint>

namespace tessaro {

/// Moves of the stage that return when they have ended, have timed out or were given up. Positions are um.
/// The user interface lives on meanwhile, so that any message, another move included, may run inside one. No
/// move tells its caller whether it has arrived; the progress line tells the operator.
class StageMotion {
public:
    StageMotion(StageLink& link, MessagePump& pump, StatusLines& status, Clock& clock)
        : m_link(link), m_pump(pump), m_status(status), m_clock(clock) {}

    void MoveAxisTo(int axis, double target);
    void MoveAxisBy(int axis, double distance); // from where the axis is stored to be

    /// Waits for the axis that needs longer, for Y where both need the same. Where the other one is, only the
    /// controller's progress replies tell.
    void MoveXY(double x, double y);

    /// Until the controller says that an axis has arrived, whichever; reports the very target; or answers
    /// that the axis rests: within 2 um of the target, its distance from it less than 1 um from the distance
    /// of the answer before. The first answer is compared with a distance of 0. Gives up after 2 s without
    /// progress, however far the way is: the estimate is not looked at.
    void WaitForArrival(int axis, double target, std::uint32_t estimatedMs);

    /// Both axes at speeds with which they arrive together, the longer way at `speed` um/s, 0 to 800. A click
    /// does not end it. With a speed of 0, which would take for ever, nothing is moved. No operator's command
    /// leads here.
    void MoveXYTogether(double x, double y, std::int32_t speed);

private:
    struct SharedMove;

    SharedMove SharedMoveTo(double x, double y, std::int32_t speed) const;
    void StartTogether(const SharedMove& move);
    void WaitTogether(const SharedMove& move);
    double AskDistance(const SharedMove& move);

    StageLink& m_link;
    MessagePump& m_pump;
    StatusLines& m_status;
    Clock& m_clock;
};

} // namespace tessaro
