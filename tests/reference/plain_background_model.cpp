#include "reference/plain_analysis.h"

#include <cmath>
#include <cstddef>

namespace tessaro::reference {
namespace {

constexpr int channelCount = 3;
constexpr int parameterCount = 5;

std::size_t Index(int value) {
    return static_cast<std::size_t>(value);
}

/// The whole part modulo 256, counted up from 0; 0 of what is no finite number.
std::uint8_t WholeByte(float value) {
    if (!std::isfinite(value))
        return 0;
    double rest = std::fmod(std::trunc(static_cast<double>(value)), 256.0);
    if (rest < 0.0)
        rest = rest + 256.0;
    return static_cast<std::uint8_t>(rest);
}

} // namespace

double ModelValue(const PlainAnalysis& analysis, int channel, int gx, int gy) {
    const auto& P = analysis.analyzer.backgroundModel.parameters[Index(channel)];
    const double dx = static_cast<double>(gx) - P[1];
    const double dy = static_cast<double>(gy) - P[3];
    return P[0] * (dx * dx) + P[2] * (dy * dy) + P[4];
}

double ModelError(const PlainAnalysis& analysis, int channel) {
    double error = 0.0;
    for (int gx = 0; gx < 16; ++gx) {
        for (int gy = 0; gy < 16; ++gy) {
            const double measured = analysis.measured.background.Measured(channel, gx, gy);
            const double difference = measured - ModelValue(analysis, channel, gx, gy);
            error = error + difference * difference;
        }
    }
    return error;
}

void LineSearchParameter(PlainAnalysis& analysis, int channel, int parameter) {
    BackgroundModel& model = analysis.analyzer.backgroundModel;
    double& P = model.parameters[Index(channel)][Index(parameter)];
    const double L = model.lower[Index(channel)][Index(parameter)];
    const double U = model.upper[Index(channel)][Index(parameter)];
    const double S = model.steps[Index(channel)][Index(parameter)];

    P = L;
    double bestError = ModelError(analysis, channel);
    double bestValue = L;
    double v = L;
    while (U > v) {
        P = v;
        const double e = ModelError(analysis, channel);
        if (bestError > e) {
            bestError = e;
            bestValue = v;
        }
        v = v + S;
    }
    P = bestValue;
}

void FitBackgroundModel(PlainAnalysis& analysis) {
    BackgroundModel& model = analysis.analyzer.backgroundModel;
    for (int c = 0; c < channelCount; ++c) {
        for (int k = 0; k < parameterCount; ++k) {
            const double P = model.parameters[Index(c)][Index(k)];
            const double S = model.steps[Index(c)][Index(k)];
            model.lower[Index(c)][Index(k)] = P - S * static_cast<double>(model.searchSteps);
            model.upper[Index(c)][Index(k)] = P + S * static_cast<double>(model.searchSteps);
        }
    }
    for (int c = 0; c < channelCount; ++c)
        for (int k = 0; k < parameterCount; ++k)
            LineSearchParameter(analysis, c, k);
    for (int c = 0; c < channelCount; ++c)
        for (int gx = 0; gx < 16; ++gx)
            for (int gy = 0; gy < 16; ++gy)
                analysis.measured.background.SetFitted(c, gx, gy,
                                                       static_cast<float>(ModelValue(analysis, c, gx, gy)));
}

void ResetBackgroundModel(PlainAnalysis& analysis) {
    BackgroundModel& model = analysis.analyzer.backgroundModel;
    for (int c = 0; c < channelCount; ++c) {
        const double peak = analysis.frame.bgPeak[Index(c)];
        const double S = model.steps[Index(c)][4];
        model.parameters[Index(c)] = {0.0, 600.0, 0.0, 600.0, peak};
        model.lower[Index(c)][4] = peak - S * static_cast<double>(model.searchSteps);
        model.upper[Index(c)][4] = peak + S * static_cast<double>(model.searchSteps);
    }
    model.modelFitted = 0;
}

int PaintBackground(const PlainAnalysis& analysis, std::uint8_t* view, int fitted) {
    const BackgroundGrid& grid = analysis.measured.background;
    const int width = frameWidth / 16;
    const int height = frameHeight / 16;
    for (int gy = 0; gy < 16; ++gy) {
        for (int gx = 0; gx < 16; ++gx) {
            for (int j = 0; j < height; ++j) {
                for (int i = 0; i < width; ++i) {
                    const int x = gx * width + i;
                    const int y = gy * height + j;
                    std::uint8_t* pixel = view + static_cast<std::ptrdiff_t>((x + y * frameWidth) * 4);
                    for (int c = 0; c < channelCount; ++c)
                        pixel[2 - c] =
                            WholeByte(fitted != 0 ? grid.Fitted(c, gx, gy) : grid.Measured(c, gx, gy));
                }
            }
        }
    }
    return 1;
}

} // namespace tessaro::reference
