#pragma once

#include "platform/camera_device.h"

#include <algorithm>
#include <cstdint>

namespace tessaro {

/// How long the tests wait for an image: far longer than any takes.
inline constexpr std::uint32_t timeoutMs = 10'000;

/// Whether it is a whole image of one level, as the served camera sends them.
inline bool IsAll(const GrabResult& result, int level) {
    return result.GrabSucceeded() &&
           std::ranges::all_of(result.GetBuffer(), [&](std::uint8_t sample) { return sample == level; });
}

} // namespace tessaro
