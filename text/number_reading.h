#pragma once

#include <array>
#include <charconv>
#include <cstddef>
#include <string_view>
#include <system_error>

namespace tessaro {

/// The whole text as a number, whatever the locale, from minimum to maximum; otherwise false, and the number
/// stays as it is.
template<typename Number>
bool ReadNumber(std::string_view text, Number minimum, Number maximum, Number& number) {
    Number read = {};
    const char* const last = text.data() + text.size();
    const auto [end, error] = std::from_chars(text.data(), last, read);
    if (error != std::errc() || end != last || !(read >= minimum && read <= maximum))
        return false;
    number = read;
    return true;
}

/// As many numbers as there are places for, with commas between them.
template<typename Number, std::size_t Count>
bool ReadNumbers(std::string_view text, Number minimum, Number maximum, std::array<Number, Count>& numbers) {
    for (std::size_t place = 0; place < numbers.size(); ++place) {
        const std::size_t comma = text.find(',');
        const bool isLast = place + 1 == numbers.size();
        if (isLast != (comma == std::string_view::npos) ||
            !ReadNumber(text.substr(0, comma), minimum, maximum, numbers[place]))
            return false;
        text.remove_prefix(isLast ? text.size() : comma + 1);
    }
    return true;
}

} // namespace tessaro
