#pragma once

#include "simulated_field/planar_geometry.h"

#include <cstddef>
#include <span>
#include <vector>

namespace tessaro {

/// The objective, of a magnification of 20, and the light.
inline constexpr double numericalAperture = 0.45;
inline constexpr double wavelengthUm = 0.55;

/// Standard deviation of the blur, in frame pixels, of what lies so far from the focus: what diffraction
/// leaves at the focus, and the cone of light beside it. Everything beyond `maximumBlurPixels` looks alike.
double BlurPixels(double distanceUm);

inline constexpr double maximumBlurPixels = 256.0;

/// A part of the frame that is drawn as if all of it were equally far from the focus. Frame pixels, rows from
/// the top down.
struct FrameTile {
    int left = 0;
    int top = 0;
    int width = 0;
    int height = 0;
    double distanceUm = 0.0; // the stage's Z less the focus, at the tile's middle

    friend bool operator==(const FrameTile&, const FrameTile&) = default;
};

/// The tiles of a frame whose middle is so far from the focus: as many as it takes for the blur to be right
/// everywhere on a wafer that is so tilted, up to a limit. One for most wafers.
std::vector<FrameTile> TilesOf(double distanceUm, Vertex tiltUmPerUm);

/// How to blur cheaply: what is much blurred is drawn with fewer samples, and made large again after it.
struct BlurPlan {
    int reduction = 1;         // frame pixels a sample, a power of two
    double sigmaSamples = 0.0; // what is left to blur
    int marginSamples = 0;     // around the tile, so far as light is blurred into it
};

BlurPlan PlanBlur(double blurPixels);

/// Blurs rows and columns by a Gaussian. Beside the plane its edge goes on.
class GaussianBlur {
public:
    void Apply(double sigmaSamples, int width, int height, std::vector<float>& samples);

private:
    void MakeKernel(double sigmaSamples);
    void BlurAcross(const float* source, std::size_t columns, float* target);
    void BlurDown(std::size_t row, std::size_t columns, std::size_t rows, float* target) const;

    std::vector<float> m_kernel; // from the centre out
    std::vector<float> m_row;
    std::vector<float> m_across;
};

/// The tile's samples of the frame out of a plane that was drawn by the plan: straight lines between samples.
/// `plane` is [tile.height / reduction + margins][planeWidth], `frame` the whole frame.
void EnlargeToFrame(const BlurPlan& plan, const std::vector<float>& plane, int planeWidth,
                    const FrameTile& tile, std::span<float> frame);

} // namespace tessaro
