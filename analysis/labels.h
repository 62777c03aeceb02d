#pragma once

#include "analysis/grain.h"
#include "platform/drawing_surface.h"

namespace tessaro {

/// The four lines of sub-scores, ending at the grain's left edge, downwards from its visual top.
void DrawScoreLabels(DrawingSurface& surface, const GrainEdges& edges, int grain, const SubScores& scores);

/// "Score:.." centred above the grain.
void DrawScore(DrawingSurface& surface, const GrainEdges& edges, int grain, float score);

/// The red frame of a single layer.
void DrawSingleLayerFrame(DrawingSurface& surface, const GrainEdges& edges, int grain);

} // namespace tessaro
