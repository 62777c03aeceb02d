#include "reference/plain_analysis.h"

#include <array>
#include <cmath>
#include <cstddef>

namespace tessaro::reference {
namespace {

using Contrasts = std::array<float, 3>; // percent, [red, green, blue]

float Contrast(float intensity, float background) {
    return (intensity - background) / background * 100.0F;
}

bool MatchesTarget(const Settings& settings, const Contrasts& contrasts) {
    for (std::size_t c = 0; c < contrasts.size(); ++c) {
        if (!(settings.targetContrast[c] - settings.contrastTolerance <= contrasts[c]))
            return false;
        if (!(contrasts[c] <= settings.targetContrast[c] + settings.contrastTolerance))
            return false;
    }
    return true;
}

bool DiffersFromBackground(const Contrasts& contrasts) {
    for (const float contrast : contrasts)
        if (10.0F < std::fabs(contrast) && std::fabs(contrast) < 100.0F)
            return true;
    return false;
}

int ThreeValuedCode(const Settings& settings, const Contrasts& contrasts) {
    if (MatchesTarget(settings, contrasts))
        return 1;
    if (DiffersFromBackground(contrasts))
        return -1;
    return 0;
}

int TwoValuedCode(const Settings& settings, const Contrasts& contrasts) {
    return MatchesTarget(settings, contrasts) ? 1 : 0;
}

/// The measured red cell. The column is held inside the grid, the row is not, on purpose: one step above or
/// below a column the neighbouring cell of the flat array answers.
float RedCell(const PlainAnalysis& analysis, int gx, int gy) {
    ClampInt(gx, 0, gridSize - 1);
    return analysis.measured.background.Measured(0, gx, gy);
}

/// On the straight line through the centres of the block `here` and the next one, `offset` pixels into
/// `here`.
float LineToNext(float here, float next, int offset, int blockSize) {
    return (next - here) * static_cast<float>(offset) / static_cast<float>(blockSize) - next / 2.0F +
           3.0F * here / 2.0F;
}

/// The same with the previous block.
float LineFromPrevious(float here, float previous, int offset, int blockSize) {
    return (here - previous) * static_cast<float>(offset) / static_cast<float>(blockSize) +
           (here + previous) / 2.0F;
}

} // namespace

// All channels are compared with the red background, on purpose: the target contrasts are tuned against it.
float InterpolateBackground(const PlainAnalysis& analysis, [[maybe_unused]] int channel, int x4, int y4) {
    const int x = reduction * x4;
    const int y = reduction * y4;
    const int gx = x / gridBlockWidth;
    const int rx = x % gridBlockWidth;
    const int gy = y / gridBlockHeight;
    const int ry = y % gridBlockHeight;
    const float here = RedCell(analysis, gx, gy);

    float alongX = 0.0F;
    if (rx >= gridBlockWidth / 2)
        alongX = LineToNext(here, RedCell(analysis, gx + 1, gy), rx, gridBlockWidth);
    else
        alongX = LineFromPrevious(here, RedCell(analysis, gx - 1, gy), rx, gridBlockWidth);

    float alongY = 0.0F;
    if (ry >= gridBlockHeight / 2)
        alongY = LineToNext(here, RedCell(analysis, gx, gy + 1), ry, gridBlockHeight);
    else
        alongY = LineFromPrevious(here, RedCell(analysis, gx, gy - 1), ry, gridBlockHeight);

    return (alongX + alongY) / 2.0F;
}

int ClassifyReducedPixel(const PlainAnalysis& analysis, int x4, int y4) {
    Contrasts contrasts = {};
    for (int c = 0; c < 3; ++c) {
        const float background = std::trunc(InterpolateBackground(analysis, c + 1, x4, y4));
        contrasts[static_cast<std::size_t>(c)] =
            Contrast(analysis.measured.reduced.Get(c, x4, y4), background);
    }
    return ThreeValuedCode(analysis.settings, contrasts);
}

int ClassifyReducedPixelByBlock(const PlainAnalysis& analysis, int x4, int y4) {
    const int gx = (4 * x4) / (frameWidth / 16);
    const int gy = (4 * y4) / (frameHeight / 16);
    Contrasts contrast_sub = {};
    for (int c = 0; c < 3; ++c) {
        const float background = analysis.measured.background.Measured(c, gx, gy);
        contrast_sub[static_cast<std::size_t>(c)] =
            Contrast(analysis.measured.reduced.Get(c, x4, y4), background);
    }
    return ThreeValuedCode(analysis.settings, contrast_sub);
}

int ClassifyPixel(const PlainAnalysis& analysis, int x, int y) {
    Contrasts contrasts = {};
    for (int c = 0; c < 3; ++c) {
        const auto intensity = static_cast<float>(GetChannel(analysis.frame, c, x, y));
        const float background = std::trunc(InterpolateBackground(analysis, c + 1, x / 4, y / 4));
        contrasts[static_cast<std::size_t>(c)] = Contrast(intensity, background);
    }
    return TwoValuedCode(analysis.settings, contrasts);
}

int ClassifyPixelByBlock(const PlainAnalysis& analysis, int x, int y) {
    const int gx = (16 * x) / frameWidth;
    const int gy = (16 * y) / frameHeight;
    Contrasts contrasts = {};
    for (int c = 0; c < 3; ++c) {
        const auto intensity = static_cast<float>(GetChannel(analysis.frame, c, x, y));
        const float background = analysis.measured.background.Measured(c, gx, gy);
        contrasts[static_cast<std::size_t>(c)] = Contrast(intensity, background);
    }
    return TwoValuedCode(analysis.settings, contrasts);
}

int ClassifySelected(const PlainAnalysis& analysis, int x, int y) {
    if (analysis.analyzer.useInterpolatedBackground != 0)
        return ClassifyPixel(analysis, x, y);
    return ClassifyPixelByBlock(analysis, x, y);
}

} // namespace tessaro::reference
