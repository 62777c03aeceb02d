#pragma once

#include "support/virtual_microscope.h"

#include <cstdint>
#include <string>
#include <vector>

namespace tessaro {

/// A wafer and a place on it where at least one flake of 150 um^2 or more lies wholly in the field. The same
/// seed gives the same of both.
struct FlakeField {
    explicit FlakeField(std::uint64_t seed);

    MicroscopeSetUp SetUp() const; // at its focus

    Wafer wafer;
    StagePosition place; // in focus
};

/// What the operator does to focus.
enum class FocusManner {
    Coarse,          // 2000 um, focusSpeed
    Fine,            // the climb
    CoarseFine,      // both
    CoarsePanelFine, // between them the panel's "fine": 1000 um, half of focusSpeed
    CoarseFineTwice  // both, and the climb once more
};

struct FocusConditions {
    FocusManner manner = FocusManner::Coarse;
    double mostDefocusUm = 0.0; // drawn evenly to both sides
    std::int32_t speed = 0;     // um/s
    float xTilt = 0.0F;         // above 0 the climb begins upwards
    GrabTiming timing;
    double level = 140.0; // of bare substrate
    double gainDb = 0.0;  // with so much less exposure time: as bright, and noisier
    ProgressAxes progress = usualProgressAxes;
};

struct FocusTrial {
    double defocusUm = 0.0; // at first
    double errorUm = 0.0;   // when all has come to rest
    double seconds = 0.0;   // of virtual time
    int result = 1;         // of the fine search
    std::string curve;
    std::vector<double> exposedAtZ; // um, of each frame
};

FocusTrial TryToFocus(const FlakeField& field, std::uint64_t seed, const FocusConditions& conditions);

struct FocusTally {
    explicit FocusTally(const std::vector<FocusTrial>& all);

    int trials = 0;
    int within3 = 0; // um
    int within10 = 0;
    int within30 = 0;
    double medianUm = 0.0;
    double ninetiethUm = 0.0;
    double medianSeconds = 0.0;
    double longestSeconds = 0.0;
};

} // namespace tessaro
