#pragma once

namespace tessaro {

/// Where a stage may be said to be, on each axis and to both sides.
inline constexpr double farthestUm = 1e6;

struct StagePosition {
    double x = 0.0; // um
    double y = 0.0;
    double z = 0.0;

    friend bool operator==(const StagePosition&, const StagePosition&) = default;
};

} // namespace tessaro
