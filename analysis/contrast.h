#pragma once

#include "analysis/field_analysis.h"

#include <array>

namespace tessaro {

/// What a contrast test says of a pixel. Only Match is acted on.
enum class ContrastClass {
    Match = 1,      // each channel lies within the tolerance of its target
    Different = -1, // some channel differs from the background by more than 10 and less than 100 percent
    Background = 0,
};

/// Contrast of an intensity against the background, percent: (I - B) / B * 100. A background of 0 gives an
/// infinite or undefined contrast, which matches no target.
constexpr float Contrast(float intensity, float background) {
    return (intensity - background) / background * 100;
}

/// Both ends of target - tolerance .. target + tolerance included.
constexpr bool WithinTolerance(float contrast, float target, float tolerance) {
    return target - tolerance <= contrast && contrast <= target + tolerance;
}

/// Background intensity at a reduced pixel, interpolated between the centres of the grid's blocks. It is the
/// red background for every channel, whatever `channel` says: the target contrasts are tuned against it.
float InterpolateBackground(const BackgroundGrid& background, int channel, int x4, int y4);

/// Terms of the interpolation at grid block (gx, gy): along x at `offset` columns into the block, along y at
/// `offset` rows into it. Their mean is the background. gy may lie one beyond the grid at the frame's last
/// rows.
float InterpolateAlongX(const BackgroundGrid& background, int gx, int gy, int offset);
float InterpolateAlongY(const BackgroundGrid& background, int gx, int gy, int offset);

// The contrast tests. Reduced: one reduced pixel, (x4, y4) in range. Others: one pixel of the current frame,
// answering Match or Background only. ByBlock: against the background of the pixel's own grid block, each
// channel its own; otherwise against the interpolated background truncated to a whole intensity.
ContrastClass ClassifyReducedPixel(const FieldAnalysis& field, int x4, int y4);
ContrastClass ClassifyReducedPixelByBlock(const FieldAnalysis& field, int x4, int y4);
ContrastClass ClassifyPixel(const FieldAnalysis& field, int x, int y);
ContrastClass ClassifyPixelByBlock(const FieldAnalysis& field, int x, int y);

} // namespace tessaro
