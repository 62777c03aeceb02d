#pragma once

#include "compare/report_file.h"
#include "simulated_field/planar_geometry.h"

#include <string_view>
#include <variant>
#include <vector>

namespace tessaro {

/// A flake that truly is on the wafer, in um of the stage.
struct TrueFlake {
    int layers = 1;
    double areaUm2 = 0.0;
    Vertex centre;
    Outline outline;
};

/// The flakes that "tessaro-twin --truth" writes.
std::variant<std::vector<TrueFlake>, ReadingError> ReadWaferTruth(std::string_view text);

} // namespace tessaro
