#include "reference/plain_analysis.h"

#include <cstddef>

namespace tessaro::reference {

std::uint8_t GetChannel(const FrameRecord& frame, int channel, int x, int y) {
    if (x < 0)
        x = 0;
    if (y < 0)
        y = 0;
    if (x >= frameWidth)
        x = frameWidth - 1;
    if (y >= frameHeight)
        y = frameHeight - 1;

    int offset = (frameWidth * y + x) * bytesPerPixel;
    if (offset > framePixelCount * bytesPerPixel - bytesPerPixel)
        offset = framePixelCount * bytesPerPixel - bytesPerPixel;

    const std::uint8_t* pixel = frame.pixels + static_cast<std::ptrdiff_t>(offset);
    if (channel == 0)
        return pixel[2];
    if (channel == 1)
        return pixel[1];
    return pixel[0];
}

int ClampInt(int& value, int low, int high) {
    if (value < low)
        value = low;
    else if (value > high)
        value = high;
    return value;
}

int AverageAlongX(const FrameRecord& frame, int channel, int x, int y, int n) {
    int sum = 0;
    for (int i = 0; i < n; ++i)
        sum += GetChannel(frame, channel, x + i, y);
    return sum / n;
}

int AverageAlongY(const FrameRecord& frame, int channel, int x, int y, int n) {
    int sum = 0;
    for (int i = 0; i < n; ++i)
        sum += GetChannel(frame, channel, x, y + i);
    return sum / n;
}

} // namespace tessaro::reference
