#include "twin/exposure_way.h"

#include <gtest/gtest.h>

#include <cmath>

namespace tessaro {
namespace {

ExposureWay AtSpeed(double umPerSecond, double seconds) {
    return WayDuring(5.0, seconds, [&](double time) {
        return StagePosition{100.0 + umPerSecond * (time - 5.0), 7.0, 3.0};
    });
}

TEST(ExposureWay, OfAStageThatRestsIsOnePlace) {
    EXPECT_EQ(AtSpeed(0.0, 0.01), (ExposureWay{{{100.0, 7.0, 3.0}}, 0.0}));
}

TEST(ExposureWay, OfLessThanAPixelIsItsMiddle) {
    const ExposureWay way = AtSpeed(40.0, 0.01); // 0.4 um, 0.99 pixels
    ASSERT_EQ(way.places.size(), 1U);
    EXPECT_NEAR(way.places[0].x, 100.2, 1e-9);
    EXPECT_EQ(way.stretchUm, 0.0);
}

TEST(ExposureWay, OfSomePixelsIsBlurredAtItsMiddle) {
    const ExposureWay way = AtSpeed(400.0, 0.01); // 4 um, 9.9 pixels
    ASSERT_EQ(way.places.size(), 1U);
    EXPECT_NEAR(way.places[0].x, 102.0, 1e-9);
    EXPECT_NEAR(way.stretchUm, 4.0, 1e-9);
}

TEST(ExposureWay, OfManyPixelsHasMorePlaces) {
    const ExposureWay way = AtSpeed(1500.0, 0.01); // 15 um, 37 pixels
    ASSERT_EQ(way.places.size(), 3U);
    EXPECT_NEAR(way.places[0].x, 102.5, 1e-9);
    EXPECT_NEAR(way.places[1].x, 107.5, 1e-9);
    EXPECT_NEAR(way.places[2].x, 112.5, 1e-9);
    EXPECT_NEAR(way.stretchUm, 5.0, 1e-9);
    EXPECT_EQ(AtSpeed(1500.0, 1.0).places.size(), 4U) << "and never more than this";
}

TEST(ExposureWay, CountsTheWayThereAndBack) {
    const ExposureWay way = WayDuring(0.0, 1.0, [](double time) {
        return StagePosition{10.0 * (0.5 - std::abs(time - 0.5)), 0.0, 0.0}; // 5 um there and back
    });
    EXPECT_EQ(way.places.size(), 2U);
    EXPECT_NEAR(way.stretchUm, 5.0, 1e-9);
}

TEST(ExposureWay, AlongZAloneIsOneStretchOfZ) {
    const ExposureWay way = WayDuring(0.0, 1.0, [](double time) {
        return StagePosition{0.0, 0.0, 100.0 * time};
    });
    EXPECT_EQ(way, (ExposureWay{{{0.0, 0.0, 50.0}}, 0.0, 100.0}));
}

} // namespace
} // namespace tessaro
