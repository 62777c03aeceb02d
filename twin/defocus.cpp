#include "twin/defocus.h"

#include "imaging/frame_buffer.h"
#include "simulated_field/simulated_field.h"

#include <algorithm>
#include <cmath>

namespace tessaro {
namespace {

// Where the light comes from all angles, the image of a point is near a Gaussian of this deviation.
constexpr double diffractionUm = 0.21 * wavelengthUm / numericalAperture;

// What differs by less within a tile, in the distance to the focus, looks alike.
constexpr double tileStepUm = 0.5;
constexpr double tileStepShare = 0.1; // of the distance, where that is more
constexpr int mostTilesPerSide = 16;

constexpr double reducedSigma = 1.5; // samples; from twice this on, half as many samples do
constexpr double kernelReach = 3.0;  // standard deviations
constexpr double enlargingVariance =
    0.25; // squared samples that averaging into samples and lines between them blur

/// A point beside the focus shows as a disc, the section of its cone of light. A Gaussian with half the
/// disc's radius has the same spread, and is blurred along rows and columns by themselves.
double ConeUm(double distanceUm) {
    static const double slope = std::tan(std::asin(numericalAperture));
    return std::abs(distanceUm) * slope / 2.0;
}

int TileCount(double rise, double step) {
    return static_cast<int>(std::clamp(std::ceil(rise / step), 1.0, double{mostTilesPerSide}));
}

/// Where a sample of the tile lies between two samples of the plane along one axis.
struct Between {
    std::size_t first = 0;
    float share = 0.0F; // of the second
};

Between PlaceOf(int tileSample, const BlurPlan& plan) {
    const double place = (tileSample + 0.5) / plan.reduction + plan.marginSamples - 0.5;
    const double whole = std::floor(place);
    return {static_cast<std::size_t>(whole), static_cast<float>(place - whole)};
}

void Scale(float weight, const float* source, std::size_t count, float* target) {
    for (std::size_t i = 0; i < count; ++i)
        target[i] = weight * source[i];
}

void AddBoth(float weight, const float* one, const float* other, std::size_t count, float* target) {
    for (std::size_t i = 0; i < count; ++i)
        target[i] += weight * (one[i] + other[i]);
}

} // namespace

double BlurPixels(double distanceUm) {
    return std::min(maximumBlurPixels, framePixelsPerUm * std::hypot(diffractionUm, ConeUm(distanceUm)));
}

std::vector<FrameTile> TilesOf(double distanceUm, Vertex tiltUmPerUm) {
    const double riseAcross = std::abs(tiltUmPerUm.x) * frameWidth / framePixelsPerUm;
    const double riseDown = std::abs(tiltUmPerUm.y) * frameHeight / framePixelsPerUm;
    const double nearest = std::abs(distanceUm) - (riseAcross + riseDown) / 2.0; // in the frame
    const double step = std::max(tileStepUm, tileStepShare * nearest);
    const int columns = TileCount(riseAcross, step);
    const int rows = TileCount(riseDown, step);
    std::vector<FrameTile> tiles;
    for (int row = 0; row < rows; ++row)
        for (int column = 0; column < columns; ++column) {
            const int left = frameWidth * column / columns;
            const int top = frameHeight * row / rows;
            FrameTile tile = {.left = left,
                              .top = top,
                              .width = frameWidth * (column + 1) / columns - left,
                              .height = frameHeight * (row + 1) / rows - top};
            const double right = (tile.left + tile.width / 2.0 - frameWidth / 2.0) / framePixelsPerUm;
            const double up = (frameHeight / 2.0 - tile.top - tile.height / 2.0) / framePixelsPerUm;
            tile.distanceUm = distanceUm - tiltUmPerUm.x * right - tiltUmPerUm.y * up;
            tiles.push_back(tile);
        }
    return tiles;
}

BlurPlan PlanBlur(double blurPixels) {
    BlurPlan plan;
    while (blurPixels >= 2.0 * reducedSigma * plan.reduction)
        plan.reduction *= 2;
    plan.sigmaSamples = blurPixels / plan.reduction;
    if (plan.reduction > 1)
        plan.sigmaSamples = std::sqrt(plan.sigmaSamples * plan.sigmaSamples - enlargingVariance);
    plan.marginSamples = static_cast<int>(std::ceil(kernelReach * plan.sigmaSamples)) + 1;
    return plan;
}

void GaussianBlur::Apply(double sigmaSamples, int width, int height, std::vector<float>& samples) {
    if (!(sigmaSamples > 0.0) || width <= 0 || height <= 0)
        return;
    const auto columns = static_cast<std::size_t>(width);
    const auto rows = static_cast<std::size_t>(height);
    MakeKernel(sigmaSamples);
    m_across.resize(columns * rows);
    for (std::size_t row = 0; row < rows; ++row)
        BlurAcross(samples.data() + row * columns, columns, m_across.data() + row * columns);
    for (std::size_t row = 0; row < rows; ++row)
        BlurDown(row, columns, rows, samples.data() + row * columns);
}

/// The weights add up to 1, the centre counted once and all others on both sides.
void GaussianBlur::MakeKernel(double sigmaSamples) {
    const auto reach = static_cast<std::size_t>(std::ceil(kernelReach * sigmaSamples));
    m_kernel.clear();
    double sum = -1.0;
    for (std::size_t k = 0; k <= reach; ++k) {
        const double distance = static_cast<double>(k) / sigmaSamples;
        m_kernel.push_back(static_cast<float>(std::exp(-0.5 * distance * distance)));
        sum += 2.0 * static_cast<double>(m_kernel.back());
    }
    for (float& weight : m_kernel)
        weight = static_cast<float>(static_cast<double>(weight) / sum);
}

void GaussianBlur::BlurAcross(const float* source, std::size_t columns, float* target) {
    const std::size_t reach = m_kernel.size() - 1;
    m_row.assign(reach, source[0]);
    m_row.insert(m_row.end(), source, source + columns);
    m_row.insert(m_row.end(), reach, source[columns - 1]);
    const float* const centre = m_row.data() + reach;
    Scale(m_kernel[0], centre, columns, target);
    for (std::size_t k = 1; k <= reach; ++k)
        AddBoth(m_kernel[k], centre - k, centre + k, columns, target);
}

void GaussianBlur::BlurDown(std::size_t row, std::size_t columns, std::size_t rows, float* target) const {
    Scale(m_kernel[0], m_across.data() + row * columns, columns, target);
    for (std::size_t k = 1; k < m_kernel.size(); ++k)
        AddBoth(m_kernel[k], m_across.data() + (row - std::min(row, k)) * columns,
                m_across.data() + std::min(row + k, rows - 1) * columns, columns, target);
}

void EnlargeToFrame(const BlurPlan& plan, const std::vector<float>& plane, int planeWidth,
                    const FrameTile& tile, std::span<float> frame) {
    const auto width = static_cast<std::size_t>(planeWidth);
    float* target = frame.data() + tile.top * frameWidth + tile.left;
    if (plan.reduction == 1) {
        const float* source = plane.data() + (width + 1) * static_cast<std::size_t>(plan.marginSamples);
        for (int row = 0; row < tile.height; ++row, source += width, target += frameWidth)
            std::copy_n(source, tile.width, target);
        return;
    }
    std::vector<Between> columns;
    for (int column = 0; column < tile.width; ++column)
        columns.push_back(PlaceOf(column, plan));
    std::vector<float> blended(width);
    for (int row = 0; row < tile.height; ++row, target += frameWidth) {
        const Between rows = PlaceOf(row, plan);
        const float* const first = plane.data() + rows.first * width;
        const float* const second = first + width;
        for (std::size_t i = 0; i < width; ++i)
            blended[i] = first[i] + rows.share * (second[i] - first[i]);
        for (std::size_t column = 0; column < columns.size(); ++column) {
            const Between& place = columns[column];
            target[column] =
                blended[place.first] + place.share * (blended[place.first + 1] - blended[place.first]);
        }
    }
}

} // namespace tessaro
