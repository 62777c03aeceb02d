#pragma once

#include "app/number_text.h"

#include <cstdint>

namespace tessaro {

/// Micrometres to motor steps, and um/s to steps/s: toward zero, 1 um = 1.6 steps. A target that is short of
/// a whole step by the last bit alone may be rounded up to it, as by no other expression. What no controller
/// can be told is the nearest that it can.
inline std::int32_t StepsOf(double um) {
    return TruncatedToInt32(um * 0.2 * 8.0);
}

/// Motor steps to micrometres: 1 step = 0.625 um.
inline double MicrometresOf(std::int32_t steps) {
    return static_cast<double>(steps) * 5.0 / 8.0;
}

} // namespace tessaro
