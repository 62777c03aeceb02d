#pragma once

#include "imaging/frame_buffer.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace tessaro {

inline constexpr int gridSize = 16; // background blocks along x and along y
inline constexpr int gridBlockWidth = frameWidth / gridSize;
inline constexpr int gridBlockHeight = frameHeight / gridSize;

/// Local background intensity: [set 0..1][channel 0..2][gx 0..15][gy 0..15]; set 0 is measured on the last
/// frame, set 1 is the fitted model. gx runs along x, gy along y.
class BackgroundGrid {
public:
    float Measured(int channel, int gx, int gy) const { return m_cells[Index(0, channel, gx, gy)]; }
    void SetMeasured(int channel, int gx, int gy, float value) { m_cells[Index(0, channel, gx, gy)] = value; }

    float Fitted(int channel, int gx, int gy) const { return m_cells[Index(1, channel, gx, gy)]; }
    void SetFitted(int channel, int gx, int gy, float value) { m_cells[Index(1, channel, gx, gy)] = value; }

private:
    static constexpr int setSize = channelCount * gridSize * gridSize;
    static constexpr int cellCount = 2 * setSize;

    /// An index one step beside a column falls on the neighbouring cell of the flat array: the interpolation
    /// at the frame's edge reads there and its results are tuned to it. Beside the array itself there is no
    /// neighbour; there the nearest cell answers, which is what an evenly lit background would show.
    static constexpr std::size_t Index(int set, int channel, int gx, int gy) {
        const int flat = set * setSize + channel * gridSize * gridSize + gx * gridSize + gy;
        return static_cast<std::size_t>(std::clamp(flat, 0, cellCount - 1));
    }

    std::array<float, cellCount> m_cells = {};
};

} // namespace tessaro
