#pragma once

#include <cstdio>
#include <string_view>

namespace tessaro {

/// One line for the person who called the program. Takes no memory of its own.
inline void Complain(std::string_view text, std::FILE* errors = stderr) {
    std::fprintf(errors, "tessaro-analyze: %.*s\n", static_cast<int>(text.size()), text.data());
}

} // namespace tessaro
