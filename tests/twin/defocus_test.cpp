#include "imaging/frame_buffer.h"
#include "twin/defocus.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numeric>

namespace tessaro {
namespace {

TEST(Defocus, BlurGrowsWithTheDistanceUpToItsLimit) {
    EXPECT_EQ(BlurPixels(0.0), 0.0);
    EXPECT_NEAR(BlurPixels(10.0), 7.392, 1e-9); // 0.3 * 2.464 * 10
    EXPECT_EQ(BlurPixels(-10.0), BlurPixels(10.0));
    EXPECT_EQ(BlurPixels(1e9), maximumBlurPixels);
}

TEST(Defocus, DrawsAsManySamplesAsPixelsWhereItIsSharp) {
    const BlurPlan plan = PlanBlur(0.0);
    EXPECT_EQ(plan.reduction, 1);
    EXPECT_EQ(plan.sigmaSamples, 0.0);
    EXPECT_EQ(plan.marginSamples, 0);
    EXPECT_EQ(PlanBlur(2.9).reduction, 1);
    EXPECT_EQ(PlanBlur(3.0).reduction, 2);
    EXPECT_EQ(PlanBlur(maximumBlurPixels).reduction, 128);
}

TEST(Defocus, MarginsReachThreeDeviations) {
    for (const double blur : {0.1, 1.0, 2.9, 3.1, 17.0, 256.0}) {
        const BlurPlan plan = PlanBlur(blur);
        EXPECT_GE(plan.marginSamples, 3.0 * plan.sigmaSamples) << blur;
        EXPECT_GE(plan.marginSamples, 1) << blur;
    }
}

TEST(Defocus, BlurSpreadsAPointByItsDeviation) {
    constexpr int side = 41;
    constexpr double sigma = 2.0;
    std::vector<float> samples(side * side, 0.0F);
    samples[side * 20 + 20] = 1.0F;
    GaussianBlur().Apply(sigma, side, side, samples);
    EXPECT_NEAR(std::accumulate(samples.begin(), samples.end(), 0.0), 1.0, 1e-5);
    double across = 0.0;
    double down = 0.0;
    for (int row = 0; row < side; ++row)
        for (int column = 0; column < side; ++column) {
            const auto weight = static_cast<double>(samples[static_cast<std::size_t>(side * row + column)]);
            across += weight * std::pow(column - 20, 2);
            down += weight * std::pow(row - 20, 2);
        }
    EXPECT_NEAR(std::sqrt(across), sigma, 0.04); // cut off at three deviations
    EXPECT_NEAR(std::sqrt(down), sigma, 0.04);
}

TEST(Defocus, AnEvenPlaneStaysEvenUpToItsEdges) {
    std::vector<float> samples(30 * 20, 0.7F);
    GaussianBlur().Apply(2.5, 30, 20, samples);
    for (const float sample : samples)
        EXPECT_NEAR(sample, 0.7F, 1e-6F);
}

TEST(Defocus, EnlargingKeepsAStraightRiseInItsPlace) {
    const BlurPlan plan = {.reduction = 8, .sigmaSamples = 2.0, .marginSamples = 7};
    const int width = frameWidth / 8 + 14;
    const int height = (frameHeight + 7) / 8 + 14;
    std::vector<float> plane;
    for (int row = 0; row < height; ++row)
        for (int column = 0; column < width; ++column) // the frame pixel in the middle of the sample
            plane.push_back(static_cast<float>(8.0 * (column - 7 + 0.5) + 2.0 * 8.0 * (row - 7 + 0.5)));
    std::vector<float> frame(framePixelCount);
    EnlargeToFrame(plan, plane, width, frame);
    for (const int row : {0, 500, frameHeight - 1})
        for (const int column : {0, 77, frameWidth - 1})
            EXPECT_NEAR(frame[static_cast<std::size_t>(row * frameWidth + column)],
                        column + 0.5 + 2.0 * (row + 0.5), 0.01);
}

} // namespace
} // namespace tessaro
