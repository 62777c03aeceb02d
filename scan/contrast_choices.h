#pragma once

#include <cstdint>

namespace tessaro {

/// What the contrast dialog remembers while the program runs; no file keeps it.
struct ContrastChoices {
    std::int32_t substrate = 0; // place in the list of substrates
    std::int32_t smoothing = 0; // of the background map, 0 or 1: nothing reads it, which is meant
};

} // namespace tessaro
