#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace tessaro {

/// A decoded picture: rows from the top down without padding, four bytes a pixel: blue, green, red, unused.
struct Picture {
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> pixels; // [height][width][4]

    Picture() = default;
    Picture(int pictureWidth, int pictureHeight)
        : width(pictureWidth), height(pictureHeight),
          pixels(static_cast<std::size_t>(pictureWidth) * static_cast<std::size_t>(pictureHeight) * 4) {}

    std::uint8_t* Pixel(int x, int y) { return pixels.data() + Offset(x, y); }
    const std::uint8_t* Pixel(int x, int y) const { return pixels.data() + Offset(x, y); }

private:
    std::size_t Offset(int x, int y) const {
        return (static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x)) *
               4;
    }
};

} // namespace tessaro
