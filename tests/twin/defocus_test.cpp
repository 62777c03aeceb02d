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
    EXPECT_NEAR(BlurPixels(0.0), 0.6324, 1e-4);  // 2.464 * 0.21 * 0.55 / 0.45
    EXPECT_NEAR(BlurPixels(10.0), 6.2402, 1e-4); // with it, 2.464 * 10 * tan(26.74 degrees) / 2 = 6.2081
    EXPECT_NEAR(BlurPixels(100.0) / BlurPixels(50.0), 2.0, 0.001) << "far away there is only the cone";
    EXPECT_EQ(BlurPixels(-10.0), BlurPixels(10.0));
    EXPECT_EQ(BlurPixels(1e9), maximumBlurPixels);
}

TEST(Defocus, ALevelWaferIsOneTile) {
    EXPECT_EQ(TilesOf(-7.5, {}), (std::vector<FrameTile>{{0, 0, frameWidth, frameHeight, -7.5}}));
}

TEST(Defocus, OneTileIsEnoughWhereTheFocusRisesByLessThanShows) {
    EXPECT_EQ(TilesOf(0.0, {0.0009, -0.0011}).size(), 1U) << "0.45 um across, 0.46 um down";
    EXPECT_EQ(TilesOf(-100.0, {0.01, 0.01}).size(), 1U) << "5 um of 95";
}

TEST(Defocus, TilesFollowTheFocusAlongATilt) {
    const std::vector<FrameTile> across = TilesOf(0.0, {0.00995, 0.0}); // rises by 4.975 um
    ASSERT_EQ(across.size(), 10U);
    EXPECT_EQ(across[0], (FrameTile{0, 0, 123, frameHeight, across[0].distanceUm}));
    EXPECT_NEAR(across[0].distanceUm, 0.00995 * 554.5 / 2.464, 1e-9) << "the focus is lower on the left";
    EXPECT_NEAR(across[9].distanceUm, -0.00995 * 554.0 / 2.464, 1e-9);
    const std::vector<FrameTile> down = TilesOf(3.0, {0.0, 0.002}); // 0.83 um
    ASSERT_EQ(down.size(), 2U);
    EXPECT_NEAR(down[0].distanceUm, 3.0 - 0.002 * 257.0 / 2.464, 1e-9) << "+Y is at the top of the frame";
}

TEST(Defocus, TilesCoverTheFrameOnce) {
    for (const double tilt : {0.0, 0.003, 0.02, -1.0}) {
        std::vector<int> covered(framePixelCount);
        for (const FrameTile& tile : TilesOf(1.0, {tilt, -tilt}))
            for (int row = tile.top; row < tile.top + tile.height; ++row)
                for (int column = tile.left; column < tile.left + tile.width; ++column)
                    ++covered[static_cast<std::size_t>(row * frameWidth + column)];
        EXPECT_EQ(std::ranges::count(covered, 1), framePixelCount) << tilt;
    }
    EXPECT_EQ(TilesOf(0.0, {1.0, 1.0}).size(), 256U) << "no more than this";
}

TEST(Defocus, DrawsFewerSamplesWhereItIsBlurred) {
    EXPECT_EQ(PlanBlur(BlurPixels(0.0)).reduction, 1);
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
    EnlargeToFrame(plan, plane, width, {.width = frameWidth, .height = frameHeight}, frame);
    for (const int row : {0, 500, frameHeight - 1})
        for (const int column : {0, 77, frameWidth - 1})
            EXPECT_NEAR(frame[static_cast<std::size_t>(row * frameWidth + column)],
                        column + 0.5 + 2.0 * (row + 0.5), 0.01);
}

TEST(Defocus, EnlargingTouchesTheTileAlone) {
    for (const int reduction : {1, 2}) {
        const BlurPlan plan = {.reduction = reduction, .sigmaSamples = 0.5, .marginSamples = 3};
        const FrameTile tile = {.left = 40, .top = 30, .width = 20, .height = 10};
        const int width = 20 / reduction + 6;
        const int height = 10 / reduction + 6;
        const std::vector<float> plane(static_cast<std::size_t>(width * height), 1.0F);
        std::vector<float> frame(framePixelCount);
        EnlargeToFrame(plan, plane, width, tile, frame);
        EXPECT_EQ(std::ranges::count(frame, 1.0F), 20 * 10);
        EXPECT_EQ(frame[30 * frameWidth + 40], 1.0F);
        EXPECT_EQ(frame[39 * frameWidth + 59], 1.0F);
    }
}

TEST(Defocus, WithAsManySamplesAsPixelsEachIsItsOwn) {
    const BlurPlan plan = {.reduction = 1, .sigmaSamples = 0.5, .marginSamples = 2};
    std::vector<float> plane(8 * 7); // [3 + 2 * 2][4 + 2 * 2]
    std::iota(plane.begin(), plane.end(), 0.0F);
    std::vector<float> frame(framePixelCount);
    EnlargeToFrame(plan, plane, 8, {.left = 0, .top = 0, .width = 4, .height = 3}, frame);
    EXPECT_EQ(frame[0], 2.0F * 8 + 2);
    EXPECT_EQ(frame[2 * frameWidth + 3], 4.0F * 8 + 5);
}

} // namespace
} // namespace tessaro
