#pragma once

#include <cstddef>
#include <string>

namespace tessaro {

/// The first bytes of UTF-8 text without the beginning of a character that is cut.
inline std::string WholeCharacters(std::string text, std::size_t maximumBytes) {
    if (text.size() <= maximumBytes)
        return text;
    std::size_t end = maximumBytes;
    const auto continues = [&](std::size_t i) {
        return (static_cast<unsigned char>(text[i]) & 0xC0U) == 0x80U;
    };
    while (end > 0 && continues(end))
        --end;
    text.resize(end);
    return text;
}

} // namespace tessaro
