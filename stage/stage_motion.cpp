#include "stage/stage_motion.h"

#include "app/number_text.h"
#include "stage/stage_units.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <string_view>

namespace tessaro {
namespace {

constexpr std::uint32_t limitMs = 1000;       // shown; a wait gives up after twice as long
constexpr std::uint32_t pumpMs = 10;          // between two reads
constexpr double nearUm = 2.0;                // of the target
constexpr double restingUm = 1.0;             // less than this between two answers
constexpr std::int32_t fastestTogether = 800; // um/s
constexpr double millisecondsPerSecond = 1000.0;
constexpr std::string_view progressLetters = "pPQ"; // by axis
constexpr std::string_view arrivalLetters = "XYZ";

/// Toward zero; what does not fit is the longest time.
std::uint32_t Milliseconds(double distance, std::int32_t umPerSecond) {
    const double time = std::abs(distance) * millisecondsPerSecond / umPerSecond;
    constexpr auto longest = std::numeric_limits<std::uint32_t>::max();
    return time < static_cast<double>(longest) ? static_cast<std::uint32_t>(time) : longest;
}

/// Whether an axis, by two distances from its target in turn, rests close to it.
class Settling {
public:
    bool RestsAt(double distance) {
        const bool rests = distance <= nearUm && std::abs(distance - m_previous) < restingUm;
        m_previous = distance;
        return rests;
    }

private:
    double m_previous = 0.0;
};

/// One wait for an axis.
class ArrivalWait {
public:
    ArrivalWait(StageLink& link, MessagePump& pump, StatusLines& status, Clock& clock, int axis,
                double target)
        : m_link(link), m_pump(pump), m_status(status), m_clock(clock), m_axis(axis), m_target(target),
          m_start(Now()) {}

    void Run() {
        if (m_link.hComm == SerialHandle::Invalid || m_pump.PumpMessages(pumpMs) == 0)
            return;
        Wait();
        TellOutcome();
        m_link.QueryPosition(m_axis);
        m_status.ShowStagePosition();
        m_pump.PumpMessages(pumpMs);
    }

private:
    std::uint32_t Now() { return static_cast<std::uint32_t>(m_clock.TickMilliseconds()); }

    void Wait() {
        for (;;) {
            m_elapsed = Now() - m_start;
            if (m_elapsed >= 2 * limitMs)
                return;
            std::uint32_t bytesRead = 0;
            m_arrived = LookAtReply(bytesRead);
            if (m_arrived)
                return;
            m_status.ShowStagePosition();
            if (m_pump.PumpMessages(pumpMs) == 0)
                return;
            ++m_loops;
            m_shortReads += bytesRead < 2 ? 1 : 0;
        }
    }

    /// True when it says that the axis has arrived.
    bool LookAtReply(std::uint32_t& bytesRead) {
        if (!m_link.ReadReply(bytesRead) || bytesRead == 0) {
            ShowProgress("ReadFile error: %d/%d");
            return false;
        }
        const char first = m_link.ioBuffer[0];
        if (arrivalLetters.find(first) != std::string_view::npos)
            return true;
        if (const std::size_t axis = progressLetters.find(first); axis != std::string_view::npos)
            return TakeProgress(axis);
        return AskWhere();
    }

    /// Whichever axis moves, the wait goes on as long as one does.
    bool TakeProgress(std::size_t axis) {
        const auto steps = m_link.ReceivedSteps(1);
        if (steps.has_value()) {
            ShowProgress("moving: %d/%d");
            m_link.position[axis] = MicrometresOf(*steps);
            if (m_link.position[axis] == m_target)
                return true;
        }
        m_start = Now();
        return false;
    }

    /// Something came that says nothing: a stage that has settled without an arrival reply shows here.
    bool AskWhere() {
        const bool rests = m_settling.RestsAt(std::abs(m_link.QueryPosition(m_axis) - m_target));
        return rests && m_link.offline == 0;
    }

    void TellOutcome() {
        if (m_arrived)
            ShowProgress("arrived : %d/%d");
        else
            m_status.ShowProgress(Formatted("time passed: %d/%d, Fail to read:%d/%d", m_elapsed, limitMs,
                                            m_shortReads, m_loops));
    }

    void ShowProgress(const char* format) { m_status.ShowProgress(Formatted(format, m_elapsed, limitMs)); }

    StageLink& m_link;
    MessagePump& m_pump;
    StatusLines& m_status;
    Clock& m_clock;
    int m_axis;
    double m_target;
    std::uint32_t m_start; // of the silence
    std::uint32_t m_elapsed = 0;
    int m_loops = 0;
    int m_shortReads = 0;
    bool m_arrived = false;
    Settling m_settling;
};

/// Two ways and the speeds with which they take the same time.
struct SharedMove {
    std::uint64_t milliseconds = 0;
    std::int32_t longer = 0; // um/s
    std::int32_t shorter = 0;
};

constexpr double longestMs = 1e18; // nothing that a controller can be told takes as long

/// A way too short for a millisecond needs no other speed, and what is no way of a stage is not waited for.
SharedMove Share(double longerWay, double shorterWay, std::int32_t speed) {
    const double exactTime = longerWay * millisecondsPerSecond / speed;
    const auto time = static_cast<std::uint64_t>(exactTime < longestMs ? exactTime : 0.0);
    const double shorter = time > 0 ? shorterWay * millisecondsPerSecond / static_cast<double>(time) : speed;
    return {time, speed, TruncatedToInt32(shorter)};
}

} // namespace

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
    const double dx = std::abs(x - m_link.position[0]);
    const double dy = std::abs(y - m_link.position[1]);
    const std::int32_t clamped = std::clamp(speed, 0, fastestTogether);
    if (clamped == 0)
        return; // it would take for ever
    const bool xIsLonger = dx > dy;
    const SharedMove move = xIsLonger ? Share(dx, dy, clamped) : Share(dy, dx, clamped);
    m_status.ShowProgress(Formatted("Dist. to move %.1lfum", std::max(dx, dy)));
    m_link.SetSpeed(axisX, xIsLonger ? move.longer : move.shorter);
    m_link.SetSpeed(axisY, xIsLonger ? move.shorter : move.longer);
    m_link.StartMove(axisX, x);
    m_link.StartMove(axisY, y);
    const std::uint64_t start = m_clock.TickMilliseconds();
    m_status.ShowInformation("Started    ");
    Settling settling;
    while (m_clock.TickMilliseconds() - start < move.milliseconds) {
        const double atX = m_link.QueryPosition(axisX);
        const double atY = m_link.QueryPosition(axisY);
        m_status.ShowStagePosition();
        if (settling.RestsAt(xIsLonger ? std::abs(atX - x) : std::abs(atY - y)))
            break;
        m_pump.PumpMessages(pumpMs);
    }
    m_link.SetStoredPosition(axisX, x);
    m_link.SetStoredPosition(axisY, y);
    m_status.ShowStagePosition();
}

} // namespace tessaro
