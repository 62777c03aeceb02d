#pragma once

#include <cstdint>

namespace tessaro {

/// The plane of best focus over the scan area.
struct FocusControl {
    float xTilt = 0.0F; // um of Z per um of X
    float yTilt = 0.0F; // um of Z per um of Y
    std::int32_t tiltMeasured = 0;
    std::int32_t tiltCorrection = 1; // the scan follows the plane
};

} // namespace tessaro
