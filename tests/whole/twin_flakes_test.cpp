#include "analyze/picture_analysis.h"
#include "simulated_field/random_field.h"
#include "twin/operator_view.h"
#include "twin/sensor_renderer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <utility>
#include <vector>

namespace tessaro {
namespace {

constexpr float threshold = 35.0F;
constexpr double leastAreaUm2 = 150.0;
constexpr double nearPixels = 3.0;

/// Every seed's wafer is looked at in so many rows and columns of fields that do not overlap.
constexpr int fieldsPerSide = 2;
constexpr double fieldPitchUm = 510.0;

/// How many seeds are tried; the variable makes it more when there is time.
std::uint64_t SeedCount() {
    const char* const wanted = std::getenv("TESSARO_TWIN_SEEDS");
    return wanted != nullptr ? std::strtoull(wanted, nullptr, 10) : 6;
}

struct Tally {
    int known = 0; // single layers of the least area or more, wholly in the analysed area
    int found = 0;
    int frames = 0;
    int wrongFrames = 0;
};

std::ostream& operator<<(std::ostream& out, const Tally& tally) {
    return out << tally.found << " of " << tally.known << " single layers found, " << tally.wrongFrames
               << " of " << tally.frames << " frames around something else";
}

struct FlakeInFrame {
    Outline outline; // frame pixels, row 0 at the bottom
    int layers = 0;
    double areaUm2 = 0.0;

    bool IsAt(const GrainReport& grain) const {
        const Vertex centre = {(grain.left + grain.right + 1) / 2.0, (grain.minRow + grain.maxRow + 1) / 2.0};
        return SignedDistance(centre, outline) < nearPixels;
    }

    bool IsToBeFound() const {
        return layers == 1 && areaUm2 >= leastAreaUm2 &&
               std::ranges::all_of(outline, [](const Vertex& corner) {
                   return corner.x >= detectionMarginXPixels &&
                          corner.x <= frameWidth - detectionMarginXPixels &&
                          corner.y >= detectionMarginYPixels &&
                          corner.y <= frameHeight - detectionMarginYPixels;
               });
    }
};

std::vector<FlakeInFrame> FlakesInFrame(const Wafer& wafer, const StagePosition& position) {
    std::vector<FlakeInFrame> flakes;
    for (const WaferFlake& flake : wafer.Flakes()) {
        FlakeInFrame placed = {.outline = flake.outline, .layers = flake.layers, .areaUm2 = flake.AreaUm2()};
        for (Vertex& corner : placed.outline)
            corner = {(corner.x - position.x) * framePixelsPerUm + frameWidth / 2.0,
                      (corner.y - position.y) * framePixelsPerUm + frameHeight / 2.0};
        flakes.push_back(std::move(placed));
    }
    return flakes;
}

void Count(const std::vector<FlakeInFrame>& flakes, const PictureReport& report, Tally& tally) {
    for (const FlakeInFrame& flake : flakes) {
        const bool found = std::ranges::any_of(
            report.grains, [&](const GrainReport& grain) { return grain.single && flake.IsAt(grain); });
        tally.known += flake.IsToBeFound() ? 1 : 0;
        tally.found += flake.IsToBeFound() && found ? 1 : 0;
    }
    for (const GrainReport& grain : report.grains) {
        const bool right = std::ranges::any_of(
            flakes, [&](const FlakeInFrame& flake) { return flake.layers == 1 && flake.IsAt(grain); });
        tally.frames += grain.single ? 1 : 0;
        tally.wrongFrames += grain.single && !right ? 1 : 0;
    }
}

/// Looks at fields in rows and columns of one wafer.
void LookAt(const Wafer& wafer, std::uint64_t noiseSeed, Tally& tally) {
    Settings settings;
    settings.scoreThreshold = threshold;
    SensorRenderer renderer(wafer);
    std::vector<std::uint8_t> mosaic(twinMosaicBytes);
    FrameBuffer frame;
    for (int row = 0; row < fieldsPerSide; ++row)
        for (int column = 0; column < fieldsPerSide; ++column) {
            const StagePosition position = {1000.0 + fieldPitchUm * column, 1000.0 + fieldPitchUm * row, 0.0};
            renderer.Render(position, {}, noiseSeed, mosaic);
            MosaicToFrame(mosaic, frame);
            Count(FlakesInFrame(wafer, position), AnalyzeFrame(frame, settings, nullptr), tally);
        }
}

TEST(TwinFlakes, OfOneLayerAreFramedAndHardlyAnythingElseIs) {
    Tally tally;
    for (std::uint64_t seed = 1; seed <= SeedCount(); ++seed)
        LookAt(Wafer({.seed = seed}), seed, tally);
    std::cout << tally << ", threshold " << threshold << "\n";
    EXPECT_GE(tally.known, static_cast<int>(SeedCount()));
    EXPECT_GE(tally.found, tally.known * 0.95) << tally;
    EXPECT_LE(tally.wrongFrames, tally.frames * 0.05) << tally;
}

} // namespace
} // namespace tessaro
