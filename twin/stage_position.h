#pragma once

namespace tessaro {

struct StagePosition {
    double x = 0.0; // um
    double y = 0.0;
    double z = 0.0;

    friend bool operator==(const StagePosition&, const StagePosition&) = default;
};

} // namespace tessaro
