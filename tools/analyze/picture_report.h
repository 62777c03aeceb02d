#pragma once

#include "analysis/grain_report.h"

#include <array>
#include <string>
#include <vector>

namespace tessaro {

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
