#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace tessaro {

// The working frame: half the camera sensor each way. Every frame that reaches the analysis has this size.
inline constexpr int frameWidth = 1232;
inline constexpr int frameHeight = 1028;
inline constexpr double framePixelsPerUm = 2.464; // the field is 500 um wide
inline constexpr int framePixelCount = frameWidth * frameHeight;
inline constexpr int bytesPerPixel = 4;
inline constexpr int channelCount = 3; // red, green, blue, in this order wherever they are counted
inline constexpr int frameByteCount = framePixelCount * bytesPerPixel;

/// Byte of pixel (x, y) in a frame of the FrameBuffer layout; x and y must lie in the frame.
constexpr std::size_t PixelOffset(int x, int y) {
    return (static_cast<std::size_t>(y) * frameWidth + static_cast<std::size_t>(x)) * bytesPerPixel;
}

/// Where buffer row y is drawn: the frame is shown bottom-up, row 0 at the bottom of the picture.
constexpr int WindowRow(int bufferRow) {
    return frameHeight - bufferRow;
}

/// The row that holds the pixels of row r of the picture, counted from its top: WindowRow's partner for whole
/// rows.
constexpr int StoredRow(int pictureRow) {
    return frameHeight - 1 - pictureRow;
}

/// Pixels of one frame: rows of frameWidth pixels from the bottom up without padding, four bytes a pixel in
/// the order blue, green, red, unused. Starts black.
class FrameBuffer {
public:
    FrameBuffer() : m_bytes(frameByteCount) {}

    std::uint8_t* Data() { return m_bytes.data(); }
    const std::uint8_t* Data() const { return m_bytes.data(); }

    void SetPixel(int x, int y, std::uint8_t red, std::uint8_t green, std::uint8_t blue) {
        std::uint8_t* pixel = m_bytes.data() + PixelOffset(x, y);
        pixel[0] = blue;
        pixel[1] = green;
        pixel[2] = red;
    }

private:
    std::vector<std::uint8_t> m_bytes;
};

/// The current frame and the dominant (substrate) intensity of its channels, as the last statistics pass
/// found it.
struct FrameRecord {
    const std::uint8_t* pixels = nullptr;         // FrameBuffer layout, not owned
    std::array<double, channelCount> bgPeak = {}; // [red, green, blue], 0 to 255, whole numbers
    double bgPeakSum = 0.0;                       // red + green + blue
};

} // namespace tessaro
