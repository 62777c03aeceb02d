#include "twin/sensor_noise.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>

namespace tessaro {
namespace {

TEST(SensorNoise, TableHasMeanZeroAndDeviationOne) {
    const NoiseTable table;
    double sum = 0.0;
    double squares = 0.0;
    constexpr int count = 65536;
    for (std::uint64_t place = 0; place < count; ++place) {
        const auto number = static_cast<double>(*table.Piece(place));
        sum += number;
        squares += number * number;
    }
    EXPECT_NEAR(sum / count, 0.0, 1e-6);
    EXPECT_NEAR(squares / count, 1.0, 1e-5);
}

TEST(SensorNoise, PiecesAreWholeWhereverTheyStart) {
    const NoiseTable table;
    const float* const last = table.Piece(65535);
    EXPECT_EQ(last[NoiseTable::longestPiece - 1], table.Piece(0)[NoiseTable::longestPiece - 2]);
    EXPECT_EQ(table.Piece(UINT64_MAX), last); // a random word as it comes
}

TEST(SensorNoise, LevelsAreRoundedAndStayWithinTheirByte) {
    constexpr std::array light = {0.0F, 0.5F, 1.0F, 1.006F, 2.0F, 1000.0F};
    constexpr std::array<float, 6> noNoise = {};
    std::array<std::uint8_t, 6> levels = {};
    ExposeRow(light, {.level = 100.0F}, noNoise.data(), levels.data());
    EXPECT_EQ(levels, (std::array<std::uint8_t, 6>{0, 50, 100, 101, 200, 255}));
}

TEST(SensorNoise, VarianceGrowsWithTheLevel) {
    constexpr std::array light = {0.0F, 1.0F, 1.0F};
    constexpr std::array noise = {1.0F, 1.0F, -3.0F};
    std::array<std::uint8_t, 3> levels = {};
    ExposeRow(light, {.level = 60.0F, .variancePerLevel = 0.2F, .readVariance = 4.0F}, noise.data(),
              levels.data());
    EXPECT_EQ(levels[0], 2);  // the root of 4
    EXPECT_EQ(levels[1], 64); // 60 and the root of 16
    EXPECT_EQ(levels[2], 48);
}

} // namespace
} // namespace tessaro
