#include "analysis/grain_edges.h"

#include "analysis/reduced_image.h"

#include <cstddef>

namespace tessaro {
namespace {

constexpr int lowMargin = 1;
constexpr int highMargin = 2;

PixelPosition Scaled(int x, int y, int scale) {
    return {static_cast<std::int16_t>(x * scale), static_cast<std::int16_t>(y * scale)};
}

} // namespace

GrainExtent GrainExtremes(const Grain& grain, int scale) {
    PixelPosition left = grain.pixels[0];
    PixelPosition right = left;
    PixelPosition minRow = left;
    PixelPosition maxRow = left;
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
    return {Scaled(left.x - lowMargin, left.y, scale), Scaled(right.x + highMargin, right.y, scale),
            Scaled(minRow.x, minRow.y - lowMargin, scale), Scaled(maxRow.x, maxRow.y + highMargin, scale)};
}

void StoreExtent(GrainEdges& edges, int grain, const GrainExtent& extent) {
    const auto g = static_cast<std::size_t>(grain);
    edges.EdgeLeft[g] = extent.left;
    edges.EdgeRight[g] = extent.right;
    edges.EdgeMinRow[g] = extent.minRow;
    edges.EdgeMaxRow[g] = extent.maxRow;
}

void ComputeGrainEdges(const GrainTable& grains, int groupCount, GrainEdges& edges) {
    for (int grain = 0; grain < groupCount; ++grain) {
        const Grain& pixels = grains.grains[static_cast<std::size_t>(grain)];
        if (pixels.count != 0)
            StoreExtent(edges, grain, GrainExtremes(pixels, reduction));
    }
}

} // namespace tessaro
