#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace tessaro {

/// Standard deviation of the blur, in frame pixels, of what lies so far from the focus: about three tenths of
/// the distance, which is the cone of light of an objective with a numerical aperture of 0.5. Everything
/// beyond `maximumBlurPixels` looks alike.
double BlurPixels(double distanceUm);

inline constexpr double maximumBlurPixels = 256.0;

/// How to blur cheaply: what is much blurred is drawn with fewer samples, and made large again after it.
struct BlurPlan {
    int reduction = 1;         // frame pixels a sample, a power of two
    double sigmaSamples = 0.0; // what is left to blur
    int marginSamples = 0;     // around the frame, so far as light is blurred into it
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

/// The frame's samples out of a plane that was drawn by the plan: straight lines between samples.
/// `plane` is [frameHeight / reduction + margins][planeWidth].
void EnlargeToFrame(const BlurPlan& plan, const std::vector<float>& plane, int planeWidth,
                    std::span<float> frame);

} // namespace tessaro
