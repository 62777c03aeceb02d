#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace tessaro {

enum class PixelFormat { BayerRg8, Mono8, Rgb8 };

/// A part of the sensor, in its pixels.
struct ImageRegion {
    int offsetX = 0;
    int offsetY = 0;
    int width = 0;
    int height = 0;
};

std::size_t ImageBytes(const ImageRegion& region, PixelFormat format);

/// Writes a region of a mosaic (twinSensorWidth x twinSensorHeight, RGGB) in a pixel format, row by row.
/// Offsets are taken to whole cells and into the sensor; what the region lacks there is black. Writes no more
/// than there is room for. In the formats without mosaic all pixels of a cell are alike.
void CopyRegion(std::span<const std::uint8_t> mosaic, const ImageRegion& region, PixelFormat format,
                std::span<std::uint8_t> image);

} // namespace tessaro
