#include "simulated_field/pattern_fields.h"

#include "simulated_field/reproducible_random.h"

#include <algorithm>

namespace tessaro {

namespace {

constexpr int blocksAcross = frameWidth / patternBlockPixels;
constexpr int blocksUp = frameHeight / patternBlockPixels;

using Intensity = std::array<std::uint8_t, 3>; // [red, green, blue]

void FillSquare(FrameBuffer& frame, int left, int low, int sidePixels, const Intensity& intensity) {
    for (int y = low; y < low + sidePixels; ++y)
        for (int x = left; x < left + sidePixels; ++x)
            frame.SetPixel(x, y, intensity[0], intensity[1], intensity[2]);
}

/// The dark pixels of a dappled block: its two lower rows but one pixel.
bool IsDarkDapple(int x, int y) {
    return y % patternBlockPixels < 2 && (x % patternBlockPixels != 3 || y % 2 == 0);
}

void DappleSquare(FrameBuffer& frame, int left, int low, int sidePixels) {
    for (int y = low; y < low + sidePixels; ++y) {
        for (int x = left; x < left + sidePixels; ++x)
            if (IsDarkDapple(x, y))
                frame.SetPixel(x, y, dappleMatch[0], dappleMatch[1], dappleMatch[2]);
    }
}

/// The lowest or leftmost pixel, on a block's edge, that centres a square of this many blocks about another.
int LowEdge(int centreBlocks, int sideBlocks) {
    return (centreBlocks - sideBlocks / 2) * patternBlockPixels;
}

} // namespace

FrameBuffer EvenField() {
    FrameBuffer frame;
    for (int y = 0; y < frameHeight; ++y)
        for (int x = 0; x < frameWidth; ++x)
            frame.SetPixel(x, y, patternSubstrate[0], patternSubstrate[1], patternSubstrate[2]);
    return frame;
}

FrameBuffer SpeckleField(std::uint64_t seed, double probability) {
    FrameBuffer frame = EvenField();
    ReproducibleRandom random(seed);
    for (int blockY = 0; blockY < blocksUp; ++blockY) {
        for (int blockX = 0; blockX < blocksAcross; ++blockX) {
            if (random.Chance(probability))
                FillSquare(frame, blockX * patternBlockPixels, blockY * patternBlockPixels,
                           patternBlockPixels, patternMatch);
        }
    }
    return frame;
}

FrameBuffer GridOfSquares(int count, int sidePixels, int gapPixels) {
    FrameBuffer frame = EvenField();
    const int pitch = sidePixels + gapPixels;
    const int columns = (frameWidth - 2 * patternMarginXPixels + gapPixels) / pitch;
    const int drawn = std::min(count, GridOfSquaresCapacity(sidePixels, gapPixels));
    for (int square = 0; square < drawn; ++square) {
        FillSquare(frame, patternMarginXPixels + square % columns * pitch,
                   patternMarginYPixels + square / columns * pitch, sidePixels, patternMatch);
    }
    return frame;
}

FrameBuffer HugeBlobs(int sideBlocks) {
    FrameBuffer frame = EvenField();
    constexpr int marginBlocks = patternMarginXPixels / patternBlockPixels;
    constexpr int quarterWidthBlocks = (blocksAcross - 2 * marginBlocks) / 4;
    const int side = std::clamp(sideBlocks, 1, maximumBlobSideBlocks);
    const int low = LowEdge(blocksUp / 2, side);
    for (const int quarter : {1, 3}) {
        const int left = LowEdge(marginBlocks + quarter * quarterWidthBlocks, side);
        DappleSquare(frame, left, low, side * patternBlockPixels);
    }
    return frame;
}

} // namespace tessaro
