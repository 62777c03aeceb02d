#include "twin/stage/stage_axes.h"

#include <gtest/gtest.h>

#include <limits>

namespace tessaro {
namespace {

constexpr StageLimits limits = {{-100.0, -200.0, -30.0}, {1000.0, 2000.0, 30.0}};

TEST(StageAxes, StandAtTheNearestStep) {
    const StageAxes axes({500.3, 500.4, -0.4}, limits, 1.0); // 800.48, 800.64 and -0.64 steps
    EXPECT_EQ(axes.PositionAt(1.0), (StagePosition{500.0, 500.625, -0.625}));
    EXPECT_EQ(axes.StepAt(1, 1.0), 801);
}

TEST(StageAxes, MoveEachByItself) {
    StageAxes axes({}, limits, 1.0);
    EXPECT_TRUE(axes.MoveTo(1, 160, 1600.0, 0.0));
    EXPECT_FALSE(axes.MovesAt(0, 0.1));
    EXPECT_TRUE(axes.MovesAt(1, 0.1));
    EXPECT_EQ(axes.PositionAt(10.0), (StagePosition{0.0, 100.0, 0.0}));
}

TEST(StageAxes, GoNoFartherThanToTheirLimits) {
    StageAxes axes({}, limits, 1.0);
    EXPECT_TRUE(axes.MoveTo(0, -160, 1600.0, 0.0));
    EXPECT_FALSE(axes.MoveTo(0, -161, 1600.0, 0.0));
    EXPECT_FALSE(axes.MoveTo(1, 1'000'000'000'000, 1600.0, 0.0));
    EXPECT_FALSE(axes.MoveTo(2, std::numeric_limits<std::int64_t>::min(), 1600.0, 0.0));
    EXPECT_EQ(axes.PositionAt(100.0), (StagePosition{-100.0, 2000.0, -30.0}));
    axes.Put({1e9, -1e9, 3.0}, 200.0);
    EXPECT_EQ(axes.PositionAt(200.0), (StagePosition{1000.0, -200.0, 3.125})); // 4.8 steps
}

TEST(StageAxes, AreSoManyTimesAsFast) {
    StageAxes axes({}, limits, 10.0);
    axes.MoveTo(0, 1600, 1600.0, 0.0); // 1.1 s at their usual pace
    EXPECT_NEAR(axes.EndTime(0), 0.11, 1e-9);
    EXPECT_NEAR(axes.PositionAt(0.06).x, 880.0 * 0.625, 1e-9);
}

TEST(StageAxes, UsuallyReachAWholeWaferAndTheFocusFromWhereTheyStand) {
    const StageLimits usual = UsualLimitsAround({50'000.0, 50'000.0, 700.0});
    EXPECT_TRUE(IsWithin({0.0, 100'000.0, -1000.0}, usual));
    EXPECT_FALSE(IsWithin({0.0, 0.0, 3701.0}, usual));
    EXPECT_EQ(NearestWithin({-70'000.0, 1.0, 3701.0}, usual), (StagePosition{-60'000.0, 1.0, 3700.0}));
}

} // namespace
} // namespace tessaro
