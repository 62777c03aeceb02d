#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace tessaro {

/// Places of a channel's parameters: the background at block (gx, gy) of the background grid is
/// curvatureX * (gx - centreX)^2 + curvatureY * (gy - centreY)^2 + level. Centres count blocks, the level is
/// an intensity.
enum ModelParameter : std::size_t { curvatureX, centreX, curvatureY, centreY, level };

inline constexpr std::size_t modelParameterCount = 5;

/// One number for each parameter of each channel: [channel 0..2][ModelParameter].
using ModelParameters = std::array<std::array<double, modelParameterCount>, 3>;

/// The smooth background that is fitted to the measured one, for viewing only: the contrast tests read what
/// was measured. It starts flat, with its centre far outside the grid.
struct BackgroundModel {
    ModelParameters parameters = {{{0, 600, 0, 600, 255}, {0, 600, 0, 600, 200}, {0, 600, 0, 600, 200}}};

    // Each fit sets both bounds anew around the parameters before it reads them.
    ModelParameters lower = {{lowerAtStart, lowerAtStart, lowerAtStart}};
    ModelParameters upper = {{upperAtStart, upperAtStart, upperAtStart}};

    ModelParameters steps = {{stepsAtStart, stepsAtStart, stepsAtStart}}; // between trials, above 0
    std::int32_t searchSteps = 1000;                                      // to either side of a parameter
    std::int32_t modelFitted = 1;                                         // cleared by a reset; nobody asks

private:
    using ChannelParameters = std::array<double, modelParameterCount>;
    static constexpr ChannelParameters lowerAtStart = {-0.01, 0, -0.01, 0, 10};
    static constexpr ChannelParameters upperAtStart = {0.01, 1000, 0.01, 1000, 255};
    static constexpr ChannelParameters stepsAtStart = {0.000001, 2, 0.000001, 2, 0.1};
};

} // namespace tessaro
