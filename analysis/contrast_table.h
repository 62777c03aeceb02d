#pragma once

#include "analysis/background_grid.h"
#include "analysis/pixel_access.h"
#include "analysis/reduced_image.h"
#include "app/settings.h"

#include <array>
#include <bitset>
#include <cstdint>

namespace tessaro {

/// The contrast test against the interpolated background, made quick for one field: the interpolation's terms
/// are worked out once for each column and row, and which intensities match on which background is kept in a
/// table. Its answers are those of ClassifyReducedPixel and ClassifyPixel.
class ContrastTable {
public:
    using ReducedRowTerms = std::array<float, reducedHeight>;

    /// Which channels an intensity matches in, [intensity 0..255], bit c for channel c.
    using Matches = std::array<std::uint8_t, 256>;

    /// Must be called before anything else, after every change of the settings or the background; costs next
    /// to nothing when neither has changed.
    void Prepare(const Settings& settings, const BackgroundGrid& background);

    /// The interpolation's term along x at reduced column x4 in the grid's block row gy, and its terms along
    /// y at every reduced row in the grid's block column gx. The background is the truncated half of their
    /// sum.
    float AlongX(int x4, int gy) const { return m_alongX[Index(x4)][Index(gy)]; }
    const ReducedRowTerms& AlongY(int gx) const { return m_alongY[Index(gx)]; }

    /// The matches on the background of reduced pixel (x4, y4), which must lie in the frame. The reference is
    /// good until the next call.
    const Matches& MatchesAt(int x4, int y4);

    /// Whether a pixel in the FrameBuffer layout matches in every channel.
    static bool Match(const Matches& matches, const std::uint8_t* pixel) {
        return (matches[pixel[ChannelByte(red)]] & 1U) != 0 &&
               (matches[pixel[ChannelByte(green)]] & 2U) != 0 &&
               (matches[pixel[ChannelByte(blue)]] & 4U) != 0;
    }

private:
    static constexpr int gridRowsAcross = gridSize + 1; // the frame's last rows lie in a 17th block row
    static constexpr int redCellCount = gridSize * (gridSize + 2);
    using RedCells = std::array<float, redCellCount>; // what the interpolation may read

    static constexpr std::size_t Index(int value) { return static_cast<std::size_t>(value); }
    static RedCells ReadRedCells(const BackgroundGrid& background);
    void Interpolate(const BackgroundGrid& background);
    void Fill(Matches& matches, float background) const;

    bool m_prepared = false;
    std::array<float, channelCount> m_targets = {};
    float m_tolerance = 0.0F;
    RedCells m_redCells = {};

    std::array<std::array<float, gridRowsAcross>, reducedWidth> m_alongX = {};
    std::array<ReducedRowTerms, gridSize> m_alongY = {};

    std::array<Matches, 256> m_matches = {}; // by background, filled on demand
    std::bitset<256> m_filled;
    Matches m_matchesElsewhere = {}; // on a background that is no intensity
};

} // namespace tessaro
