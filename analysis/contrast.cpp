#include "analysis/contrast.h"

#include "analysis/pixel_access.h"

#include <algorithm>
#include <cmath>

namespace tessaro {
namespace {

using ChannelContrasts = std::array<float, channelCount>; // percent, [red, green, blue]

constexpr float differentAbove = 10.0F; // percent
constexpr float differentBelow = 100.0F;

bool MatchesTarget(const ChannelContrasts& contrasts, const Settings& settings) {
    for (std::size_t channel = 0; channel < channelCount; ++channel) {
        if (!WithinTolerance(contrasts[channel], settings.targetContrast[channel],
                             settings.contrastTolerance))
            return false;
    }
    return true;
}

ContrastClass Classify(const ChannelContrasts& contrasts, const Settings& settings) {
    if (MatchesTarget(contrasts, settings))
        return ContrastClass::Match;
    for (const float contrast : contrasts) {
        if (differentAbove < std::fabs(contrast) && std::fabs(contrast) < differentBelow)
            return ContrastClass::Different;
    }
    return ContrastClass::Background;
}

ContrastClass MatchOrBackground(const ChannelContrasts& contrasts, const Settings& settings) {
    return MatchesTarget(contrasts, settings) ? ContrastClass::Match : ContrastClass::Background;
}

/// The red background cell; a column beyond the grid is its outermost one, a row beyond it is left to the
/// grid.
float RedCell(const BackgroundGrid& background, int gx, int gy) {
    return background.Measured(red, std::clamp(gx, 0, gridSize - 1), gy);
}

/// The straight line through the centres of two neighbouring blocks, from half a block past the first centre.
float TowardsNext(float here, float next, int offset, int blockSize) {
    return (next - here) * static_cast<float>(offset) / static_cast<float>(blockSize) - next / 2 +
           3 * here / 2;
}

/// The same line up to half a block before the second centre.
float FromPrevious(float previous, float here, int offset, int blockSize) {
    return (here - previous) * static_cast<float>(offset) / static_cast<float>(blockSize) +
           (here + previous) / 2;
}

} // namespace

float InterpolateAlongX(const BackgroundGrid& background, int gx, int gy, int offset) {
    const float here = RedCell(background, gx, gy);
    return offset >= gridBlockWidth / 2
               ? TowardsNext(here, RedCell(background, gx + 1, gy), offset, gridBlockWidth)
               : FromPrevious(RedCell(background, gx - 1, gy), here, offset, gridBlockWidth);
}

float InterpolateAlongY(const BackgroundGrid& background, int gx, int gy, int offset) {
    const float here = RedCell(background, gx, gy);
    return offset >= gridBlockHeight / 2
               ? TowardsNext(here, RedCell(background, gx, gy + 1), offset, gridBlockHeight)
               : FromPrevious(RedCell(background, gx, gy - 1), here, offset, gridBlockHeight);
}

float InterpolateBackground(const BackgroundGrid& background, int /*channel*/, int x4, int y4) {
    const int x = reduction * x4;
    const int y = reduction * y4;
    const int gx = x / gridBlockWidth;
    const int gy = y / gridBlockHeight;
    const float alongX = InterpolateAlongX(background, gx, gy, x % gridBlockWidth);
    const float alongY = InterpolateAlongY(background, gx, gy, y % gridBlockHeight);
    return (alongX + alongY) / 2;
}

ContrastClass ClassifyReducedPixel(const FieldAnalysis& field, int x4, int y4) {
    ChannelContrasts contrasts{};
    for (int channel = 0; channel < channelCount; ++channel) {
        const float background =
            std::trunc(InterpolateBackground(field.measured.background, channel + 1, x4, y4));
        contrasts[static_cast<std::size_t>(channel)] =
            Contrast(field.measured.reduced.Get(channel, x4, y4), background);
    }
    return Classify(contrasts, field.settings);
}

ContrastClass ClassifyReducedPixelByBlock(const FieldAnalysis& field, int x4, int y4) {
    ChannelContrasts contrast_sub{};
    const int gx = reduction * x4 / gridBlockWidth;
    const int gy = reduction * y4 / gridBlockHeight;
    for (int channel = 0; channel < channelCount; ++channel) {
        contrast_sub[static_cast<std::size_t>(channel)] = Contrast(
            field.measured.reduced.Get(channel, x4, y4), field.measured.background.Measured(channel, gx, gy));
    }
    return Classify(contrast_sub, field.settings);
}

ContrastClass ClassifyPixel(const FieldAnalysis& field, int x, int y) {
    ChannelContrasts contrasts{};
    for (int channel = 0; channel < channelCount; ++channel) {
        const float background = std::trunc(
            InterpolateBackground(field.measured.background, channel + 1, x / reduction, y / reduction));
        contrasts[static_cast<std::size_t>(channel)] =
            Contrast(static_cast<float>(GetChannel(field.frame, channel, x, y)), background);
    }
    return MatchOrBackground(contrasts, field.settings);
}

ContrastClass ClassifyPixelByBlock(const FieldAnalysis& field, int x, int y) {
    ChannelContrasts contrasts{};
    const int gx = gridSize * x / frameWidth;
    const int gy = gridSize * y / frameHeight;
    for (int channel = 0; channel < channelCount; ++channel) {
        contrasts[static_cast<std::size_t>(channel)] =
            Contrast(static_cast<float>(GetChannel(field.frame, channel, x, y)),
                     field.measured.background.Measured(channel, gx, gy));
    }
    return MatchOrBackground(contrasts, field.settings);
}

} // namespace tessaro
