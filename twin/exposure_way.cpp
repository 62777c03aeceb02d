#include "twin/exposure_way.h"

#include "simulated_field/simulated_field.h"

#include <algorithm>
#include <cmath>

namespace tessaro {
namespace {

constexpr int measuredStretches = 4; // the stage may turn meanwhile
constexpr double shortestStretchPixels = 10.5;
constexpr int mostPlaces = 4;

struct WayLength {
    double acrossUm = 0.0; // in X and Y
    double alongZUm = 0.0;
};

WayLength LengthOf(double begin, double seconds,
                   const std::function<StagePosition(double time)>& positionAt) {
    WayLength length;
    StagePosition last = positionAt(begin);
    for (int i = 1; i <= measuredStretches; ++i) {
        const StagePosition next = positionAt(begin + seconds * i / measuredStretches);
        length.acrossUm += std::hypot(next.x - last.x, next.y - last.y);
        length.alongZUm += std::abs(next.z - last.z);
        last = next;
    }
    return length;
}

} // namespace

ExposureWay WayDuring(double beginSeconds, double seconds,
                      const std::function<StagePosition(double time)>& positionAt) {
    const WayLength length = LengthOf(beginSeconds, seconds, positionAt);
    const double pixels = length.acrossUm * framePixelsPerUm;
    const int count = static_cast<int>(std::clamp(pixels / shortestStretchPixels, 1.0, double{mostPlaces}));
    ExposureWay way;
    for (int i = 0; i < count; ++i)
        way.places.push_back(positionAt(beginSeconds + seconds * (i + 0.5) / count));
    if (pixels > 1.0)
        way.stretchUm = length.acrossUm / count;
    way.stretchZUm = length.alongZUm / count;
    return way;
}

} // namespace tessaro
