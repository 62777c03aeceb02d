#include "analysis/field_analysis.h"
#include "analysis/frame_statistics.h"
#include "analysis/pixel_probe.h"
#include "camera/camera_session.h"
#include "camera/exposure_mean.h"
#include "twin/sensor_renderer.h"
#include "twin/wafer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <vector>

namespace tessaro {
namespace {

constexpr std::array<double, 3> singleLayerContrast = {-12.0, -8.0, -2.0}; // graphene on SiO2, percent
constexpr double automaticLevel = 147.0; // where automatic exposure takes the mean of the picture
constexpr int leftOfMiddlePixels = 200;

class NoOwner : public GrabResult::BufferOwner {
public:
    void Release(void*) noexcept override {}
};

/// The working frame as the mean of four exposures at a place of the wafer.
std::unique_ptr<CameraSession> FrameAt(SensorRenderer& renderer, const StagePosition& position,
                                       std::uint64_t seed) {
    NoOwner owner;
    ExposureSettings exposure;
    exposure.exposureTimeUs *= automaticLevel / defaultSubstrateLevel;
    std::vector<std::vector<std::uint8_t>> mosaics(4, std::vector<std::uint8_t>(twinMosaicBytes));
    std::vector<GrabResult> results;
    for (std::vector<std::uint8_t>& mosaic : mosaics) {
        renderer.Render(position, exposure, seed++, mosaic);
        results.emplace_back(GrabResult::Image{true, sensorWidth, sensorHeight, mosaic}, &owner, nullptr);
    }
    const std::array<const GrabResult*, 4> exposures = {&results[0], &results[1], &results[2], &results[3]};
    auto session = std::make_unique<CameraSession>();
    ShowMeanOf(*session, exposures);
    return session;
}

Vertex CentreOf(const Outline& outline) {
    Vertex centre;
    for (const Vertex& corner : outline) {
        centre.x += corner.x / static_cast<double>(outline.size());
        centre.y += corner.y / static_cast<double>(outline.size());
    }
    return centre;
}

bool IsWellInside(const Wafer& wafer, Vertex centre) {
    const double middle = wafer.SideUm() / 2.0;
    return std::abs(centre.x - middle) < 450.0 && std::abs(centre.y - middle) < 450.0;
}

TEST(ProbeOnFlakes, ContrastsOfASingleLayerComeOutWithinOneAndAHalfPercent) {
    WaferOptions options;
    options.seed = 5;
    options.sideMm = 1.5;
    const Wafer wafer(options);
    SensorRenderer renderer(wafer);
    int probes = 0;
    int wrong = 0;
    for (const WaferFlake& flake : wafer.Flakes()) {
        const Vertex centre = CentreOf(flake.outline);
        if (flake.layers != 1 || flake.AreaUm2() < 150.0 || !IsWellInside(wafer, centre))
            continue;
        const StagePosition position = {centre.x + leftOfMiddlePixels / framePixelsPerUm, centre.y, 0.0};
        const auto session = FrameAt(renderer, position, 100U * static_cast<std::uint64_t>(probes) + 1U);
        const auto memory = std::make_unique<AnalysisMemory>();
        memory->frame.pixels = session->workingFrame.Data();
        ComputeFrameStatistics(memory->frame, memory->frame, memory->measured);
        for (int offset = -8; offset <= 8; offset += 4) {
            const std::uint32_t place =
                PackPosition(frameWidth / 2 - leftOfMiddlePixels + offset, frameHeight / 2 + offset);
            const ProbedPixel pixel = MeasurePixel(memory->frame, memory->measured.background, place);
            ++probes;
            for (std::size_t c = 0; c < singleLayerContrast.size(); ++c)
                wrong += std::abs(pixel.contrast[c] - singleLayerContrast[c]) > 1.5 ? 1 : 0;
        }
    }
    EXPECT_GE(probes, 25);
    EXPECT_EQ(wrong, 0);
}

} // namespace
} // namespace tessaro
