#pragma once

#include <cstdint>

namespace tessaro {

/// The switch of the live view with what it was before.
struct LiveTimer {
    std::int32_t on = 1;       // 1 = the live view runs
    std::int32_t previous = 1; // `on` before the last change
    std::int32_t saved = 1;    // `on` when the live view was last suspended
};

} // namespace tessaro
