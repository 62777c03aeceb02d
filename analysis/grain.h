#pragma once

#include <algorithm>
#include <array>
#include <cstdint>

namespace tessaro {

struct PixelPosition {
    std::int16_t x = 0;
    std::int16_t y = 0;

    friend bool operator==(const PixelPosition&, const PixelPosition&) = default;
};

inline constexpr int grainCapacity = 10'000; // pixels of one grain
inline constexpr int grainTableSize = 300;   // grains of one table, of which
inline constexpr int MAX_GRAIN = 297;        // can be filled

/// One connected region of candidate pixels. Reduced coordinates after grouping, full-resolution coordinates
/// after refinement. A grain with count 0 is empty.
struct Grain {
    std::array<PixelPosition, grainCapacity> pixels;
    std::int32_t count;
};
static_assert(sizeof(Grain) == 40'004);

/// 12 MB; value-initialise it ("std::make_unique<GrainTable>()") to start with empty grains.
struct GrainTable {
    std::array<Grain, grainTableSize> grains;
};
static_assert(sizeof(GrainTable) == 12'001'200);

/// Extreme points of every grain, by grain number, in frame pixels.
struct GrainEdges {
    std::array<PixelPosition, grainTableSize> EdgeLeft = {};   // smallest x
    std::array<PixelPosition, grainTableSize> EdgeMinRow = {}; // smallest y, the visual bottom
    std::array<PixelPosition, grainTableSize> EdgeRight = {};  // largest x
    std::array<PixelPosition, grainTableSize> EdgeMaxRow = {}; // largest y, the visual top
};

/// The parts of a grain's score; DfNx is shown on the screen and not part of the sum.
struct SubScores {
    float BG = 0.0F;   // clean background just outside the edges, 0 to 20
    float EgSp = 0.0F; // sharp edges of the expected sign, -30 to 30
    float HST = 0.0F;  // even colour, 10 minus the spread of the channels
    float Cont = 0.0F; // smooth interior, -20 to 20
    float Size = 0.0F; // 0 to 10
    float PR = 0.0F;   // interior that matches the target, -20 to 20
    float DfNx = 0.0F; // 10 minus the mean step between neighbouring interior pixels
};

/// What is known of the grains of the last field.
struct GrainFindings {
    std::int32_t groupCount = 0; // slots of the GrainTable that the last grouping used, emptied ones included
    GrainEdges edges;
    std::array<std::int32_t, grainTableSize> reducedPixels = {}; // of the grains decided last, unrefined
    std::array<std::int32_t, grainTableSize> singleLayer = {};   // 1 = the grain is a single layer
    std::array<SubScores, grainTableSize> subScores = {};        // of the grains scored last
    std::array<float, grainTableSize> scores = {};
    std::int32_t totalFound = 0; // only grows; a new scan resets it
};

/// Single layers of the field decided last.
inline std::int32_t CountSingleLayers(const GrainFindings& findings) {
    const auto first = findings.singleLayer.begin();
    return static_cast<std::int32_t>(std::count(first, first + findings.groupCount, 1));
}

} // namespace tessaro
