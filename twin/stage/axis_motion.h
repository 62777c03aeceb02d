#pragma once

#include <cstdint>
#include <vector>

namespace tessaro {

/// How an axis goes, in steps and seconds.
struct AxisDrive {
    double acceleration = 16'000.0; // steps/s^2
    double deceleration = 16'000.0;
};

/// Where an axis is at any time: pieces of constant acceleration, computed when a command comes. It turns and
/// stands at whole steps only. Times are seconds on any clock; commands come in the order of their times.
class AxisMotion {
public:
    explicit AxisMotion(std::int64_t step, AxisDrive drive = {});

    /// Goes to a step at up to `speed` steps/s. One that is too near to be reached in this direction is
    /// passed first.
    void MoveTo(std::int64_t target, double speed, double now);

    /// Slows down and stands at the first whole step that it can.
    void Stop(double now);

    /// Stands there at once.
    void Put(std::int64_t step, double now);

    /// In steps. Also of a time before the last command, as far as that was remembered.
    double PositionAt(double time) const;

    /// The whole steps that were made; never the one at which it is to stand as long as it moves.
    std::int64_t StepAt(double time) const;

    bool MovesAt(double time) const { return time < EndTime(); }

    /// Since when it stands, or will stand.
    double EndTime() const { return m_pieces.back().start; }

    static constexpr double rememberedSeconds = 2.0;

private:
    struct Piece {
        double start = 0.0; // lasts until the next one
        double position = 0.0;
        double velocity = 0.0;
        double acceleration = 0.0;
        double direction = 0.0; // in which it moves: 1 or -1; 0 when it stands
    };

    const Piece& PieceAt(double time) const;
    double VelocityAt(double time) const;
    void CutAt(double now);
    void Append(double seconds, double acceleration);
    void Drive(double target, double speed);
    double StandingPlace() const;
    void StandAt(double position);

    AxisDrive m_drive;
    std::vector<Piece> m_pieces; // the last one stands
};

} // namespace tessaro
