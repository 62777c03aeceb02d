#pragma once

#include <array>
#include <charconv>
#include <initializer_list>
#include <string>
#include <string_view>
#include <system_error>

namespace tessaro {

/// A number with so many decimals and a point, whatever the locale.
inline std::string NumberText(double number, int decimals) {
    std::array<char, 400> text; // the largest double has 309 digits before the point
    const auto [end, error] =
        std::to_chars(text.data(), text.data() + text.size(), number, std::chars_format::fixed, decimals);
    return error == std::errc() ? std::string(text.data(), end) : std::string("0");
}

inline std::string Joined(std::initializer_list<std::string_view> pieces) {
    std::string text;
    for (const std::string_view piece : pieces)
        text.append(piece);
    return text;
}

} // namespace tessaro
