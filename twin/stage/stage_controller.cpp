#include "twin/stage/stage_controller.h"

#include <algorithm>
#include <limits>
#include <utility>
#include <vector>

namespace tessaro {
namespace {

constexpr std::array<const char*, stageAxisCount> progressLetters = {"p", "P", "Q"};
constexpr std::array<const char*, stageAxisCount> arrivalLetters = {"X", "Y", "Z"};
constexpr std::int64_t slowest = 1; // steps/s
constexpr std::int64_t fastest = 16'000;
constexpr std::size_t mostQueries = 32; // that wait for their answers
constexpr double never = std::numeric_limits<double>::infinity();

} // namespace

StageController::StageController(StageAxes& axes, Log log, const ProgressAxes& progressAxes)
    : m_axes(axes), m_log(std::move(log)), m_progressAxes(progressAxes) {}

void StageController::Receive(char byte, double now) {
    const std::optional<std::string> text = m_reader.Take(byte);
    if (!text)
        return;
    if (m_log)
        m_log(*text, now);
    if (const auto command = ParseStageCommand(*text))
        Obey(*command, now);
}

void StageController::Obey(const StageCommand& command, double now) {
    switch (command.verb) {
    case StageVerb::Wake: // whatever was begun before it has been forgotten already
        return;
    case StageVerb::Query:
        if (m_asked.size() < mostQueries)
            m_asked.push_back(command.axis);
        return;
    case StageVerb::Move:
        return Move(command.axis, command.number, now);
    case StageVerb::SetSpeed: // of the next move
        m_state[command.axis].speed = static_cast<double>(std::clamp(command.number, slowest, fastest));
        return;
    case StageVerb::Stop:
        m_state[command.axis].owedSince.reset();
        return m_axes.Stop(command.axis, now);
    }
}

void StageController::Move(std::size_t axis, std::int64_t step, double now) {
    Axis& state = m_state[axis];
    if (!m_axes.MovesAt(axis, now))
        state.progressDue = now + progressSeconds;
    const bool reaches = m_axes.MoveTo(axis, step, state.speed, now);
    state.owedSince = reaches ? std::optional(now) : std::nullopt;
}

void StageController::ForgetHost() {
    m_reader.ForgetBegun();
    m_asked.clear();
}

void StageController::ForgetMoves() {
    for (Axis& state : m_state)
        state.owedSince.reset();
}

/// Not before the command to another axis that may follow has come.
double StageController::ArrivalTime(std::size_t axis) const {
    return std::max(m_axes.EndTime(axis), m_state[axis].owedSince.value_or(0.0) + earliestArrivalSeconds);
}

/// The host takes any arrival for the one that it waits for: none is reported as long as an axis moves.
double StageController::ArrivalsDue() const {
    bool isOwed = false;
    double due = 0.0;
    for (std::size_t axis = 0; axis < stageAxisCount; ++axis) {
        isOwed = isOwed || m_state[axis].owedSince.has_value();
        due = std::max(due, m_state[axis].owedSince ? ArrivalTime(axis) : m_axes.EndTime(axis));
    }
    return isOwed ? due : never;
}

/// The axis whose progress is due first of those that tell it and will move then.
std::optional<std::size_t> StageController::NextProgress() const {
    std::optional<std::size_t> next;
    for (std::size_t axis = 0; axis < stageAxisCount; ++axis)
        if (m_progressAxes[axis] && m_axes.MovesAt(axis, m_state[axis].progressDue) &&
            (!next || m_state[axis].progressDue < m_state[*next].progressDue))
            next = axis;
    return next;
}

double StageController::NextSayTime() const {
    if (!m_asked.empty())
        return 0.0;
    const auto progress = NextProgress();
    return std::min(ArrivalsDue(), progress ? m_state[*progress].progressDue : never);
}

std::optional<StageReply> StageController::Say(double now) {
    if (!m_asked.empty()) {
        const std::size_t axis = m_asked.front();
        m_asked.pop_front();
        const auto number = [&](std::size_t of) { return std::to_string(m_axes.StepAt(of, now)); };
        return StageReply{StageReply::Kind::Answer, "", number(axis), number((axis + 1) % stageAxisCount)};
    }
    if (ArrivalsDue() <= now)
        return TakeArrivals();
    for (auto axis = NextProgress(); axis && m_state[*axis].progressDue <= now; axis = NextProgress()) {
        const bool moves = m_axes.MovesAt(*axis, now);
        while (m_state[*axis].progressDue <= now)
            m_state[*axis].progressDue += progressSeconds;
        if (moves)
            return Progress(*axis, now);
    }
    return std::nullopt;
}

StageReply StageController::TakeArrivals() {
    std::vector<std::pair<double, std::size_t>> arrived;
    for (std::size_t axis = 0; axis < stageAxisCount; ++axis)
        if (m_state[axis].owedSince)
            arrived.emplace_back(ArrivalTime(axis), axis);
    std::ranges::sort(arrived);
    StageReply reply = {StageReply::Kind::Arrival, "", ""};
    for (const auto& [time, axis] : arrived)
        reply.letters += arrivalLetters[axis];
    ForgetMoves();
    return reply;
}

StageReply StageController::Progress(std::size_t axis, double now) {
    return {StageReply::Kind::Progress, progressLetters[axis], std::to_string(m_axes.StepAt(axis, now))};
}

} // namespace tessaro
