#pragma once

#include "app/message_pump.h"
#include "app/status_lines.h"
#include "platform/clock.h"
#include "stage/stage_link.h"

#include <cstddef>
#include <cstdint>

namespace tessaro {

inline constexpr std::uint32_t motionPumpMs = 10; // between two looks at an axis that moves

/// Whether an axis, by its distances from the target in turn, rests close to it: within 2 um, and less than
/// 1 um from the distance before. The first one is compared with 0.
class Settling {
public:
    bool RestsAt(double distanceUm);

private:
    double m_previousUm = 0.0;
};

/// One wait for an axis: reads what the controller says, and keeps the user interface alive in between.
class ArrivalWait {
public:
    ArrivalWait(StageLink& link, MessagePump& pump, StatusLines& status, Clock& clock, int axis,
                double targetUm)
        : m_link(link), m_pump(pump), m_status(status), m_clock(clock), m_axis(axis), m_target(targetUm),
          m_start(Now()) {}

    /// Until the axis has arrived, 2 s have passed without progress, or the operator has stopped a scan. Says
    /// in the progress line how it ended, and asks where the axis is.
    void Run();

private:
    std::uint32_t Now() { return static_cast<std::uint32_t>(m_clock.TickMilliseconds()); }
    void Wait();
    bool LookAtReply(std::uint32_t& dNoOfBytesRead);
    bool TakeProgress(std::size_t axis);
    bool AskWhere();
    void TellOutcome();
    void ShowProgress(const char* format);

    StageLink& m_link;
    MessagePump& m_pump;
    StatusLines& m_status;
    Clock& m_clock;
    int m_axis;
    double m_target;       // um
    std::uint32_t m_start; // of the silence
    std::uint32_t m_elapsed = 0;
    int m_loops = 0;
    int m_shortReads = 0;
    bool m_arrived = false;
    Settling m_settling;
};

} // namespace tessaro
