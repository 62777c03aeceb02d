#include "analysis/background_model.h"
#include "analysis/field_analysis.h"
#include "analysis/pixel_access.h"
#include "reference/plain_analysis.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <functional>
#include <limits>
#include <memory>
#include <random>
#include <vector>

namespace tessaro {
namespace {

/// The model of the program and its plain transcription side by side, on the same measured background; every
/// step is run on both and compared bit for bit.
class FitPair : public testing::Test {
protected:
    using Intensity = std::function<double(int gx, int gy)>;

    int Below(int end) { return static_cast<int>(random() % static_cast<unsigned>(end)); }
    double Between(double low, double high) {
        return std::uniform_real_distribution<double>(low, high)(random);
    }

    void SetGrid(const Intensity& intensity) {
        for (int channel = 0; channel < channelCount; ++channel) {
            for (int gx = 0; gx < gridSize; ++gx) {
                for (int gy = 0; gy < gridSize; ++gy) {
                    const auto value = static_cast<float>(intensity(gx, gy));
                    grid.SetMeasured(channel, gx, gy, value);
                    plain->measured.background.SetMeasured(channel, gx, gy, value);
                }
            }
        }
    }

    void Reset(double peak) {
        frame.bgPeak = {peak, peak, peak};
        plain->frame.bgPeak = frame.bgPeak;
        ResetBackgroundModel(model, frame);
        reference::ResetBackgroundModel(*plain);
        ExpectSame();
    }

    void Fit(int sweeps = 1) {
        for (int sweep = 0; sweep < sweeps; ++sweep) {
            FitBackgroundModel(model, grid);
            reference::FitBackgroundModel(*plain);
            ExpectSame();
        }
    }

    /// Searches the parameter on both sides after giving them the model.
    void Search(int channel, ModelParameter parameter) {
        plain->analyzer.backgroundModel = model;
        LineSearchParameter(model, grid, channel, parameter);
        reference::LineSearchParameter(*plain, channel, static_cast<int>(parameter));
        ExpectSame();
    }

    void ExpectSame() {
        const BackgroundModel& other = plain->analyzer.backgroundModel;
        EXPECT_TRUE(Same(model.parameters, other.parameters)) << "parameters";
        EXPECT_TRUE(Same(model.lower, other.lower)) << "lower bounds";
        EXPECT_TRUE(Same(model.upper, other.upper)) << "upper bounds";
        EXPECT_EQ(model.modelFitted, other.modelFitted);
        EXPECT_TRUE(std::memcmp(&grid, &plain->measured.background, sizeof grid) == 0) << "grid";
    }

    static bool Same(const ModelParameters& a, const ModelParameters& b) {
        return std::memcmp(&a, &b, sizeof a) == 0;
    }

    std::mt19937 random{3};
    BackgroundModel model;
    BackgroundGrid grid;
    FrameRecord frame;
    std::unique_ptr<reference::PlainAnalysis> plain = std::make_unique<reference::PlainAnalysis>();
};

TEST_F(FitPair, AgreesOnFlatGrids) {
    for (const double intensity : {150, 0, 255}) {
        SetGrid([&](int, int) { return intensity; });
        Reset(intensity);
        Fit(3);
    }
    Reset(140); // the peak of another frame
    Fit(3);
}

TEST_F(FitPair, AgreesOnFlatGridsWithNoise) {
    for (const int noise : {1, 3, 25}) {
        SetGrid([&](int, int) { return 150 + Below(2 * noise + 1) - noise; });
        Reset(150);
        Fit(3);
    }
}

TEST_F(FitPair, AgreesOnVignettedGrids) {
    for (const double fall : {0.01, 0.06, 0.2}) {
        for (const int noise : {0, 2}) {
            SetGrid([&](int gx, int gy) {
                const double distance = std::hypot(gx - 6.5, gy - 8.5);
                return std::trunc(200 - fall * distance * distance) + Below(2 * noise + 1) - noise;
            });
            Reset(200);
            Fit(3);
        }
    }
}

TEST_F(FitPair, AgreesOnRandomGrids) {
    for (int i = 0; i < 3; ++i) {
        SetGrid([&](int, int) { return Below(256); });
        Reset(Below(256));
        Fit(3);
    }
}

TEST_F(FitPair, AgreesWithoutAReset) {
    SetGrid([&](int gx, int gy) { return 190 - gx + Below(3) + gy / 4; });
    Fit(6);
    SetGrid([&](int gx, int) { return 90 + gx; });
    Fit(2);
}

TEST_F(FitPair, AgreesOnAnyModelStepAndBounds) {
    constexpr ModelParameter all[] = {curvatureX, centreX, curvatureY, centreY, level};
    for (int i = 0; i < 400; ++i) {
        const int noise = Below(4);
        const double sizes[] = {1e-18, 1e-12, 1e-6, 1e-3, 0.1, 1};
        const double curvature = sizes[Below(6)];
        SetGrid([&](int gx, int gy) { return 100 + (i % 5) * gx - (i % 3) * gy + Below(noise + 1); });
        const int channel = i % 3;
        const auto c = static_cast<std::size_t>(channel);
        model.parameters[c] = {Between(-curvature, curvature), Between(-20, 600),
                               Between(-curvature, curvature), Between(-20, 600), Between(0, 255)};
        const ModelParameter parameter = all[Below(5)];
        // At least some units in the parameter's last place, or the trials would not move.
        const double wanted = Below(2) == 0 ? 1.0 : sizes[Below(6)];
        const double step = std::max(wanted, std::fabs(model.parameters[c][parameter]) * 1e-14);
        model.steps[c][parameter] = step;
        model.lower[c][parameter] = model.parameters[c][parameter] - step * Below(200);
        model.upper[c][parameter] = model.parameters[c][parameter] + step * Below(200);
        Search(channel, parameter);
    }
}

TEST_F(FitPair, AgreesWhereTheErrorHardlyChanges) {
    // Steps so small that neighbouring trials differ by rounding alone.
    SetGrid([&](int, int) { return 150 + Below(7); });
    for (const double step : {1e-13, 1e-12, 1e-10, 1e-8}) {
        model.parameters[red] = {1e-5, 8, -1e-5, 8, 152.9};
        model.steps[red] = {step, step, step, step, step};
        for (const ModelParameter parameter : {level, centreX, centreY}) {
            model.lower[red][parameter] = model.parameters[red][parameter] - 500 * step;
            model.upper[red][parameter] = model.parameters[red][parameter] + 500 * step;
            Search(red, parameter);
        }
    }
}

TEST_F(FitPair, AgreesOnTrialsThatMirrorEachOther) {
    // Both sides of 7.5 are equally good, but for rounding.
    SetGrid([&](int gx, int) { return 100 + (gx == 0 || gx == 15 ? 40 : 0); });
    model.parameters[red] = {-0.3, 7.5, 0, 0, 101};
    model.steps[red][centreX] = 0.5;
    model.lower[red][centreX] = -92.5;
    model.upper[red][centreX] = 107.6;
    Search(red, centreX);
}

TEST_F(FitPair, AgreesWhereNumbersEnd) {
    SetGrid([&](int, int) { return 150; });
    const double ends[] = {1e60,
                           1e105,
                           1e150,
                           1e170,
                           1e300,
                           1e-170,
                           std::numeric_limits<double>::infinity(),
                           std::numeric_limits<double>::quiet_NaN()};
    for (const double end : ends) {
        for (const ModelParameter odd : {curvatureX, centreX, curvatureY, centreY, level}) {
            model.parameters[red] = {0.01, 3, 0.01, 3, 100};
            model.parameters[red][odd] = end;
            for (const ModelParameter searched : {curvatureX, centreY, level}) {
                model.steps[red][searched] = 1;
                model.lower[red][searched] = 1;
                model.upper[red][searched] = 300;
                Search(red, searched);
                model.parameters[red][odd] = end;
            }
        }
    }
    // Errors of some trials are infinite, of others finite; of some no number.
    model.parameters[red] = {0, 0, 0, 0, 0};
    model.steps[red][level] = 1e153;
    model.lower[red][level] = -3e155;
    model.upper[red][level] = 3e155;
    Search(red, level);
    model.parameters[red] = {0, 1e160, 0, 0, 0}; // 0 times an infinite square
    model.lower[red][level] = 140;
    model.steps[red][level] = 1;
    model.upper[red][level] = 160;
    Search(red, level);
}

TEST_F(FitPair, AgreesOnTheView) {
    SetGrid([&](int, int) { return Between(-300, 600); });
    for (int channel = 0; channel < channelCount; ++channel) {
        grid.SetFitted(channel, 3, channel, 1e10F);
        plain->measured.background.SetFitted(channel, 3, channel, 1e10F);
    }
    for (const bool fitted : {false, true}) {
        std::vector<std::uint8_t> view(frameByteCount, 7);
        std::vector<std::uint8_t> plainView(frameByteCount, 7);
        EXPECT_EQ(PaintBackground(grid, fitted, view.data()),
                  reference::PaintBackground(*plain, plainView.data(), fitted ? 1 : 0));
        EXPECT_TRUE(view == plainView);
    }
}

} // namespace
} // namespace tessaro
