#pragma once

#include "simulated_field/simulated_field.h"

#include <cstdint>
#include <string>

namespace tessaro {

/// What a drawn field holds, as one JSON object: "seed", "substrate" [red, green, blue] and "flakes", each
/// on a line of its own with "layers", "area_um2", "outline" [[x, y], ...] and "box" (pixels, first and last
/// inclusive). Buffer coordinates: row 0 is the bottom of the picture.
std::string TruthJson(const SimulatedField& field, std::uint64_t seed);

} // namespace tessaro
