#include "stage/arrival_wait.h"

#include "app/number_text.h"
#include "stage/stage_units.h"

#include <cmath>
#include <string_view>

namespace tessaro {
namespace {

constexpr std::uint32_t limitMs = 1000; // shown; a wait gives up after twice as long
constexpr double nearUm = 2.0;
constexpr double restingUm = 1.0;
constexpr std::string_view progressLetters = "pPQ"; // by axis
constexpr std::string_view arrivalLetters = "XYZ";

} // namespace

bool Settling::RestsAt(double distanceUm) {
    const bool rests = distanceUm <= nearUm && std::abs(distanceUm - m_previousUm) < restingUm;
    m_previousUm = distanceUm;
    return rests;
}

void ArrivalWait::Run() {
    if (m_link.hComm == SerialHandle::Invalid || m_pump.PumpMessages(motionPumpMs) == 0)
        return;
    Wait();
    TellOutcome();
    m_link.QueryPosition(m_axis);
    m_status.ShowStagePosition();
    m_pump.PumpMessages(motionPumpMs);
}

void ArrivalWait::Wait() {
    for (;;) {
        m_elapsed = Now() - m_start;
        if (m_elapsed >= 2 * limitMs)
            return;
        std::uint32_t dNoOfBytesRead = 0;
        m_arrived = LookAtReply(dNoOfBytesRead);
        if (m_arrived)
            return;
        m_status.ShowStagePosition();
        if (m_pump.PumpMessages(motionPumpMs) == 0)
            return;
        ++m_loops;
        m_shortReads += dNoOfBytesRead < 2 ? 1 : 0;
    }
}

/// True when it says that the axis has arrived.
bool ArrivalWait::LookAtReply(std::uint32_t& dNoOfBytesRead) {
    if (!m_link.ReadReply(dNoOfBytesRead) || dNoOfBytesRead == 0) {
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
bool ArrivalWait::TakeProgress(std::size_t axis) {
    const auto pos_temp = m_link.ReceivedSteps(1);
    if (pos_temp.has_value()) {
        ShowProgress("moving: %d/%d");
        m_link.position[axis] = MicrometresOf(*pos_temp);
        if (m_link.position[axis] == m_target)
            return true;
    }
    m_start = Now();
    return false;
}

/// Something came that says nothing: a stage that has settled without an arrival reply shows here.
bool ArrivalWait::AskWhere() {
    const bool rests = m_settling.RestsAt(std::abs(m_link.QueryPosition(m_axis) - m_target));
    return rests && m_link.offline == 0;
}

void ArrivalWait::TellOutcome() {
    if (m_arrived)
        ShowProgress("arrived : %d/%d");
    else
        m_status.ShowProgress(
            Formatted("time passed: %d/%d, Fail to read:%d/%d", m_elapsed, limitMs, m_shortReads, m_loops));
}

void ArrivalWait::ShowProgress(const char* format) {
    m_status.ShowProgress(Formatted(format, m_elapsed, limitMs));
}

} // namespace tessaro
