#pragma once

#include "imaging/frame_buffer.h"

#include <cstdint>
#include <random>

namespace tessaro {

/// Frames for tests, drawn with seeded integers only, so that they are the same everywhere.
class FramePainter {
public:
    explicit FramePainter(std::uint32_t seed = 1) : m_random(seed) {}

    struct Rgb {
        int red = 0;
        int green = 0;
        int blue = 0;
    };

    void Fill(Rgb colour) { Rectangle(0, 0, frameWidth, frameHeight, colour); }

    void Rectangle(int left, int low, int width, int height, Rgb colour) {
        for (int y = low; y < low + height; ++y) {
            for (int x = left; x < left + width; ++x)
                Set(x, y, colour);
        }
    }

    void Disk(int centreX, int centreY, int radius, Rgb colour) {
        for (int y = -radius; y <= radius; ++y) {
            for (int x = -radius; x <= radius; ++x) {
                if (x * x + y * y <= radius * radius)
                    Set(centreX + x, centreY + y, colour);
            }
        }
    }

    /// Each channel of each pixel moves by -spread .. spread.
    void AddNoise(int spread) {
        for (int i = 0; i < framePixelCount * bytesPerPixel; ++i) {
            const int value = frame.Data()[i] + Below(2 * spread + 1) - spread;
            frame.Data()[i] = static_cast<std::uint8_t>(value < 0 ? 0 : value > 255 ? 255 : value);
        }
    }

    /// All bytes at random.
    void Scatter() {
        for (int i = 0; i < framePixelCount * bytesPerPixel; ++i)
            frame.Data()[i] = static_cast<std::uint8_t>(Below(256));
    }

    /// Every 4 x 4 block takes the colour with the given chance.
    void Speckle(int percent, Rgb colour) {
        for (int y = 0; y < frameHeight; y += 4) {
            for (int x = 0; x < frameWidth; x += 4) {
                if (Below(100) < percent)
                    Rectangle(x, y, 4, 4, colour);
            }
        }
    }

    int Below(int end) { return static_cast<int>(m_random() % static_cast<std::uint32_t>(end)); }

    void Set(int x, int y, Rgb colour) {
        if (x >= 0 && x < frameWidth && y >= 0 && y < frameHeight)
            frame.SetPixel(x, y, static_cast<std::uint8_t>(colour.red),
                           static_cast<std::uint8_t>(colour.green), static_cast<std::uint8_t>(colour.blue));
    }

    FrameBuffer frame;

private:
    std::mt19937 m_random; // its output is fixed by the language, unlike the distributions'
};

inline constexpr FramePainter::Rgb substrate100{100, 100, 100};
inline constexpr FramePainter::Rgb singleLayer100{88, 92, 98}; // contrasts -12, -8, -2 against substrate100

} // namespace tessaro
