#include "twin/stage/axis_motion.h"

#include <algorithm>
#include <cmath>

namespace tessaro {
namespace {

/// What rounding leaves of a velocity that has come to its end, in steps/s, and of a whole step.
constexpr double noVelocity = 1e-6;
constexpr double noDistance = 1e-6;

} // namespace

AxisMotion::AxisMotion(std::int64_t step, AxisDrive drive)
    : m_drive(drive), m_pieces({{.position = static_cast<double>(step)}}) {}

void AxisMotion::MoveTo(std::int64_t target, double speed, double now) {
    const auto goal = static_cast<double>(target);
    CutAt(now);
    const double standing = StandingPlace();
    const double velocity = m_pieces.back().velocity;
    if (velocity != 0.0 && (goal - standing) * velocity < 0.0)
        Drive(standing, std::abs(velocity)); // it turns there
    Drive(goal, speed);
}

void AxisMotion::Stop(double now) {
    if (!MovesAt(now))
        return;
    CutAt(now);
    if (const double speed = std::abs(m_pieces.back().velocity); speed > 0.0)
        Drive(StandingPlace(), speed);
    else
        StandAt(StandingPlace());
}

void AxisMotion::Put(std::int64_t step, double now) {
    CutAt(now);
    StandAt(static_cast<double>(step));
}

/// Forgets what was to come, and what was long ago. What goes on begins with the last piece.
void AxisMotion::CutAt(double now) {
    Piece present = {.start = now,
                     .position = PositionAt(now),
                     .velocity = VelocityAt(now),
                     .direction = PieceAt(now).direction};
    if (std::abs(present.velocity) < noVelocity)
        present.velocity = 0.0;
    std::erase_if(m_pieces, [now](const Piece& piece) { return piece.start >= now; });
    const auto kept = std::ranges::find_if(
        m_pieces, [now](const Piece& piece) { return piece.start > now - rememberedSeconds; });
    if (kept - m_pieces.begin() > 1)
        m_pieces.erase(m_pieces.begin(), kept - 1);
    m_pieces.push_back(present);
}

/// The first whole step at which it can stand.
double AxisMotion::StandingPlace() const {
    const Piece& piece = m_pieces.back();
    const double way = piece.velocity * std::abs(piece.velocity) / (2.0 * m_drive.deceleration);
    const double nearest = std::round(piece.position + way);
    if (std::abs(nearest - piece.position - way) < noDistance)
        return nearest;
    return way > 0.0 ? std::ceil(piece.position + way) : std::floor(piece.position + way);
}

/// From the last piece on to a target that lies in its direction, far enough to stand there: changes to the
/// highest speed, keeps it and slows down.
void AxisMotion::Drive(double target, double speed) {
    const Piece from = m_pieces.back();
    const double distance = std::abs(target - from.position);
    if (distance == 0.0 && from.velocity == 0.0)
        return;
    const double forward =
        target > from.position || (target == from.position && from.velocity > 0.0) ? 1.0 : -1.0;
    const double begun = std::abs(from.velocity);
    const double up = m_drive.acceleration;
    const double down = m_drive.deceleration;
    const double reachable = std::sqrt((2.0 * up * down * distance + down * begun * begun) / (up + down));
    const double highest = begun > speed ? speed : std::clamp(reachable, begun, std::max(begun, speed));
    const double change = begun > highest ? -down : up;
    const double changeWay = (highest * highest - begun * begun) / (2.0 * change);
    const double slowingWay = highest * highest / (2.0 * down);
    m_pieces.back().direction = forward;
    Append((highest - begun) / change, forward * change);
    Append(std::max(0.0, distance - changeWay - slowingWay) / highest, 0.0);
    Append(highest / down, -forward * down);
    StandAt(target);
}

/// The last piece goes on so long with this acceleration.
void AxisMotion::Append(double seconds, double acceleration) {
    m_pieces.back().acceleration = acceleration;
    const Piece& piece = m_pieces.back();
    m_pieces.push_back(
        {.start = piece.start + seconds,
         .position = piece.position + seconds * (piece.velocity + seconds * acceleration / 2.0),
         .velocity = piece.velocity + seconds * acceleration,
         .direction = piece.direction});
}

/// No error of rounding lasts beyond a motion.
void AxisMotion::StandAt(double position) {
    m_pieces.back() = {.start = m_pieces.back().start, .position = position};
}

const AxisMotion::Piece& AxisMotion::PieceAt(double time) const {
    const auto later = std::ranges::upper_bound(m_pieces, time, {}, &Piece::start);
    return later == m_pieces.begin() ? *later : *(later - 1);
}

double AxisMotion::PositionAt(double time) const {
    const Piece& piece = PieceAt(time);
    const double seconds = std::max(0.0, time - piece.start);
    return piece.position + seconds * (piece.velocity + seconds * piece.acceleration / 2.0);
}

double AxisMotion::VelocityAt(double time) const {
    const Piece& piece = PieceAt(time);
    return piece.velocity + std::max(0.0, time - piece.start) * piece.acceleration;
}

std::int64_t AxisMotion::StepAt(double time) const {
    const double position = PositionAt(time);
    const auto target = static_cast<std::int64_t>(m_pieces.back().position);
    if (!MovesAt(time))
        return target;
    const double direction = PieceAt(time).direction;
    const auto step = static_cast<std::int64_t>(direction < 0.0 ? std::ceil(position - noDistance)
                                                                : std::floor(position + noDistance));
    return step != target ? step : target - static_cast<std::int64_t>(direction);
}

} // namespace tessaro
