#pragma once

#include "simulated_field/random_shapes.h"
#include "simulated_field/simulated_field.h"

#include <cstdint>

namespace tessaro {

// No flake is looked for nearer to the frame's edge than this.
inline constexpr int detectionMarginXPixels = 100;
inline constexpr int detectionMarginYPixels = 10;

/// Single layers of these sizes are above the usual minimum area, and none covers half of a background block
/// (77 x 64 pixels): larger ones may become their own background and not be found, wholly or in part.
inline constexpr AreaRangeUm2 findableSingleLayerArea = {150.0, 380.0};

/// What lies in a random field besides the flakes that were asked for, and how large those are.
struct RandomFieldOptions {
    AreaRangeUm2 singleLayerArea = {40.0, 600.0};
    AreaRangeUm2 otherArea = {60.0, 1500.0};
    int residues = 3;
    int scratches = 2;
    int dustSpecks = 14;
};

/// A field with flakes of one layer (first in the list) and of two layers to bulk, and things that are no
/// flakes. Flakes are irregular polygons of 5 to 9 corners, small ones more often than large ones; nothing
/// touches a flake or comes near it, and flakes, residues and dust keep off the margins. What finds no room
/// is left out: count the flakes of the result where it matters (100 single layers of the usual sizes fit).
SimulatedField RandomField(std::uint64_t seed, int singleLayers, int otherFlakes,
                           const RandomFieldOptions& options = {});

} // namespace tessaro
