#include "analysis/background_model.h"

#include "analysis/line_search.h"
#include "analysis/pixel_access.h"

#include <cmath>

namespace tessaro {
namespace {

constexpr double centreAtReset = 600; // blocks

double Square(double value) {
    return value * value;
}

/// The whole part's low eight bits, of negative numbers in two's complement. A float of 2^31 or more is a
/// multiple of 256, so the 0 of what an int cannot hold is right for numbers; what is none is 0 as well.
std::uint8_t LowByte(float value) {
    constexpr float intEnd = 2147483648.0F;
    return std::fabs(value) < intEnd ? static_cast<std::uint8_t>(static_cast<std::int32_t>(value)) : 0;
}

void PaintBlock(const BackgroundGrid& background, bool fitted, int gx, int gy, std::uint8_t* view) {
    const auto intensity = [&](int channel) {
        return LowByte(fitted ? background.Fitted(channel, gx, gy) : background.Measured(channel, gx, gy));
    };
    const std::uint8_t redByte = intensity(red);
    const std::uint8_t greenByte = intensity(green);
    const std::uint8_t blueByte = intensity(blue);
    for (int y = gy * gridBlockHeight; y < (gy + 1) * gridBlockHeight; ++y) {
        std::uint8_t* pixel = view + PixelOffset(gx * gridBlockWidth, y);
        for (int i = 0; i < gridBlockWidth; ++i, pixel += bytesPerPixel) {
            pixel[ChannelByte(red)] = redByte;
            pixel[ChannelByte(green)] = greenByte;
            pixel[ChannelByte(blue)] = blueByte;
        }
    }
}

} // namespace

double ModelValue(const BackgroundModel& model, int channel, int gx, int gy) {
    const auto& P = model.parameters[static_cast<std::size_t>(channel)];
    return P[curvatureX] * Square(gx - P[centreX]) + P[curvatureY] * Square(gy - P[centreY]) + P[level];
}

double ModelError(const BackgroundModel& model, const BackgroundGrid& background, int channel) {
    double sum = 0;
    for (int gx = 0; gx < gridSize; ++gx) {
        for (int gy = 0; gy < gridSize; ++gy)
            sum += Square(background.Measured(channel, gx, gy) - ModelValue(model, channel, gx, gy));
    }
    return sum;
}

void LineSearchParameter(BackgroundModel& model, const BackgroundGrid& background, int channel,
                         ModelParameter parameter) {
    const auto c = static_cast<std::size_t>(channel);
    const LineSearch search(model.parameters[c], background, channel, parameter);
    model.parameters[c][parameter] =
        search.BestOf({model.lower[c][parameter], model.upper[c][parameter], model.steps[c][parameter]});
}

void FitBackgroundModel(BackgroundModel& model, BackgroundGrid& background) {
    for (std::size_t c = 0; c < channelCount; ++c) {
        for (std::size_t k = 0; k < modelParameterCount; ++k) {
            const double reach = model.steps[c][k] * model.searchSteps;
            model.lower[c][k] = model.parameters[c][k] - reach;
            model.upper[c][k] = model.parameters[c][k] + reach;
        }
    }
    for (int channel = 0; channel < channelCount; ++channel) {
        for (const ModelParameter parameter : {curvatureX, centreX, curvatureY, centreY, level})
            LineSearchParameter(model, background, channel, parameter);
    }
    for (int channel = 0; channel < channelCount; ++channel) {
        for (int gx = 0; gx < gridSize; ++gx) {
            for (int gy = 0; gy < gridSize; ++gy)
                background.SetFitted(channel, gx, gy, static_cast<float>(ModelValue(model, channel, gx, gy)));
        }
    }
}

void ResetBackgroundModel(BackgroundModel& model, const FrameRecord& frame) {
    for (std::size_t c = 0; c < channelCount; ++c) {
        const double reach = model.steps[c][level] * model.searchSteps;
        model.parameters[c] = {0, centreAtReset, 0, centreAtReset, frame.bgPeak[c]};
        model.lower[c][level] = frame.bgPeak[c] - reach;
        model.upper[c][level] = frame.bgPeak[c] + reach;
    }
    model.modelFitted = 0;
}

int PaintBackground(const BackgroundGrid& background, bool fitted, std::uint8_t* view) {
    for (int gy = 0; gy < gridSize; ++gy) {
        for (int gx = 0; gx < gridSize; ++gx)
            PaintBlock(background, fitted, gx, gy, view);
    }
    return 1;
}

} // namespace tessaro
