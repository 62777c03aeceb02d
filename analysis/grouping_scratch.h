#pragma once

#include "analysis/grain.h"
#include "imaging/frame_buffer.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

namespace tessaro {

namespace grain_grid {

inline constexpr int border = 2;
inline constexpr std::ptrdiff_t columnStep = frameHeight + 2 * border;

constexpr std::ptrdiff_t Step(int dx, int dy) {
    return dx * columnStep + dy;
}

/// The positions within city-block distance 2 of a pixel, the pixel itself left out. The first half of them,
/// taken around every pixel, sees every pair of pixels once.
inline constexpr std::array<std::ptrdiff_t, 12> diamond = {
    Step(0, 1),  Step(0, 2),  Step(1, -1), Step(1, 0),  Step(1, 1),   Step(2, 0),
    Step(0, -1), Step(0, -2), Step(-1, 1), Step(-1, 0), Step(-1, -1), Step(-2, 0)};

} // namespace grain_grid

/// Which grain a pixel belongs to, by position, with a border of two empty pixels so that every neighbourhood
/// can be read. Between uses all positions are free; whoever claims positions frees them again.
class GrainMap {
public:
    static constexpr std::uint16_t none = 0xFFFF;

    GrainMap() { m_grains.fill(none); }

    static bool InFrame(int x, int y) { return x >= 0 && x < frameWidth && y >= 0 && y < frameHeight; }

    std::uint16_t Get(PixelPosition pixel) const { return *At(pixel); }
    void Set(PixelPosition pixel, std::uint16_t grain) { m_grains[Offset(pixel)] = grain; }
    void Free(PixelPosition pixel) { Set(pixel, none); }

    /// The lowest grain number within city-block distance 2 of the pixel, itself included, or none.
    std::uint16_t LowestAround(PixelPosition pixel) const {
        const std::uint16_t* here = At(pixel);
        std::uint16_t lowest = *here;
        for (const std::ptrdiff_t offset : grain_grid::diamond)
            lowest = std::min(lowest, here[offset]);
        return lowest;
    }

    /// Calls visit(grain) for the grain at each position within distance 2, the pixel itself left out.
    template<typename Visit>
    void VisitAround(PixelPosition pixel, Visit visit) const {
        VisitFirst<grain_grid::diamond.size()>(pixel, visit);
    }

    /// The half of those positions that, over all pixels, sees every pair of pixels once.
    template<typename Visit>
    void VisitHalfAround(PixelPosition pixel, Visit visit) const {
        VisitFirst<grain_grid::diamond.size() / 2>(pixel, visit);
    }

private:
    static std::size_t Offset(PixelPosition pixel) {
        return static_cast<std::size_t>(
            grain_grid::Step(pixel.x + grain_grid::border, pixel.y + grain_grid::border));
    }
    const std::uint16_t* At(PixelPosition pixel) const { return m_grains.data() + Offset(pixel); }

    template<std::size_t count, typename Visit>
    void VisitFirst(PixelPosition pixel, Visit visit) const {
        const std::uint16_t* here = At(pixel);
        for (std::size_t i = 0; i < count; ++i) {
            if (const std::uint16_t grain = here[grain_grid::diamond[i]]; grain != none)
                visit(grain);
        }
    }

    std::array<std::uint16_t, std::size_t{frameWidth + 2 * grain_grid::border} * grain_grid::columnStep>
        m_grains;
};

/// How many pairs of touching pixels two grains have, counted up to the two that matter.
class TouchCounts {
public:
    /// Forgets all pairs of the first `grainCount` grains.
    void Reset(int grainCount) {
        m_grainCount = static_cast<std::size_t>(grainCount);
        for (std::size_t grain = 0; grain < m_grainCount; ++grain)
            std::fill_n(m_counts[grain].begin(), m_grainCount, std::uint8_t{0});
    }

    bool Touching(std::size_t a, std::size_t b) const { return m_counts[a][b] >= enough; }

    void AddPair(std::size_t a, std::size_t b) {
        Add(m_counts[a][b], 1);
        Add(m_counts[b][a], 1);
    }

    /// All of b's pixels have become a's.
    void Absorb(std::size_t a, std::size_t b) {
        for (std::size_t other = 0; other < m_grainCount; ++other) {
            Add(m_counts[a][other], m_counts[b][other]);
            m_counts[other][a] = m_counts[a][other];
        }
    }

    /// Forgets the pairs of one grain.
    void Clear(std::size_t grain) {
        for (std::size_t other = 0; other < m_grainCount; ++other) {
            m_counts[grain][other] = 0;
            m_counts[other][grain] = 0;
        }
    }

private:
    static constexpr std::uint8_t enough = 2;

    static void Add(std::uint8_t& count, int pairs) {
        count = static_cast<std::uint8_t>(std::min<int>(enough, count + pairs));
    }

    std::size_t m_grainCount = 0;
    std::array<std::array<std::uint8_t, grainTableSize>, grainTableSize> m_counts = {};
};

struct GroupingScratch {
    GrainMap map;
    TouchCounts touches;
    /// Which grain took a grain's pixels over; itself at first.
    std::array<std::uint16_t, grainTableSize> owner = {};
};

} // namespace tessaro
