#pragma once

#include "imaging/frame_buffer.h"
#include "simulated_field/simulated_field.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

namespace tessaro {

using Intensity = std::array<std::uint8_t, 3>; // [red, green, blue]

inline Intensity IntensityAt(const FrameBuffer& frame, int x, int y) {
    const std::uint8_t* pixel = frame.Data() + PixelOffset(x, y);
    return {pixel[2], pixel[1], pixel[0]};
}

inline bool SameBytes(const FrameBuffer& a, const FrameBuffer& b) {
    return std::memcmp(a.Data(), b.Data(), frameByteCount) == 0;
}

inline ChannelValues MeanBetween(const FrameBuffer& frame, int left, int right, int minRow, int maxRow) {
    ChannelValues mean = {};
    for (int y = minRow; y <= maxRow; ++y) {
        for (int x = left; x <= right; ++x)
            for (std::size_t c = 0; c < 3; ++c)
                mean[c] += IntensityAt(frame, x, y)[c];
    }
    for (double& channel : mean)
        channel /= (right - left + 1) * (maxRow - minRow + 1);
    return mean;
}

/// The most frequent red intensity of a 77 x 64 block, the lowest of equals: what the analysis takes for
/// background.
inline int MostFrequentRed(const FrameBuffer& frame, int gx, int gy) {
    std::array<int, 256> counts = {};
    for (int y = gy * 64; y < gy * 64 + 64; ++y)
        for (int x = gx * 77; x < gx * 77 + 77; ++x)
            ++counts[IntensityAt(frame, x, y)[0]];
    return static_cast<int>(std::ranges::max_element(counts) - counts.begin());
}

} // namespace tessaro
