#pragma once

#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

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

/// Takes a number off the start of the text as scanf would: white space and a plus sign may stand before it,
/// anything behind it. False when there is none, or its type cannot hold it; then nothing is changed.
template<typename Number>
bool TakeNumber(std::string_view& text, Number& value) {
    const auto isSpace = [](char character) {
        return character == ' ' || (character >= '\t' && character <= '\r');
    };
    std::string_view rest = text;
    while (!rest.empty() && isSpace(rest.front()))
        rest.remove_prefix(1);
    if (rest.size() > 1 && rest[0] == '+' && rest[1] != '-')
        rest.remove_prefix(1); // std::from_chars takes no plus sign
    Number number{};
    const auto [end, error] = std::from_chars(rest.data(), rest.data() + rest.size(), number);
    if (error != std::errc())
        return false;
    value = number;
    text = rest.substr(static_cast<std::size_t>(end - rest.data()));
    return true;
}

/// A typed or received "%d".
inline std::optional<std::int32_t> ParsedInteger(std::string_view text) {
    std::int32_t value = 0;
    return TakeNumber(text, value) ? std::optional(value) : std::nullopt;
}

/// A typed "%f". What is not finite is no number here: nothing could clamp it.
inline std::optional<float> ParsedFloat(std::string_view text) {
    float value = 0.0F;
    return TakeNumber(text, value) && std::isfinite(value) ? std::optional(value) : std::nullopt;
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
