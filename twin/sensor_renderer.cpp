#include "twin/sensor_renderer.h"

#include "imaging/frame_buffer.h"
#include "simulated_field/reproducible_random.h"
#include "simulated_field/simulated_field.h"

#include <algorithm>
#include <cmath>
#include <functional>

namespace tessaro {
namespace {

static_assert(twinSensorWidth == 2 * frameWidth && twinSensorHeight == 2 * frameHeight);

constexpr double holderLight = 0.12;    // what the wafer lies on, beside it
constexpr double nothingBeyondUm = 1e7; // but the holder

// The sensor at a gain of 0 dB. Small pixels hold about 7,600 electrons, and answer light by half a hundredth
// more or less than their neighbours.
constexpr double electronsPerLevel = 30.0;
constexpr double readNoiseLevels = 0.4;
constexpr float responseDeviation = 0.005F;

constexpr double longestExposureUs = 1e8;
constexpr double largestGainDb = 60.0;
constexpr double largestRatio = 64.0;

/// Where a sample of the 2 x 2 cell lies from the cell's centre, in frame pixels to the right and down, and
/// what it sees.
struct CellSample {
    std::size_t channel;
    double right;
    double down;
};
constexpr std::array<CellSample, 4> cellSamples = {
    {{0, -0.25, -0.25}, {1, 0.25, -0.25}, {1, -0.25, 0.25}, {2, 0.25, 0.25}}};

double Within(double value, double low, double high, double instead) {
    return std::isnan(value) ? instead : std::clamp(value, low, high);
}

StagePosition Reachable(const StagePosition& position) {
    const auto reachable = [](double um) {
        return Within(um, -nothingBeyondUm, nothingBeyondUm, nothingBeyondUm);
    };
    return {reachable(position.x), reachable(position.y), reachable(position.z)};
}

ExposureWay Reachable(ExposureWay way) {
    std::ranges::transform(way.places, way.places.begin(),
                           [](const StagePosition& place) { return Reachable(place); });
    return way;
}

/// The standard deviation of light that is spread evenly over a stretch.
double DeviationOfStretch(double length) {
    return length / std::sqrt(12.0);
}

/// Both together.
double WithStretch(double blurPixels, double stretchPixels) {
    return std::min(maximumBlurPixels, std::hypot(blurPixels, DeviationOfStretch(stretchPixels)));
}

SampleGrid GridOf(const CellSample& sample, const StagePosition& position, const FrameTile& tile,
                  const BlurPlan& plan) {
    const int margin = plan.marginSamples * plan.reduction; // frame pixels
    const auto samples = [&](int pixels) {
        return (pixels + plan.reduction - 1) / plan.reduction + 2 * plan.marginSamples;
    };
    const double right = sample.right + tile.left - margin - frameWidth / 2.0;
    const double down = sample.down + tile.top - margin - frameHeight / 2.0;
    return {.topLeft = {position.x + right / framePixelsPerUm, position.y - down / framePixelsPerUm},
            .samplesPerUm = framePixelsPerUm / plan.reduction,
            .width = samples(tile.width),
            .height = samples(tile.height)};
}

SensorResponse ResponseOf(const ExposureSettings& exposure, std::size_t channel) {
    const double time = Within(exposure.exposureTimeUs, 0.0, longestExposureUs, 0.0);
    const double gain = std::pow(10.0, Within(exposure.gainDb, -largestGainDb, largestGainDb, 0.0) / 20.0) *
                        Within(exposure.balanceRatios[channel], 0.0, largestRatio, 0.0);
    const double level = defaultSubstrateLevel * gain * time / ExposureSettings().exposureTimeUs;
    return {.level = static_cast<float>(level),
            .variancePerLevel = static_cast<float>(gain / electronsPerLevel),
            .readVariance = static_cast<float>(readNoiseLevels * readNoiseLevels * gain * gain)};
}

void PutInTurn(const std::vector<std::uint8_t>& even, const std::vector<std::uint8_t>& odd,
               std::uint8_t* target) {
    for (std::size_t column = 0; column < frameWidth; ++column) {
        target[2 * column] = even[column];
        target[2 * column + 1] = odd[column];
    }
}

} // namespace

/// The light is a paraboloid: what a column lacks and what a row lacks add up.
SensorRenderer::SensorRenderer(const Wafer& wafer) : m_wafer(wafer) {
    const SimulatedField evenSubstrate;
    for (int column = 0; column < frameWidth; ++column)
        m_columnLight.push_back(
            static_cast<float>(Illumination(evenSubstrate, {column + 0.5, frameHeight / 2.0})));
    for (int row = 0; row < frameHeight; ++row)
        m_rowLoss.push_back(
            static_cast<float>(1.0 - Illumination(evenSubstrate, {frameWidth / 2.0, row + 0.5})));
    for (std::vector<float>& optical : m_optical)
        optical.resize(framePixelCount);
}

void SensorRenderer::Render(const StagePosition& position, const ExposureSettings& exposure,
                            std::uint64_t noiseSeed, std::span<std::uint8_t> mosaic) {
    Render(ExposureWay{.places = {position}}, exposure, noiseSeed, mosaic);
}

void SensorRenderer::Render(const ExposureWay& way, const ExposureSettings& exposure, std::uint64_t noiseSeed,
                            std::span<std::uint8_t> mosaic) {
    if (mosaic.size() != twinMosaicBytes || way.places.empty())
        return;
    const ExposureWay reachable = Reachable(way);
    if (m_drawn != reachable)
        DrawOpticalImage(reachable);
    m_drawn = reachable;

    ReproducibleRandom random(noiseSeed);
    std::array<std::vector<std::uint8_t>, 2> levels = {std::vector<std::uint8_t>(frameWidth),
                                                       std::vector<std::uint8_t>(frameWidth)};
    std::array<SensorResponse, channelCount> responses = {};
    for (std::size_t channel = 0; channel < responses.size(); ++channel)
        responses[channel] = ResponseOf(exposure, channel);
    for (std::size_t sensorRow = 0; sensorRow < twinSensorHeight; ++sensorRow) {
        for (std::size_t parity = 0; parity < 2; ++parity) {
            const std::size_t sample = sensorRow % 2 * 2 + parity;
            const float* const light = m_optical[sample].data() + sensorRow / 2 * frameWidth;
            ExposeRow({light, frameWidth}, responses[cellSamples[sample].channel],
                      m_noise.Piece(random.Next()), levels[parity].data());
        }
        PutInTurn(levels[0], levels[1], mosaic.data() + sensorRow * twinSensorWidth);
    }
}

void SensorRenderer::DrawOpticalImage(const ExposureWay& way) {
    const auto share = 1.0F / static_cast<float>(way.places.size());
    for (std::size_t sample = 0; sample < cellSamples.size(); ++sample) {
        std::vector<float>& optical = m_optical[sample];
        DrawPlace(sample, way.places.front(), way);
        optical.swap(m_place);
        for (const StagePosition& place : std::span(way.places).subspan(1)) {
            DrawPlace(sample, place, way);
            std::ranges::transform(optical, m_place, optical.begin(), std::plus());
        }
        if (way.places.size() > 1)
            for (float& light : optical)
                light *= share;
        LightUp(sample, optical);
    }
}

/// Into m_place. A stretch blurs in all directions: of a longer way, the other places give it one. A stretch
/// along Z has the mean of the blurs' variances.
void SensorRenderer::DrawPlace(std::size_t sample, const StagePosition& position, const ExposureWay& way) {
    m_place.resize(framePixelCount);
    const double distance = position.z - m_wafer.FocusZ(position.x, position.y);
    for (const FrameTile& tile : TilesOf(distance, m_wafer.Tilt())) {
        const double blur = BlurPixels(std::hypot(tile.distanceUm, DeviationOfStretch(way.stretchZUm)));
        const BlurPlan plan = PlanBlur(WithStretch(blur, way.stretchUm * framePixelsPerUm));
        m_plane.grid = GridOf(cellSamples[sample], position, tile, plan);
        DrawPlane(cellSamples[sample].channel);
        m_blur.Apply(plan.sigmaSamples, m_plane.grid.width, m_plane.grid.height, m_plane.samples);
        EnlargeToFrame(plan, m_plane.samples, m_plane.grid.width, tile, m_place);
    }
}

void SensorRenderer::DrawPlane(std::size_t channel) {
    const SampleGrid& grid = m_plane.grid;
    MarkPainter::PaintWafer(m_wafer.SideUm(), holderLight, m_plane);
    const Vertex low = {grid.topLeft.x, grid.topLeft.y - grid.height / grid.samplesPerUm};
    const Vertex high = {grid.topLeft.x + grid.width / grid.samplesPerUm, grid.topLeft.y};
    for (const WaferMark* mark : m_wafer.MarksBetween(low, high))
        m_painter.Paint(*mark, mark->transmission[channel], m_plane);
}

/// The light falls off toward the corners of the frame, whatever lies there, and no two pixels answer it
/// alike.
void SensorRenderer::LightUp(std::size_t cellSample, std::vector<float>& optical) const {
    ReproducibleRandom pattern(cellSample);
    float* sample = optical.data();
    for (const float loss : m_rowLoss) {
        const float* deviation = m_noise.Piece(pattern.Next());
        for (const float light : m_columnLight)
            *sample++ *= (light - loss) * (1.0F + responseDeviation * *deviation++);
    }
}

} // namespace tessaro
