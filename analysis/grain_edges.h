#pragma once

#include "analysis/grain.h"

namespace tessaro {

struct GrainExtent {
    PixelPosition left;   // smallest x
    PixelPosition right;  // largest x
    PixelPosition minRow; // smallest y
    PixelPosition maxRow; // largest y
};

/// Extreme points of a grain that is not empty; of equals the pixel listed first. Widened by one pixel on the
/// low and two on the high side and multiplied by `scale`: 4 takes reduced coordinates to the frame's, 1
/// keeps the frame's.
GrainExtent GrainExtremes(const Grain& grain, int scale);

void StoreExtent(GrainEdges& edges, int grain, const GrainExtent& extent);

/// GrainExtremes at scale 4 of every grain that is not empty; the others keep their edges.
void ComputeGrainEdges(const GrainTable& grains, int groupCount, GrainEdges& edges);

} // namespace tessaro
