#pragma once

#include <string>
#include <utility>

namespace tessaro {

/// The variable by which a program with an AddressSanitizer tells at its end what it has not freed, but for
/// what libraries leave behind; any other leak makes its exit status another one.
inline std::pair<std::string, std::string> LeaksToKnow() {
    return {"LSAN_OPTIONS", "suppressions=" TESSARO_LEAKS_OF_LIBRARIES ":print_suppressions=0"};
}

} // namespace tessaro
