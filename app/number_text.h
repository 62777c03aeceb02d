#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <string>

namespace tessaro {

/// A status text by a printf format. The program keeps the C library's decimal point, whatever the locale.
template<typename... Values>
std::string Formatted(const char* format, Values... values) {
    const int length = std::snprintf(nullptr, 0, format, values...);
    if (length <= 0)
        return {};
    std::string text(static_cast<std::size_t>(length), '\0');
    std::snprintf(text.data(), text.size() + 1, format, values...);
    return text;
}

/// Toward zero; what does not fit becomes the nearest number that does, and what is no number becomes 0.
inline std::int32_t TruncatedToInt32(double value) {
    if (std::isnan(value))
        return 0;
    if (value <= static_cast<double>(std::numeric_limits<std::int32_t>::min()))
        return std::numeric_limits<std::int32_t>::min();
    if (value >= static_cast<double>(std::numeric_limits<std::int32_t>::max()))
        return std::numeric_limits<std::int32_t>::max();
    return static_cast<std::int32_t>(value);
}

} // namespace tessaro
