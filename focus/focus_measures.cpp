#include "focus/focus_measures.h"

#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>

// Every sum is taken value after value, in the order of the plane, because another order may round
// differently. An addition has to wait for the one before it; the sums of several planes do not wait for each
// other and are taken side by side.

namespace tessaro {
namespace {

constexpr float flatStep = 2.0F;            // differences up to this are noise
constexpr int fewestCells = 11;             // fewer say nothing
constexpr float nothingToMeasure = 0.0001F; // answered then
constexpr int nearDistance = 1;
constexpr int farDistance = 5;

template<std::size_t planeCount>
using Planes = std::array<const float*, planeCount>;

template<std::size_t planeCount>
using Figures = std::array<float, planeCount>;

template<std::size_t planeCount>
using Sums = std::array<double, planeCount>;

template<std::size_t planeCount>
Figures<planeCount> Deviations(const Planes<planeCount>& planes) {
    Sums<planeCount> means = {};
    for (int i = 0; i < reducedPixelCount; ++i)
        for (std::size_t p = 0; p < planeCount; ++p)
            means[p] += static_cast<double>(planes[p][i]);
    for (double& mean : means)
        mean /= reducedPixelCount;
    Sums<planeCount> squares = {};
    for (int i = 0; i < reducedPixelCount; ++i) {
        for (std::size_t p = 0; p < planeCount; ++p) {
            const double difference = static_cast<double>(planes[p][i]) - means[p];
            squares[p] += difference * difference;
        }
    }
    Figures<planeCount> deviations = {};
    for (std::size_t p = 0; p < planeCount; ++p)
        deviations[p] = static_cast<float>(std::sqrt(squares[p] / reducedPixelCount));
    return deviations;
}

using RowTerms = std::array<double, reducedHeight>;

/// The value, or 0 where the mask is 0 and not all ones.
float Masked(float value, std::uint32_t mask) {
    return std::bit_cast<float>(std::bit_cast<std::uint32_t>(value) & mask);
}

/// What the cells distance .. reducedHeight - distance - 1 of a row add: nothing, which changes no sum, where
/// they do not count. Without a branch, since sharp frames are full of cells of either kind. Returns how many
/// count.
int FindTerms(const float* row, int distance, RowTerms& terms) {
    const float* before = row - distance * reducedHeight;
    const float* behind = row + distance * reducedHeight;
    std::uint32_t count = 0;
    for (int c = distance; c < reducedHeight - distance; ++c) {
        const float v = row[c];
        const float a = before[c];
        const float b = behind[c];
        const auto counts = static_cast<std::uint32_t>(std::fabs(v - a) > flatStep) |
                            static_cast<std::uint32_t>(std::fabs(v - b) > flatStep);
        const float along = std::fabs(2.0F * v - a - b);
        const float across = std::fabs(2.0F * v - row[c - distance] - row[c + distance]);
        terms[static_cast<std::size_t>(c)] = static_cast<double>(Masked(along, 0U - counts)) +
                                             static_cast<double>(Masked(across, 0U - counts));
        count += counts;
    }
    return static_cast<int>(count);
}

float MeanTerm(double sum, int count) {
    return count < fewestCells ? nothingToMeasure : static_cast<float>(sum / count / 100.0);
}

template<std::size_t planeCount>
Figures<planeCount> Laplacians(const Planes<planeCount>& planes, int distance) {
    Sums<planeCount> sums = {};
    std::array<int, planeCount> counts = {};
    std::array<RowTerms, planeCount> terms;
    for (int r = distance; r < reducedWidth - distance; ++r) {
        int countOfRow = 0;
        for (std::size_t p = 0; p < planeCount; ++p) {
            const int count = FindTerms(planes[p] + r * reducedHeight, distance, terms[p]);
            counts[p] += count;
            countOfRow += count;
        }
        if (countOfRow == 0)
            continue;
        for (auto c = static_cast<std::size_t>(distance);
             c < static_cast<std::size_t>(reducedHeight - distance); ++c)
            for (std::size_t p = 0; p < planeCount; ++p)
                sums[p] += terms[p][c];
    }
    Figures<planeCount> laplacians = {};
    for (std::size_t p = 0; p < planeCount; ++p)
        laplacians[p] = MeanTerm(sums[p], counts[p]);
    return laplacians;
}

Planes<channelCount> PlanesOf(const ReducedImage& reduced) {
    return {reduced.Plane(0), reduced.Plane(1), reduced.Plane(2)};
}

float Mean(const Figures<channelCount>& figures) {
    return (figures[0] + figures[1] + figures[2]) / 3.0F;
}

} // namespace

float PlaneDeviation(const float* plane) {
    return Deviations<1>({plane}).front();
}

float PlaneLaplacian(const float* plane, int distance) {
    return Laplacians<1>({plane}, distance).front();
}

FocusFigures MeasureFocus(const ReducedImage& reduced) {
    const Planes<channelCount> planes = PlanesOf(reduced);
    FocusFigures figures;
    figures.deviation = Mean(Deviations(planes));
    figures.laplaceS = Mean(Laplacians(planes, nearDistance));
    figures.laplaceM = Mean(Laplacians(planes, farDistance));
    figures.focusValue =
        figures.deviation > 0.1F ? figures.laplaceM * 300.0F / figures.deviation : figures.laplaceM * 10.0F;
    return figures;
}

float MeasureFocusScore(const ReducedImage& reduced) {
    return Mean(Laplacians(PlanesOf(reduced), farDistance));
}

} // namespace tessaro
