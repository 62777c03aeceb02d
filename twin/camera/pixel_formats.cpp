#include "twin/camera/pixel_formats.h"

#include "twin/sensor_renderer.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace tessaro {
namespace {

struct Colour {
    int red = 0;
    int green = 0;
    int blue = 0;
};

std::uint8_t Sample(std::span<const std::uint8_t> mosaic, int x, int y) {
    return mosaic[static_cast<std::size_t>(y) * twinSensorWidth + static_cast<std::size_t>(x)];
}

Colour CellAround(std::span<const std::uint8_t> mosaic, int x, int y) {
    const int left = x & ~1;
    const int top = y & ~1;
    return {Sample(mosaic, left, top), (Sample(mosaic, left + 1, top) + Sample(mosaic, left, top + 1)) / 2,
            Sample(mosaic, left + 1, top + 1)};
}

std::size_t BytesPerPixel(PixelFormat format) {
    return format == PixelFormat::Rgb8 ? 3 : 1;
}

void WritePixel(std::span<const std::uint8_t> mosaic, int x, int y, PixelFormat format, std::uint8_t* pixel) {
    if (format == PixelFormat::BayerRg8) {
        *pixel = Sample(mosaic, x, y);
        return;
    }
    const Colour colour = CellAround(mosaic, x, y);
    if (format == PixelFormat::Mono8) {
        *pixel = static_cast<std::uint8_t>((colour.red + 2 * colour.green + colour.blue) / 4);
        return;
    }
    pixel[0] = static_cast<std::uint8_t>(colour.red);
    pixel[1] = static_cast<std::uint8_t>(colour.green);
    pixel[2] = static_cast<std::uint8_t>(colour.blue);
}

void CopyRow(std::span<const std::uint8_t> mosaic, int x, int y, PixelFormat format,
             std::span<std::uint8_t> row) {
    const std::size_t step = BytesPerPixel(format);
    const std::size_t pixels = std::min(row.size() / step, static_cast<std::size_t>(twinSensorWidth - x));
    if (format == PixelFormat::BayerRg8) {
        const auto from = mosaic.begin() + static_cast<std::ptrdiff_t>(y) * twinSensorWidth + x;
        std::copy_n(from, pixels, row.begin());
        return;
    }
    for (std::size_t i = 0; i < pixels; ++i)
        WritePixel(mosaic, x + static_cast<int>(i), y, format, row.data() + i * step);
}

} // namespace

std::size_t ImageBytes(const ImageRegion& region, PixelFormat format) {
    return static_cast<std::size_t>(region.width) * static_cast<std::size_t>(region.height) *
           BytesPerPixel(format);
}

void CopyRegion(std::span<const std::uint8_t> mosaic, const ImageRegion& region, PixelFormat format,
                std::span<std::uint8_t> image) {
    if (mosaic.size() < twinMosaicBytes || region.width <= 0)
        return;
    const int left = std::clamp(region.offsetX, 0, twinSensorWidth - 2) & ~1;
    const int top = std::clamp(region.offsetY, 0, twinSensorHeight - 2) & ~1;
    const std::size_t rowBytes = static_cast<std::size_t>(region.width) * BytesPerPixel(format);
    for (int row = 0; row < region.height && !image.empty(); ++row) {
        const std::span<std::uint8_t> target = image.first(std::min(rowBytes, image.size()));
        if (region.width > twinSensorWidth - left || top + row >= twinSensorHeight)
            std::fill(target.begin(), target.end(), std::uint8_t{0});
        if (top + row < twinSensorHeight)
            CopyRow(mosaic, left, top + row, format, target);
        image = image.subspan(target.size());
    }
}

} // namespace tessaro
