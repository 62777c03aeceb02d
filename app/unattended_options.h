#pragma once

#include <cstdint>
#include <optional>

namespace tessaro {

/// What a scan without an operator is asked to do otherwise than by the settings.
struct UnattendedScan {
    std::optional<std::int32_t> xRange; // mm; not given: that of the settings
    std::optional<std::int32_t> yRange;
    std::int32_t originX = 0; // um, the first field
    std::int32_t originY = 0;
    bool noTilt = false; // no focusing before, and Z stays as it is
};

} // namespace tessaro
