#pragma once

#include "twin/coverage.h"
#include "twin/defocus.h"
#include "twin/exposure_way.h"
#include "twin/sensor_noise.h"
#include "twin/stage_position.h"
#include "twin/wafer.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace tessaro {

inline constexpr int twinSensorWidth = 2464;
inline constexpr int twinSensorHeight = 2056;
inline constexpr std::size_t twinMosaicBytes = std::size_t{twinSensorWidth} * twinSensorHeight;

/// The sensor's level of bare substrate at the frame's centre with the settings as they are by default.
inline constexpr double defaultSubstrateLevel = 140.0;

struct ExposureSettings {
    double exposureTimeUs = 10'000.0;
    double gainDb = 0.0;
    std::array<double, 3> balanceRatios = {1.0, 1.0,
                                           1.0}; // [red, green, blue]; 1 each: the substrate is grey
};

/// What the sensor sees of a wafer.
class SensorRenderer {
public:
    /// The wafer must outlive the renderer.
    explicit SensorRenderer(const Wafer& wafer);
    explicit SensorRenderer(const Wafer&& wafer) = delete;

    /// Fills 2464 x 2056 samples of 8 bits: a mosaic with red, green / green, blue in each cell, the first
    /// row the top of the picture. The same wafer, position, settings and noise seed give the same bytes. Any
    /// position may be given, also one that is no number: far from the wafer there is only its holder. The
    /// picture without noise is kept, so that further frames at the same position cost much less. A mosaic of
    /// another size is left alone.
    void Render(const StagePosition& position, const ExposureSettings& exposure, std::uint64_t noiseSeed,
                std::span<std::uint8_t> mosaic);

    /// The same of a stage that moves: the mean of what is seen on the way.
    void Render(const ExposureWay& way, const ExposureSettings& exposure, std::uint64_t noiseSeed,
                std::span<std::uint8_t> mosaic);

private:
    void DrawOpticalImage(const ExposureWay& way);
    void DrawPlace(std::size_t sample, const StagePosition& position, const ExposureWay& way);
    void DrawPlane(std::size_t channel);
    void LightUp(std::size_t cellSample, std::vector<float>& optical) const;

    const Wafer& m_wafer;
    NoiseTable m_noise;
    std::vector<float> m_columnLight; // share of the light at the middle row
    std::vector<float> m_rowLoss;     // what the row lacks of it
    std::optional<ExposureWay> m_drawn;
    // The picture without noise of m_drawn, bare substrate in full light 1:
    // [red, green, green, blue of the cells][row from the top][column]
    std::array<std::vector<float>, 4> m_optical;
    std::vector<float> m_place; // as one of them, of one place of the way
    LightPlane m_plane;
    MarkPainter m_painter;
    GaussianBlur m_blur;
};

} // namespace tessaro
