// The twin's optics under the measures of the operator's program: how sharpness goes with the distance from
// the focus.

#include "analysis/field_analysis.h"
#include "analysis/frame_statistics.h"
#include "focus/focus_measures.h"
#include "twin/operator_view.h"
#include "twin/sensor_renderer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <memory>
#include <vector>

namespace tessaro {
namespace {

constexpr float nothingToMeasure = 0.0001F;
constexpr std::array<std::uint64_t, 2> seeds = {1, 2};

/// Looks at a wafer as the operator's program does when it focuses.
class Microscope {
public:
    explicit Microscope(const Wafer& wafer) : m_renderer(wafer) {}

    FocusFigures FiguresAt(const StagePosition& position, const ExposureSettings& exposure = {},
                           std::uint64_t noiseSeed = 1) {
        m_renderer.Render(position, exposure, noiseSeed, m_mosaic);
        MosaicToFrame(m_mosaic, m_frame);
        m_memory->frame.pixels = m_frame.Data();
        ComputeFrameStatistics(m_memory->frame, m_memory->frame, m_memory->measured);
        return MeasureFocus(m_memory->measured.reduced);
    }

    float ScoreAt(const StagePosition& position) { return FiguresAt(position).laplaceM; }

private:
    SensorRenderer m_renderer;
    std::vector<std::uint8_t> m_mosaic = std::vector<std::uint8_t>(twinMosaicBytes);
    FrameBuffer m_frame;
    std::unique_ptr<AnalysisMemory> m_memory = std::make_unique<AnalysisMemory>();
};

StagePosition FieldAt(double z) {
    return {1000.0, 1000.0, z};
}

TEST(TwinFocusCurve, IsHighestAtTheFocusAndFallsToBothSides) {
    for (const std::uint64_t seed : seeds) {
        const Wafer wafer({.seed = seed});
        Microscope microscope(wafer);
        for (const double side : {-1.0, 1.0}) {
            FocusFigures last = microscope.FiguresAt(FieldAt(0.0));
            for (const double distance : {1.0, 2.0, 3.0, 5.0, 10.0, 20.0, 50.0}) {
                const FocusFigures figures = microscope.FiguresAt(FieldAt(side * distance));
                EXPECT_LT(figures.laplaceM, last.laplaceM) << seed << " at " << side * distance;
                EXPECT_LT(figures.focusValue, last.focusValue) << seed << " at " << side * distance;
                last = figures;
            }
        }
    }
}

/// Its neighbours at five cells, 8.1 um, let no light that is spread by less count for much: an edge has lost
/// half when it is 5 to 6 um wide.
TEST(TwinFocusCurve, HasLostAFewPercentAtTwoMicrometresAndHalfAtSevenToFifteen) {
    for (const std::uint64_t seed : seeds) {
        const Wafer wafer({.seed = seed});
        Microscope microscope(wafer);
        const float peak = microscope.ScoreAt(FieldAt(0.0));
        EXPECT_LT(microscope.ScoreAt(FieldAt(2.0)), 0.97F * peak) << seed;
        EXPECT_GT(microscope.ScoreAt(FieldAt(2.0)), 0.85F * peak) << seed;
        EXPECT_GT(microscope.ScoreAt(FieldAt(7.0)), 0.5F * peak) << seed;
        EXPECT_LT(microscope.ScoreAt(FieldAt(15.0)), 0.5F * peak) << seed;
        EXPECT_LT(microscope.ScoreAt(FieldAt(50.0)), 0.2F * peak) << seed;
    }
}

TEST(TwinFocusCurve, SeesTheFinestStructureInAFewMicrometresOnly) {
    for (const std::uint64_t seed : seeds) {
        const Wafer wafer({.seed = seed});
        Microscope microscope(wafer);
        EXPECT_LT(microscope.FiguresAt(FieldAt(5.0)).laplaceS,
                  0.6F * microscope.FiguresAt(FieldAt(0.0)).laplaceS)
            << seed;
    }
}

TEST(TwinFocusCurve, HasLongFlatTails) {
    for (const std::uint64_t seed : seeds) {
        const Wafer wafer({.seed = seed});
        Microscope microscope(wafer);
        const float peak = microscope.ScoreAt(FieldAt(0.0));
        for (const double z : {-900.0, -300.0, -150.0, 100.0, 200.0, 400.0, 600.0, 900.0})
            EXPECT_LT(microscope.ScoreAt(FieldAt(z)), 0.1F * peak) << seed << " at " << z;
    }
}

/// On a tilted wafer the field's contents decide which of its planes is the best: within what the focus rises
/// from its middle to a corner.
TEST(TwinFocusCurve, IsHighestAtTheFocusOfThePlaceOnATiltedWafer) {
    for (const Vertex tilt : {Vertex{0.002, 0.0}, Vertex{-0.001, 0.002}, Vertex{0.005, -0.005}}) {
        WaferOptions options;
        options.tiltUmPerUm = tilt;
        options.focusZUm = -40.0;
        const Wafer wafer(options);
        Microscope microscope(wafer);
        const double corner =
            (std::abs(tilt.x) * frameWidth + std::abs(tilt.y) * frameHeight) / 2.0 / framePixelsPerUm;
        for (const Vertex place : {Vertex{600.0, 700.0}, Vertex{3300.0, 2900.0}}) {
            double best = 0.0;
            float highest = 0.0F;
            for (double distance = -6.0; distance <= 6.0; distance += 1.0) {
                const double z = wafer.FocusZ(place.x, place.y) + distance;
                const float score = microscope.ScoreAt({place.x, place.y, z});
                if (score > highest)
                    best = distance;
                highest = std::max(highest, score);
            }
            EXPECT_NEAR(best, 0.0, std::max(1.0, corner)) << tilt.x << " at " << place.x;
        }
    }
}

TEST(TwinFocusCurve, IsNearZeroWhereThereIsNothingToSee) {
    const Wafer bare{WaferOptions(), WaferContents()};
    Microscope microscope(bare);
    for (const double z : {0.0, 5.0, 300.0})
        for (std::uint64_t noiseSeed = 1; noiseSeed <= 5; ++noiseSeed)
            EXPECT_LE(microscope.FiguresAt(FieldAt(z), {}, noiseSeed).laplaceM, 0.06F) << "noise alone";
    EXPECT_EQ(microscope.FiguresAt(FieldAt(0.0), {.exposureTimeUs = 100'000.0}).laplaceM, nothingToMeasure)
        << "saturated";
    EXPECT_EQ(microscope.FiguresAt(FieldAt(0.0), {.exposureTimeUs = 0.0}).laplaceM, nothingToMeasure)
        << "black";
    EXPECT_LE(microscope.FiguresAt({-5000.0, 0.0, 0.0}).laplaceM, nothingToMeasure) << "the holder";
}

} // namespace
} // namespace tessaro
