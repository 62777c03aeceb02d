#pragma once

#include "analysis/background_grid.h"
#include "analysis/reduced_image.h"

namespace tessaro {

/// What the statistics pass measured on the last frame; every pass overwrites it, nothing else clears it.
/// About 1 MB, so it lives in static storage or on the heap.
struct FrameMeasurements {
    ReducedImage reduced;
    BackgroundGrid background;
    float noiseLevel = 0.0F; // mean step of red between neighbouring rows of the frame's middle fifth
};

} // namespace tessaro
