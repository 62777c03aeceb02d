#pragma once

#include "imaging/frame_buffer.h"

#include <algorithm>
#include <cstdint>

namespace tessaro {

// Channel numbers of the whole analysis.
inline constexpr int red = 0;
inline constexpr int green = 1;
inline constexpr int blue = 2;

/// Where the channel's byte lies within a pixel; any channel but red and green reads blue.
constexpr int ChannelByte(int channel) {
    return channel == red ? 2 : channel == green ? 1 : 0;
}

/// Below lo the value becomes lo, else above hi it becomes hi. Returns the resulting value.
constexpr int ClampInt(int& value, int lo, int hi) {
    if (value < lo)
        value = lo;
    else if (value > hi)
        value = hi;
    return value;
}

/// Intensity 0 to 255 at (x, y); coordinates outside the frame read the nearest pixel of its border.
inline std::uint8_t GetChannel(const FrameRecord& frame, int channel, int x, int y) {
    ClampInt(x, 0, frameWidth - 1);
    ClampInt(y, 0, frameHeight - 1);
    return frame.pixels[PixelOffset(x, y) + static_cast<std::size_t>(ChannelByte(channel))];
}

/// Mean of the n > 0 intensities at (x + i, y), truncated.
inline int AverageAlongX(const FrameRecord& frame, int channel, int x, int y, int n) {
    int sum = 0;
    for (int i = 0; i < n; ++i)
        sum += GetChannel(frame, channel, x + i, y);
    return sum / n;
}

/// Mean of the n > 0 intensities at (x, y + i), truncated.
inline int AverageAlongY(const FrameRecord& frame, int channel, int x, int y, int n) {
    int sum = 0;
    for (int i = 0; i < n; ++i)
        sum += GetChannel(frame, channel, x, y + i);
    return sum / n;
}

} // namespace tessaro
