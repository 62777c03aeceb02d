#pragma once

#include "app/number_text.h"

#include <cstdint>

namespace tessaro {

/// Micrometres to motor steps, and um/s to steps/s: 1 um = 1.6 steps, toward zero. It is meant to be these
/// two multiplications in this order, whose rounding decides just below a whole step: 1.8749999999999998 um
/// are 3 steps, and would be 2 if it were divided by 0.625. What no controller can be told is the nearest
/// that it can.
inline std::int32_t StepsOf(double um) {
    return TruncatedToInt32(um * 0.2 * 8.0);
}

/// Motor steps to micrometres: 1 step = 0.625 um.
inline double MicrometresOf(std::int32_t steps) {
    return static_cast<double>(steps) * 5.0 / 8.0;
}

} // namespace tessaro
