#pragma once

#include "imaging/frame_buffer.h"

#include <array>
#include <cstdint>

// Frames of exact intensities, without noise, that take the analysis to its limits. Bare substrate is 100 in
// all channels; what matches does so against the default targets (-12, -8, -2 per cent, tolerance 6).

namespace tessaro {

inline constexpr std::array<std::uint8_t, 3> patternSubstrate = {100, 100, 100}; // [red, green, blue]
inline constexpr std::array<std::uint8_t, 3> patternMatch = {88, 92, 98};
inline constexpr std::array<std::uint8_t, 3> dappleMatch = {84, 92, 98};

inline constexpr int patternBlockPixels = 4; // side of the blocks that the analysis reduces the frame by

// Squares and blobs lie within these margins, whole blocks from every edge.
inline constexpr int patternMarginXPixels = 100;
inline constexpr int patternMarginYPixels = 12;

/// Bare substrate.
FrameBuffer EvenField();

/// Every 4 x 4 block of the whole frame, by itself, is patternMatch with this probability and bare otherwise.
/// Up to about 0.35 the substrate stays the most frequent intensity everywhere, so that the local background
/// is 100.
FrameBuffer SpeckleField(std::uint64_t seed, double probability);

inline constexpr int usualSquareSidePixels = 28; // 49 blocks, above the default minimum size of 39
inline constexpr int usualSquareGapPixels = 24;

/// How many squares GridOfSquares has room for: 380 of the usual ones.
constexpr int GridOfSquaresCapacity(int sidePixels, int gapPixels) {
    const int pitch = sidePixels + gapPixels;
    const int columns = (frameWidth - 2 * patternMarginXPixels + gapPixels) / pitch;
    const int rows = (frameHeight - 2 * patternMarginYPixels + gapPixels) / pitch;
    return columns * rows;
}

/// Squares of patternMatch in rows from (patternMarginXPixels, patternMarginYPixels) up, each row from the
/// left, as many as asked for or as there is room for. Sides and gaps of whole blocks give blocks of one
/// intensity; a gap much smaller than the side lets squares outweigh the substrate, and the local background
/// follows them.
FrameBuffer GridOfSquares(int count, int sidePixels = usualSquareSidePixels,
                          int gapPixels = usualSquareGapPixels);

inline constexpr int usualBlobSideBlocks = 99;    // 9,801 blocks each: grain and candidate list nearly full
inline constexpr int maximumBlobSideBlocks = 124; // four blocks stay between the two

/// Two squares side by side of sideBlocks x sideBlocks blocks, 1 to maximumBlobSideBlocks, that match
/// throughout. An evenly filled region of this size would become its own local background and vanish; these
/// are dappled: in every block 7 of 16 pixels are dappleMatch and 9 are bare, so that each block matches by
/// its mean, each dark pixel by itself, and the local background stays 100.
FrameBuffer HugeBlobs(int sideBlocks = usualBlobSideBlocks);

} // namespace tessaro
