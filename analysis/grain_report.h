#pragma once

#include "analysis/grain.h"

#include <array>
#include <vector>

namespace tessaro {

/// One grain that refinement left. Extremes in frame pixels, row 0 the bottom of the picture.
struct GrainReport {
    int grain = 0;
    int reducedPixels = 0; // before refinement
    int pixels = 0;        // after it
    int left = 0;
    int right = 0;
    int minRow = 0;
    int maxRow = 0;
    float score = 0.0F;
    SubScores subScores;
    bool single = false; // the score reaches the threshold
};

/// The grains that refinement left in the field decided last, in order.
std::vector<GrainReport> ReportGrains(const GrainTable& grains, const GrainFindings& findings);

/// Mean of the middles of a grain's pixels, which are full-resolution ones: [to the right, up] from the lower
/// left corner of the frame, in frame pixels. The grain is not empty.
std::array<double, 2> GrainCentre(const Grain& grain);

} // namespace tessaro
