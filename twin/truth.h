#pragma once

#include "twin/wafer.h"

#include <string>

namespace tessaro {

/// All flakes of the wafer as one JSON object, "flakes", each on a line of its own with "layers" (bulk:
/// bulkWaferLayers), "area" in um^2, "centre" (of gravity) and "outline", in micrometres of the stage.
std::string WaferTruthJson(const Wafer& wafer);

} // namespace tessaro
