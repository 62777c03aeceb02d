#pragma once

#include "twin/stage_position.h"

#include <functional>
#include <vector>

namespace tessaro {

/// Where the stage is while a frame is exposed: at some places, each of which stands for a stretch of the
/// way.
struct ExposureWay {
    std::vector<StagePosition> places; // at least one
    double stretchUm = 0.0;            // in X and Y; 0: the stage rests, or goes less than a frame pixel
    double stretchZUm = 0.0;

    friend bool operator==(const ExposureWay&, const ExposureWay&) = default;
};

/// The middle of the exposure; of a longer way, more places. So many only that each stretch is blurred enough
/// to be drawn with fewer samples.
ExposureWay WayDuring(double beginSeconds, double seconds,
                      const std::function<StagePosition(double time)>& positionAt);

} // namespace tessaro
