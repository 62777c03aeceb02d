#include "reference/plain_analysis.h"

#include <cstddef>

namespace tessaro::reference {
namespace {

PixelPosition Scaled(int x, int y, int scale) {
    return {static_cast<std::int16_t>(x * scale), static_cast<std::int16_t>(y * scale)};
}

} // namespace

// The margins of one pixel on the low side and two on the high side are meant.
void GrainExtremes(const Grain& grain, int scale, PixelPosition& left, PixelPosition& right,
                   PixelPosition& minRow, PixelPosition& maxRow) {
    left = grain.pixels[0];
    right = grain.pixels[0];
    minRow = grain.pixels[0];
    maxRow = grain.pixels[0];
    for (int i = 0; i < grain.count; ++i) {
        const PixelPosition pixel = grain.pixels[static_cast<std::size_t>(i)];
        if (pixel.x < left.x)
            left = pixel;
        if (pixel.x > right.x)
            right = pixel;
        if (pixel.y < minRow.y)
            minRow = pixel;
        if (pixel.y > maxRow.y)
            maxRow = pixel;
    }
    left = Scaled(left.x - 1, left.y, scale);
    right = Scaled(right.x + 2, right.y, scale);
    minRow = Scaled(minRow.x, minRow.y - 1, scale);
    maxRow = Scaled(maxRow.x, maxRow.y + 2, scale);
}

void ComputeGrainEdges(const GrainTable& grains, int groupCount, GrainEdges& edges) {
    for (int g = 0; g < groupCount; ++g) {
        const auto slot = static_cast<std::size_t>(g);
        if (grains.grains[slot].count == 0)
            continue;
        GrainExtremes(grains.grains[slot], reduction, edges.EdgeLeft[slot], edges.EdgeRight[slot],
                      edges.EdgeMinRow[slot], edges.EdgeMaxRow[slot]);
    }
}

GrainBox BoxOfGrain(const GrainEdges& edges, int g) {
    const auto slot = static_cast<std::size_t>(g);
    GrainBox box;
    box.x0 = edges.EdgeLeft[slot].x;
    box.y0 = edges.EdgeMinRow[slot].y;
    box.width = edges.EdgeRight[slot].x - box.x0;
    box.height = edges.EdgeMaxRow[slot].y - box.y0;
    return box;
}

} // namespace tessaro::reference
