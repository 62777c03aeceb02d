#include "analysis/background_model.h"
#include "analysis/flake_analyzer.h"
#include "analysis/frame_statistics.h"
#include "analysis/pixel_access.h"
#include "support/analysis_fixture.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <limits>

namespace tessaro {
namespace {

constexpr std::uint8_t untouched = 0xA5;

class Background : public testing::Test {
protected:
    /// The same measured intensity in every block of every channel.
    void SetFlat(float value) {
        for (int channel = 0; channel < channelCount; ++channel) {
            for (int gx = 0; gx < gridSize; ++gx) {
                for (int gy = 0; gy < gridSize; ++gy)
                    grid.SetMeasured(channel, gx, gy, value);
            }
        }
    }

    /// A dome on red: 200 at block (7, 7), one less for each 20 blocks squared from there.
    void SetDome() {
        SetFlat(200);
        for (int gx = 0; gx < gridSize; ++gx) {
            for (int gy = 0; gy < gridSize; ++gy) {
                const int distance = (gx - 7) * (gx - 7) + (gy - 7) * (gy - 7);
                grid.SetMeasured(red, gx, gy, 200.0F - static_cast<float>(distance) / 20.0F);
            }
        }
    }

    void Reset(double peak) {
        frame.bgPeak = {peak, peak, peak};
        ResetBackgroundModel(model, frame);
    }

    void SetTrials(ModelParameter parameter, double lower, double upper, double step) {
        model.lower[red][parameter] = lower;
        model.upper[red][parameter] = upper;
        model.steps[red][parameter] = step;
    }

    double Search(ModelParameter parameter) {
        LineSearchParameter(model, grid, red, parameter);
        return model.parameters[red][parameter];
    }

    BackgroundModel model;
    BackgroundGrid grid;
    FrameRecord frame;
};

class BackgroundModelAtStart : public testing::TestWithParam<std::size_t> {};

TEST_P(BackgroundModelAtStart, IsFlatAndHasItsBoundsAndSteps) {
    const BackgroundModel model;
    const std::size_t c = GetParam();
    using Five = std::array<double, modelParameterCount>;
    EXPECT_EQ(model.parameters[c], (Five{0, 600, 0, 600, c == 0 ? 255.0 : 200.0}));
    EXPECT_EQ(model.lower[c], (Five{-0.01, 0, -0.01, 0, 10}));
    EXPECT_EQ(model.upper[c], (Five{0.01, 1000, 0.01, 1000, 255}));
    EXPECT_EQ(model.steps[c], (Five{0.000001, 2, 0.000001, 2, 0.1}));
    EXPECT_EQ(model.searchSteps, 1000);
    EXPECT_EQ(model.modelFitted, 1);
}

INSTANTIATE_TEST_SUITE_P(EveryChannel, BackgroundModelAtStart, testing::Values(0U, 1U, 2U));

TEST_F(Background, ModelIsAParaboloidWithTwoCurvatures) {
    model.parameters[green] = {2, 3, 5, 7, 11};
    EXPECT_EQ(ModelValue(model, green, 5, 9), 2 * 4 + 5 * 4 + 11);
    EXPECT_EQ(ModelValue(model, green, 3, 6), 5 * 1 + 11);
    EXPECT_EQ(ModelValue(model, green, 0, 7), 2 * 9 + 11);
}

TEST_F(Background, ErrorSumsTheSquaresOverTheMeasuredBlocksOfTheChannel) {
    SetFlat(10);
    model.parameters[blue] = {0, 600, 0, 600, 7};
    EXPECT_EQ(ModelError(model, grid, blue), 256 * 9);
    grid.SetMeasured(blue, 15, 0, 12.5F); // 5.5 off instead of 3
    grid.SetMeasured(green, 4, 4, 0.0F);  // another channel's
    grid.SetFitted(blue, 4, 4, 0.0F);     // not measured
    EXPECT_EQ(ModelError(model, grid, blue), 255 * 9 + 30.25);
}

TEST_F(Background, SearchLeavesItsUpperBoundOut) {
    SetFlat(6);
    SetTrials(level, 4, 6, 1);
    EXPECT_EQ(Search(level), 5);
    SetTrials(level, 4, 6.5, 1);
    EXPECT_EQ(Search(level), 6);
}

TEST_F(Background, SearchCarriesOnItsSumOfSteps) {
    SetFlat(1);
    SetTrials(level, 0, 1, 0.1);
    double tenTenths = 0;
    for (int i = 0; i < 10; ++i)
        tenTenths += 0.1;
    ASSERT_LT(tenTenths, 1); // 10 * 0.1 would be the bound itself and no trial
    EXPECT_EQ(Search(level), tenTenths);
}

TEST_F(Background, SearchKeepsTheLowestOfEquallyGoodTrials) {
    SetFlat(4.5F);
    SetTrials(level, 1, 9, 1);
    EXPECT_EQ(Search(level), 4) << "4 and 5 are half a level off";
    model.parameters[red] = {0, 600, 0, 600, 4.5};
    SetTrials(centreX, -50, 1000, 2);
    EXPECT_EQ(Search(centreX), -50) << "without curvature the centre makes no difference";
}

TEST_F(Background, SearchWithoutTrialsTakesTheLowerBound) {
    SetFlat(6);
    SetTrials(level, 8, 8, 1);
    EXPECT_EQ(Search(level), 8);
    SetTrials(level, 9, 5, 1);
    EXPECT_EQ(Search(level), 9);
}

TEST_F(Background, SearchThatNothingCanImproveTakesTheLowerBound) {
    SetFlat(std::numeric_limits<float>::quiet_NaN());
    SetTrials(level, 3, 20, 1);
    EXPECT_EQ(Search(level), 3);
}

TEST_F(Background, SearchFindsTheCentreOfADome) {
    SetDome();
    model.parameters[red] = {-0.05, 600, -0.05, 7, 200};
    SetTrials(centreX, -999, 1001, 2);
    EXPECT_EQ(Search(centreX), 7);
}

TEST_F(Background, FitSpansAThousandStepsToEitherSide) {
    SetFlat(150);
    Reset(150);
    model.parameters[green][level] = 140;
    FitBackgroundModel(model, grid);
    EXPECT_EQ(model.lower[green][curvatureX], -0.001);
    EXPECT_EQ(model.upper[green][curvatureX], 0.001);
    EXPECT_EQ(model.lower[green][centreX], -1400);
    EXPECT_EQ(model.upper[green][centreX], 2600);
    EXPECT_EQ(model.lower[green][centreY], -1400);
    EXPECT_EQ(model.upper[green][level], 240);
    EXPECT_EQ(model.lower[blue][level], 50);
}

TEST_F(Background, FitOfAFlatGridStaysWithinOneStepOfFlat) {
    SetFlat(150);
    Reset(150);
    for (int sweep = 0; sweep < 3; ++sweep) {
        FitBackgroundModel(model, grid);
        for (const auto& P : model.parameters) {
            EXPECT_LE(std::fabs(P[curvatureX]), 0.000001);
            EXPECT_LE(std::fabs(P[curvatureY]), 0.000001);
            EXPECT_LE(std::fabs(P[level] - 150), 0.1);
        }
    }
}

TEST_F(Background, FitOfAFlatGridBesideThePeakComesNearIt) {
    SetFlat(170);
    Reset(150);
    for (int sweep = 0; sweep < 3; ++sweep)
        FitBackgroundModel(model, grid);
    for (int channel = 0; channel < channelCount; ++channel) {
        for (int gx = 0; gx < gridSize; ++gx) {
            for (int gy = 0; gy < gridSize; ++gy)
                EXPECT_NEAR(grid.Fitted(channel, gx, gy), 170, 1);
        }
    }
}

TEST_F(Background, FirstSweepChoosesTheCurvatureForACentreFarOutside) {
    SetDome();
    Reset(200);
    FitBackgroundModel(model, grid);
    // The best curvature with the centre at 600: the sums over the columns of residual * dx^2 and dx^4.
    double product = 0;
    double square = 0;
    for (int gx = 0; gx < gridSize; ++gx) {
        const double dx2 = (gx - 600) * (gx - 600);
        for (int gy = 0; gy < gridSize; ++gy) {
            product += (grid.Measured(red, gx, gy) - 200.0) * dx2;
            square += dx2 * dx2;
        }
    }
    EXPECT_NEAR(model.parameters[red][curvatureX], product / square, 0.0000005);
}

TEST_F(Background, SweepsGoOnFromEachOtherAndThreeDoNotConverge) {
    SetDome();
    Reset(200);
    std::array<double, 4> errors{};
    for (double& error : errors) {
        FitBackgroundModel(model, grid);
        error = ModelError(model, grid, red);
    }
    EXPECT_LT(errors[1], errors[0]);
    EXPECT_LT(errors[2], errors[1]);
    EXPECT_LT(errors[3], errors[2]);
}

TEST_F(Background, FitWritesTheModelIntoTheFittedGridOnly) {
    SetDome();
    Reset(200);
    const BackgroundGrid before = grid;
    FitBackgroundModel(model, grid);
    for (int channel = 0; channel < channelCount; ++channel) {
        for (int gx = 0; gx < gridSize; ++gx) {
            for (int gy = 0; gy < gridSize; ++gy) {
                EXPECT_EQ(grid.Fitted(channel, gx, gy),
                          static_cast<float>(ModelValue(model, channel, gx, gy)));
                EXPECT_EQ(grid.Measured(channel, gx, gy), before.Measured(channel, gx, gy));
            }
        }
    }
}

TEST_F(Background, ResetMakesEachChannelFlatAtItsPeak) {
    for (std::size_t c = 0; c < channelCount; ++c) {
        model.parameters[c] = {1, 2, 3, 4, 5};
        model.lower[c][centreX] = 77;
    }
    frame.bgPeak = {120, 130, 140};
    ResetBackgroundModel(model, frame);
    using Five = std::array<double, modelParameterCount>;
    EXPECT_EQ(model.parameters[red], (Five{0, 600, 0, 600, 120}));
    EXPECT_EQ(model.parameters[green], (Five{0, 600, 0, 600, 130}));
    EXPECT_EQ(model.parameters[blue], (Five{0, 600, 0, 600, 140}));
    EXPECT_EQ(model.lower[green][level], 30);
    EXPECT_EQ(model.upper[green][level], 230);
    EXPECT_EQ(model.lower[green][centreX], 77) << "only the level's bounds are set";
    EXPECT_EQ(model.modelFitted, 0);
}

class BackgroundOfAFrame : public AnalysisFixture {};

TEST_F(BackgroundOfAFrame, IsResetToThePeakOfTheLastStatisticsPass) {
    painter.Fill({90, 91, 92});
    Measure();
    painter.Fill({10, 11, 12}); // not measured yet
    ResetBackgroundModel(field.analyzer.backgroundModel, field.frame);
    EXPECT_EQ(field.analyzer.backgroundModel.parameters[green][level], 91);
}

class BackgroundView : public Background {
protected:
    BackgroundView() : view(frameByteCount, untouched) {}

    int Paint(bool fitted) { return PaintBackground(grid, fitted, view.data()); }
    std::uint8_t Byte(int x, int y, std::size_t byte) const { return view[PixelOffset(x, y) + byte]; }

    std::vector<std::uint8_t> view;
};

TEST_F(BackgroundView, IsBlackBeforeAnyFrameIsMeasured) {
    EXPECT_EQ(Paint(false), 1);
    for (int y = 0; y < gridSize * gridBlockHeight; ++y) {
        for (int x = 0; x < frameWidth; ++x) {
            ASSERT_EQ(Byte(x, y, 0), 0);
            ASSERT_EQ(Byte(x, y, 1), 0);
            ASSERT_EQ(Byte(x, y, 2), 0);
            ASSERT_EQ(Byte(x, y, 3), untouched) << "the fourth byte is not painted";
        }
    }
}

TEST_F(BackgroundView, LeavesThePixelsOfNoBlock) {
    Paint(false);
    for (int y = 1024; y < frameHeight; ++y) {
        for (int x = 0; x < frameWidth; ++x)
            ASSERT_EQ(Byte(x, y, 2), untouched);
    }
}

TEST_F(BackgroundView, HasTheColourOfEachBlockFromEdgeToEdge) {
    grid.SetMeasured(red, 3, 5, 101);
    grid.SetMeasured(green, 3, 5, 102);
    grid.SetMeasured(blue, 3, 5, 103);
    Paint(false);
    for (const int x : {231, 307}) { // 3 * 77 and the column before 4 * 77
        for (const int y : {320, 383}) {
            EXPECT_EQ(Byte(x, y, 2), 101);
            EXPECT_EQ(Byte(x, y, 1), 102);
            EXPECT_EQ(Byte(x, y, 0), 103);
        }
    }
    EXPECT_EQ(Byte(230, 320, 2), 0);
    EXPECT_EQ(Byte(308, 320, 2), 0);
    EXPECT_EQ(Byte(231, 319, 2), 0);
    EXPECT_EQ(Byte(231, 384, 2), 0);
}

TEST_F(BackgroundView, ShowsTheMeasuredOrTheFittedGrid) {
    grid.SetMeasured(green, 15, 15, 40);
    grid.SetFitted(green, 15, 15, 50);
    EXPECT_EQ(Paint(false), 1);
    EXPECT_EQ(Byte(1231, 1023, 1), 40);
    EXPECT_EQ(Paint(true), 1);
    EXPECT_EQ(Byte(1231, 1023, 1), 50);
}

struct ByteCase {
    float value;
    int byte;
};

class BackgroundByte : public BackgroundView, public testing::WithParamInterface<ByteCase> {};

TEST_P(BackgroundByte, IsTheWholePartsLowEightBits) {
    grid.SetFitted(red, 0, 0, GetParam().value);
    Paint(true);
    EXPECT_EQ(Byte(0, 0, 2), GetParam().byte);
}

constexpr float infinity = std::numeric_limits<float>::infinity();

INSTANTIATE_TEST_SUITE_P(OfAnyNumber, BackgroundByte,
                         testing::Values(ByteCase{199.99F, 199}, ByteCase{255.5F, 255}, ByteCase{256.0F, 0},
                                         ByteCase{300.9F, 44}, ByteCase{-0.9F, 0}, ByteCase{-1.5F, 255},
                                         ByteCase{-300.0F, 212}, ByteCase{2147483520.0F, 128},
                                         ByteCase{-2147483648.0F, 0}, ByteCase{3e9F, 0}, ByteCase{-1e30F, 0},
                                         ByteCase{infinity, 0}, ByteCase{-infinity, 0},
                                         ByteCase{std::numeric_limits<float>::quiet_NaN(), 0}));

} // namespace
} // namespace tessaro
