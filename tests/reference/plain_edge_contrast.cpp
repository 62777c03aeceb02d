#include "reference/plain_analysis.h"

#include <array>
#include <cmath>
#include <cstddef>

namespace tessaro::reference {
namespace {

constexpr int runLength = 3; // pixels averaged on either side of an edge pixel, which is in neither run

/// Mean intensity just inside an edge pixel minus that just outside.
int InsideMinusOutside(const FrameRecord& frame, int channel, int x, int y, int direction) {
    switch (direction) {
    case 0:
        return AverageAlongX(frame, channel, x + 1, y, runLength) -
               AverageAlongX(frame, channel, x - runLength, y, runLength);
    case 1:
        return AverageAlongX(frame, channel, x - runLength, y, runLength) -
               AverageAlongX(frame, channel, x + 1, y, runLength);
    case 2:
        return AverageAlongY(frame, channel, x, y + 1, runLength) -
               AverageAlongY(frame, channel, x, y - runLength, runLength);
    default:
        return AverageAlongY(frame, channel, x, y - runLength, runLength) -
               AverageAlongY(frame, channel, x, y + 1, runLength);
    }
}

float BlockBackground(const PlainAnalysis& analysis, int channel, int x, int y) {
    return analysis.measured.background.Measured(channel, (16 * x) / frameWidth, (16 * y) / frameHeight);
}

} // namespace

void EdgeContrast(const PlainAnalysis& analysis, int x, int y, int direction, float& sumA, float& sumB,
                  float& sumC) {
    std::array<float, 3> RGB_Diff = {};
    for (int c = 0; c < 3; ++c) {
        const auto slot = static_cast<std::size_t>(c);
        const float target = analysis.settings.targetContrast[slot];
        const int sign = target >= 0.0F ? 1 : -1;
        const int difference = InsideMinusOutside(analysis.frame, c, x, y, direction);
        RGB_Diff[slot] = static_cast<float>(difference * sign) / BlockBackground(analysis, c, x, y) * 100.0F;
        ClampEdgeContrast(RGB_Diff[slot], target);
    }
    sumA += RGB_Diff[0];
    sumB += RGB_Diff[1];
    sumC += RGB_Diff[2];
}

void ClampEdgeContrast(float& value, float target) {
    if (target > 0.0F) {
        if (value > target)
            value = target;
        else if (value < -target)
            value = -target;
    } else {
        if (value < target)
            value = target;
        else if (value > std::fabs(target))
            value = -target;
    }
    if (std::fabs(target) > 1.0F)
        value = value * 10.0F / std::fabs(target);
}

float BackgroundDeviation(const PlainAnalysis& analysis, int x, int y) {
    std::array<float, 3> deviation = {};
    for (int c = 0; c < 3; ++c) {
        const auto intensity = static_cast<float>(GetChannel(analysis.frame, c, x, y));
        const float background = BlockBackground(analysis, c, x, y);
        deviation[static_cast<std::size_t>(c)] = std::fabs(intensity - background) / background;
    }
    return ((deviation[0] + deviation[1]) + deviation[2]) / 3.0F;
}

} // namespace tessaro::reference
