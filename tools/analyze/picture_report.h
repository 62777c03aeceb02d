#pragma once

#include "analysis/grain.h"

#include <array>
#include <string>
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

/// What the analysis of one picture found.
struct PictureReport {
    std::string file;
    int pictureWidth = 0;
    int pictureHeight = 0;
    float noise = 0.0F;
    std::array<double, 3> bgPeak = {}; // [red, green, blue]
    int candidates = 0;                // before noise rejection
    int live = 0;                      // after it
    int groups = 0;                    // grains gathered, those of the wrong size included
    int kept = 0;                      // grains of the right size
    std::vector<GrainReport> grains;   // those that refinement left, in order
    int found = 0;                     // single layers
    bool overflow = false;             // more grains than the table holds: some were left out
};

} // namespace tessaro
