#include "focus/focus_measures.h"

#include <cmath>

namespace tessaro {
namespace {

constexpr float flatStep = 2.0F;            // differences up to this are noise
constexpr int fewestCells = 11;             // fewer say nothing
constexpr float nothingToMeasure = 0.0001F; // answered then
constexpr int nearDistance = 1;
constexpr int farDistance = 5;

template<typename Measure>
float MeanOfPlanes(const ReducedImage& reduced, Measure measure) {
    return (measure(reduced.Plane(0)) + measure(reduced.Plane(1)) + measure(reduced.Plane(2))) / 3.0F;
}

} // namespace

float PlaneDeviation(const float* plane) {
    double sum = 0.0;
    for (int i = 0; i < reducedPixelCount; ++i)
        sum += static_cast<double>(plane[i]);
    const double mean = sum / reducedPixelCount;
    double squares = 0.0;
    for (int i = 0; i < reducedPixelCount; ++i) {
        const double difference = static_cast<double>(plane[i]) - mean;
        squares += difference * difference;
    }
    return static_cast<float>(std::sqrt(squares / reducedPixelCount));
}

float PlaneLaplacian(const float* plane, int distance) {
    const int step = distance * reducedHeight;
    double sum = 0.0;
    int count = 0;
    for (int r = distance; r < reducedWidth - distance; ++r) {
        for (int c = distance; c < reducedHeight - distance; ++c) {
            const float* cell = plane + r * reducedHeight + c;
            const float v = cell[0];
            const float a = cell[-step];
            const float b = cell[step];
            if (!(std::fabs(v - a) > flatStep || std::fabs(v - b) > flatStep))
                continue;
            const float along = std::fabs(2.0F * v - a - b);
            const float across = std::fabs(2.0F * v - cell[-distance] - cell[distance]);
            sum += static_cast<double>(along) + static_cast<double>(across);
            ++count;
        }
    }
    if (count < fewestCells)
        return nothingToMeasure;
    return static_cast<float>(sum / count / 100.0);
}

float MeasureFocusScore(const ReducedImage& reduced) {
    return MeanOfPlanes(reduced, [](const float* plane) { return PlaneLaplacian(plane, farDistance); });
}

FocusFigures MeasureFocus(const ReducedImage& reduced) {
    FocusFigures figures;
    figures.deviation = MeanOfPlanes(reduced, PlaneDeviation);
    figures.laplaceS =
        MeanOfPlanes(reduced, [](const float* plane) { return PlaneLaplacian(plane, nearDistance); });
    figures.laplaceM = MeasureFocusScore(reduced);
    figures.focusValue =
        figures.deviation > 0.1F ? figures.laplaceM * 300.0F / figures.deviation : figures.laplaceM * 10.0F;
    return figures;
}

float MeasureFocusScore(const ReducedImage& reduced) {
    return MeanOfPlanes(reduced, [](const float* plane) { return PlaneLaplacian(plane, farDistance); });
}

} // namespace tessaro
