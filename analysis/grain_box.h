#pragma once

#include "analysis/grain.h"

#include <cstddef>

namespace tessaro {

/// The box of full-resolution pixels between a grain's edges: columns from `left` to left + width - 1, rows
/// from `low` to low + height - 1.
struct GrainBox {
    int left = 0;
    int low = 0;
    int width = 0;
    int height = 0;
};

inline GrainBox BoxOf(const GrainEdges& edges, int grain) {
    const auto g = static_cast<std::size_t>(grain);
    const int left = edges.EdgeLeft[g].x;
    const int low = edges.EdgeMinRow[g].y;
    return {left, low, edges.EdgeRight[g].x - left, edges.EdgeMaxRow[g].y - low};
}

} // namespace tessaro
