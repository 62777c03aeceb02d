#include "simulated_field/reproducible_random.h"
#include "twin/stage/axis_motion.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>

namespace tessaro {
namespace {

// With 16000 steps/s^2 a speed of 1600 steps/s is reached after 0.1 s and 80 steps.
constexpr double speed = 1600.0;
constexpr double motionRounding = 1e-9;

AxisMotion OnItsWay() {
    AxisMotion axis(0);
    axis.MoveTo(1600, speed, 0.0);
    return axis;
}

TEST(AxisMotion, StandsWhereItWasPut) {
    AxisMotion axis(-7);
    EXPECT_EQ(axis.PositionAt(100.0), -7.0);
    EXPECT_FALSE(axis.MovesAt(100.0));
    axis.Put(12, 100.0);
    EXPECT_EQ(axis.StepAt(100.0), 12);
    EXPECT_EQ(axis.PositionAt(99.0), -7.0);
}

TEST(AxisMotion, SpeedsUpGoesAndSlowsDown) {
    const AxisMotion axis = OnItsWay();
    EXPECT_NEAR(axis.EndTime(), 0.1 + 1440.0 / 1600.0 + 0.1, motionRounding);
    EXPECT_NEAR(axis.PositionAt(0.05), 20.0, motionRounding);
    EXPECT_NEAR(axis.PositionAt(0.1), 80.0, motionRounding);
    EXPECT_NEAR(axis.PositionAt(0.6), 880.0, motionRounding);
    EXPECT_NEAR(axis.PositionAt(1.05), 1580.0, motionRounding);
    EXPECT_EQ(axis.PositionAt(1.2), 1600.0);
    EXPECT_TRUE(axis.MovesAt(1.0999));
    EXPECT_FALSE(axis.MovesAt(1.1001));
}

TEST(AxisMotion, GoesBackwardsAsWell) {
    AxisMotion axis(1000);
    axis.MoveTo(-600, speed, 5.0);
    EXPECT_NEAR(axis.PositionAt(5.6), 1000.0 - 880.0, motionRounding);
    EXPECT_NEAR(axis.EndTime(), 6.1, motionRounding);
    EXPECT_EQ(axis.StepAt(7.0), -600);
}

TEST(AxisMotion, SlowsDownBeforeItsSpeedWhenTheWayIsShort) {
    AxisMotion axis(0);
    axis.MoveTo(40, speed, 0.0); // up to 800 steps/s after 20 steps
    EXPECT_NEAR(axis.PositionAt(0.05), 20.0, motionRounding);
    EXPECT_NEAR(axis.EndTime(), 0.1, motionRounding);
}

TEST(AxisMotion, SlowsDownAtItsOwnRate) {
    AxisMotion axis(0, {.acceleration = 16'000.0, .deceleration = 8'000.0});
    axis.MoveTo(1600, speed, 0.0); // 160 steps to slow down
    EXPECT_NEAR(axis.EndTime(), 0.1 + 1360.0 / 1600.0 + 0.2, motionRounding);
}

TEST(AxisMotion, StandsAtOnceWhereItIs) {
    AxisMotion axis(5);
    axis.MoveTo(5, speed, 3.0);
    EXPECT_FALSE(axis.MovesAt(3.0));
    EXPECT_EQ(axis.StepAt(3.0), 5);
}

TEST(AxisMotion, SlowsDownWhenStopped) {
    AxisMotion axis = OnItsWay();
    axis.Stop(0.6);
    EXPECT_NEAR(axis.EndTime(), 0.7, motionRounding);
    EXPECT_EQ(axis.StepAt(0.8), 960);
}

TEST(AxisMotion, StopsAtAWholeStep) {
    AxisMotion axis = OnItsWay();
    axis.Stop(0.60025); // at 880.4; 0.6 steps are gone before it slows down
    EXPECT_NEAR(axis.EndTime(), 0.60025 + 0.6 / 1600.0 + 0.1, motionRounding);
    EXPECT_EQ(axis.PositionAt(0.8), 961.0);
}

TEST(AxisMotion, StoppingWhatStandsOrHasJustBegunIsHarmless) {
    AxisMotion axis(3);
    axis.Stop(1.0);
    EXPECT_EQ(axis.PositionAt(2.0), 3.0);
    axis.MoveTo(100, speed, 3.0);
    axis.Stop(3.0);
    EXPECT_FALSE(axis.MovesAt(3.0));
    EXPECT_EQ(axis.PositionAt(4.0), 3.0);
}

TEST(AxisMotion, GoesOnWithoutSlowingDownWhenTheNewTargetIsAhead) {
    AxisMotion axis = OnItsWay();
    axis.MoveTo(2000, speed, 0.6);
    EXPECT_NEAR(axis.EndTime(), 0.1 + 1840.0 / 1600.0 + 0.1, motionRounding);
    EXPECT_NEAR(axis.PositionAt(0.7), 1040.0, motionRounding);
}

TEST(AxisMotion, TurnsWhenTheNewTargetIsBehind) {
    AxisMotion axis = OnItsWay();
    axis.MoveTo(0, speed, 0.6);
    EXPECT_NEAR(axis.PositionAt(0.7), 960.0, motionRounding);
    EXPECT_NEAR(axis.EndTime(), 0.7 + 0.1 + 800.0 / 1600.0 + 0.1, motionRounding);
}

TEST(AxisMotion, ComesBackToATargetThatIsTooNear) {
    AxisMotion axis = OnItsWay();
    axis.MoveTo(900, speed, 0.6);
    EXPECT_NEAR(axis.PositionAt(0.7), 960.0, motionRounding);
    EXPECT_NEAR(axis.EndTime(), 0.7 + 2.0 * std::sqrt(60.0 / 16'000.0), motionRounding);
    EXPECT_EQ(axis.StepAt(1.0), 900);
}

TEST(AxisMotion, SlowsDownToANewSpeed) {
    AxisMotion axis = OnItsWay();
    axis.MoveTo(1600, 800.0, 0.6); // 60 steps to the new speed, 20 to stand, 640 between them
    EXPECT_NEAR(axis.EndTime(), 0.6 + 0.05 + 640.0 / 800.0 + 0.05, motionRounding);
}

TEST(AxisMotion, RemembersForAWhileWhereItWas) {
    AxisMotion axis = OnItsWay();
    axis.MoveTo(0, speed, 0.6);
    axis.Stop(0.65);
    EXPECT_NEAR(axis.PositionAt(0.5), 720.0, motionRounding);
    EXPECT_NEAR(axis.PositionAt(0.05), 20.0, motionRounding);
}

TEST(AxisMotion, TellsTheStepsThatWereMadeAndNeverTheTargetBeforeItStands) {
    const AxisMotion axis = OnItsWay();
    EXPECT_EQ(axis.StepAt(0.051), 20);
    EXPECT_EQ(axis.StepAt(0.05), 20);
    EXPECT_EQ(axis.StepAt(1.0999999), 1599);
    AxisMotion back(0);
    back.MoveTo(-1600, speed, 0.0);
    EXPECT_EQ(back.StepAt(0.051), -20);
    EXPECT_EQ(back.StepAt(1.0999999), -1599);
}

/// Any commands at any time: the axis never jumps, never goes faster than told, and ends at its target.
TEST(AxisMotion, GoesSteadilyWhateverItIsTold) {
    ReproducibleRandom random(5);
    AxisMotion axis(0);
    double now = 0.0;
    for (int command = 0; command < 3000; ++command) {
        const double before = axis.PositionAt(now);
        const int target = random.WholeBetween(-3000, 3000);
        const bool stops = random.Chance(0.2);
        if (stops)
            axis.Stop(now);
        else
            axis.MoveTo(target, random.Between(1.0, 8000.0), now);
        ASSERT_NEAR(axis.PositionAt(now), before, 1e-6) << command;
        const double end = axis.EndTime();
        ASSERT_TRUE(std::isfinite(end));
        const double rest = axis.PositionAt(end + 1.0);
        ASSERT_EQ(rest, std::round(rest));
        if (!stops) {
            ASSERT_EQ(rest, target);
        }
        now += random.Between(0.0, 0.3);
        for (double time = now; time < now + 0.01; time += 0.001) {
            ASSERT_LE(std::abs(axis.PositionAt(time + 0.001) - axis.PositionAt(time)), 8.001) << command;
            if (axis.MovesAt(time)) {
                ASSERT_NE(static_cast<double>(axis.StepAt(time)), rest) << command;
            }
        }
    }
}

} // namespace
} // namespace tessaro
