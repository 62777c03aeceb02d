#pragma once

#include <cstdint>

namespace tessaro {

inline constexpr std::int32_t defaultFocusSpeed = 450;

/// The plane of best focus over the scan area, and what the searches for the focus share.
struct FocusControl {
    float xTilt = 0.0F; // um of Z per um of X
    float yTilt = 0.0F; // um of Z per um of Y
    std::int32_t tiltMeasured = 0;
    std::int32_t tiltCorrection = 1;             // the scan follows the plane
    std::int32_t focusSpeed = defaultFocusSpeed; // um/s, of Z on the coarse search's way down
    std::int32_t focusBusy = 0;                  // 1 while a search runs, unless one within it has ended
};

} // namespace tessaro
