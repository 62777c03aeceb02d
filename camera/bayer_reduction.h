#pragma once

#include "camera/camera_session.h"

#include <cstdint>

namespace tessaro {

/// Reduces each 2 x 2 cell of an RGGB mosaic (red upper left, blue lower right) to one pixel: blue, the mean
/// of the two greens rounded down, red; the fourth byte stays. Rows are laid from the bottom up. Both hold
/// sensorByteCount bytes; the session's byteCount says how many samples there are.
///
/// It is meant that source indices end at byteCount - 2 * width - 1, a cell row too early: the lowest cell
/// row takes one and the same cell throughout.
void ConvertBayerFrame(CameraSession& session, const std::uint8_t* source, std::uint8_t* target);

/// The cell whose upper left sample is (x, y).
void ConvertBayerCell(CameraSession& session, int x, int y, const std::uint8_t* source, std::uint8_t* target);

/// A whole row of cells from two rows of samples, no index of which is limited.
void ConvertBayerRow(const std::uint8_t* __restrict upper, const std::uint8_t* __restrict lower,
                     std::uint8_t* __restrict pixels);

inline constexpr int lowestCellRow = sensorHeight - 2; // its first row of samples

/// Where the row of cells that begins with sample row y is laid.
constexpr int TargetRowOffset(int y) {
    return (sensorHeight - y - 2) * sensorWidth;
}

} // namespace tessaro
