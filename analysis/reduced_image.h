#pragma once

#include "imaging/frame_buffer.h"

#include <array>
#include <cstddef>

namespace tessaro {

inline constexpr int reduction = 4; // frame pixels to one reduced pixel, each way
inline constexpr int reducedWidth = frameWidth / reduction;
inline constexpr int reducedHeight = frameHeight / reduction;
inline constexpr int reducedPixelCount = reducedWidth * reducedHeight;

/// Area on the wafer under the operator's microscope.
inline constexpr double reducedPixelUm2 = 2.56;
inline constexpr double framePixelUm2 = reducedPixelUm2 / (reduction * reduction);

/// Means of the 4 x 4 pixel blocks of the frame: [channel 0..2][column 0..307][row 0..256], channel 0 red,
/// 1 green, 2 blue. Indices must lie in range.
class ReducedImage {
public:
    float Get(int channel, int column, int row) const { return m_values[Index(channel, column, row)]; }
    void Set(int channel, int column, int row, float value) { m_values[Index(channel, column, row)] = value; }

    /// The reducedHeight values of one column, from row 0 up.
    const float* Column(int channel, int column) const { return &m_values[Index(channel, column, 0)]; }
    float* Column(int channel, int column) { return &m_values[Index(channel, column, 0)]; }

    /// One channel as a dense plane [column 0..307][row 0..256].
    const float* Plane(int channel) const { return &m_values[Index(channel, 0, 0)]; }

private:
    static constexpr std::size_t Index(int channel, int column, int row) {
        return static_cast<std::size_t>(channel * reducedPixelCount + column * reducedHeight + row);
    }

    std::array<float, std::size_t{channelCount}* reducedPixelCount> m_values = {};
};

} // namespace tessaro
