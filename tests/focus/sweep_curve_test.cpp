#include "focus/sweep_curve.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <utility>
#include <vector>

namespace tessaro {
namespace {

using SweepVerdict = SweepCurve::Verdict;
using Scores = std::vector<float>;

/// A sweep whose sample i is at 1000 - 10 * i um.
class Sweep {
public:
    Sweep(float firstScore, const Scores& scores) : m_curve(firstScore) {
        for (const float score : scores)
            Add(score);
    }

    void Add(float score) {
        last = m_curve.Add(1000 - 10 * m_samples++, score);
        if (last != SweepVerdict::GoOn && endedAt < 0)
            endedAt = m_samples - 1;
    }

    std::optional<std::int32_t> PeakZ() const { return m_curve.PeakZ(); }

    SweepVerdict last = SweepVerdict::GoOn; // of the last sample
    int endedAt = -1;                       // the first sample that was not GoOn

private:
    SweepCurve m_curve;
    int m_samples = 0;
};

std::vector<SweepVerdict> VerdictsOf(float firstScore, const Scores& scores) {
    SweepCurve curve(firstScore);
    std::vector<SweepVerdict> verdicts;
    for (const float score : scores)
        verdicts.push_back(curve.Add(0, score));
    return verdicts;
}

constexpr auto keepsOn = SweepVerdict::GoOn;
constexpr auto passed = SweepVerdict::PeakPassed;
constexpr auto sharp = SweepVerdict::AlreadySharp;

TEST(SweepCurve, PassesThePeakBelowTwoThirdsOfTheHighestScore) {
    // Curvatures of samples 2, 3, 4: -8, 8 and 9 - score. Two thirds of 9 are 6.
    EXPECT_EQ(VerdictsOf(1.0F, {1.0F, 1.0F, 9.0F, 9.0F, 6.0F}).back(), keepsOn);
    EXPECT_EQ(VerdictsOf(1.0F, {1.0F, 1.0F, 9.0F, 9.0F, 5.9375F}),
              (std::vector<SweepVerdict>{keepsOn, keepsOn, keepsOn, keepsOn, passed}));
}

TEST(SweepCurve, PassesThePeakBelowTwoThirdsOfTheLargestCurvature) {
    // Curvatures of samples 2, 3, 4: -6, 6 and 9 - score. Two thirds of 6 are 4.
    EXPECT_EQ(VerdictsOf(3.0F, {3.0F, 3.0F, 9.0F, 9.0F, 5.0F}).back(), keepsOn);
    EXPECT_EQ(VerdictsOf(3.0F, {3.0F, 3.0F, 9.0F, 9.0F, 5.0625F}).back(), passed);
}

TEST(SweepCurve, PassesNoPeakThatIsBentByLessThanThreeTenthsOfTheScoreBesideIt) {
    // The curvature of sample 3 is 10 - base, that of sample 4 is 1.25; three tenths of 8 are 2.4.
    const auto verdict = [](float base) { return VerdictsOf(base, {base, base, 9.0F, 8.0F, 5.75F}).back(); };
    EXPECT_EQ(verdict(7.625F), keepsOn) << "2.375";
    EXPECT_EQ(verdict(7.5625F), passed) << "2.4375";
}

/// What has fallen below two thirds of the highest score has made the lowest small enough: the one threshold
/// is the other's.
TEST(SweepCurve, NeedsAHighestScoreOfMoreThanOneAndAHalfTimesTheLowest) {
    EXPECT_EQ(VerdictsOf(1.0F, {1.0F, 1.0F, 1.5F, 1.25F, 1.0F}).back(), keepsOn);
    EXPECT_EQ(VerdictsOf(1.0F, {1.0F, 1.0F, 1.625F, 1.25F, 1.0F}).back(), passed);
}

TEST(SweepCurve, ComparesWithTheScoreBeforeTheSweepToo) {
    // 9 is the highest only because of the frame before the first sample; then as above.
    EXPECT_EQ(VerdictsOf(9.0F, {3.0F, 3.0F, 6.0F, 6.0F, 5.0F}).back(), passed);
    EXPECT_EQ(VerdictsOf(3.0F, {3.0F, 3.0F, 6.0F, 6.0F, 5.0F}).back(), keepsOn);
}

TEST(SweepCurve, IsSharpAlreadyAboveTen) {
    EXPECT_EQ(VerdictsOf(1.0F, {1.0F, 5.0F, 10.0F}).back(), keepsOn);
    EXPECT_EQ(VerdictsOf(1.0F, {1.0F, 5.0F, std::nextafter(10.0F, 11.0F)}).back(), sharp);
}

TEST(SweepCurve, JudgesNothingBeforeItsThirdSample) {
    EXPECT_EQ(VerdictsOf(50.0F, {50.0F, 50.0F}), (std::vector<SweepVerdict>{keepsOn, keepsOn}));
}

TEST(SweepCurve, DoesNotCountItsFirstTwoSamplesAsHighest) {
    EXPECT_EQ(Sweep(0.005F, {5.0F, 5.0F, 0.005F, 0.005F}).PeakZ(), std::nullopt);
    EXPECT_NE(Sweep(0.005F, {0.005F, 0.005F, 5.0F}).PeakZ(), std::nullopt);
    // Two thirds of 9 would be 6.
    EXPECT_EQ(VerdictsOf(3.0F, {9.0F, 9.0F, 5.0F, 5.0F, 5.0F}).back(), keepsOn);
}

TEST(SweepCurve, HasAPeakOnlyWhereAScoreIsAboveAHundredth) {
    const float least = 0.01F;
    EXPECT_EQ(Sweep(0.0001F, {0.0001F, 0.0001F, least}).PeakZ(), std::nullopt);
    EXPECT_NE(Sweep(0.0001F, {0.0001F, 0.0001F, std::nextafter(least, 1.0F)}).PeakZ(), std::nullopt);
    EXPECT_NE(Sweep(0.5F, {0.0001F, 0.0001F, 0.0001F}).PeakZ(), std::nullopt) << "before the sweep";
}

TEST(SweepCurve, HasItsPeakAtTheSampleBeforeTheLargestCurvature) {
    // Curvatures from sample 2 on: 0, -2, -1, 5, -2, 0.
    EXPECT_EQ(Sweep(1.0F, {1.0F, 1.0F, 1.0F, 3.0F, 6.0F, 4.0F, 4.0F}).PeakZ(), 1000 - 10 * 4);
}

TEST(SweepCurve, TakesItsSecondSampleWhenTheFirstCurvatureIsTheLargest) {
    EXPECT_EQ(Sweep(2.0F, {1.0F, 4.0F, 1.0F, 1.0F, 1.0F}).PeakZ(), 990) << "6, then -3 and 0";
    EXPECT_EQ(Sweep(2.0F, {2.0F, 2.0F, 2.0F, 2.0F}).PeakZ(), 990) << "of a flat curve";
    EXPECT_EQ(Sweep(9.0F, {9.0F, 8.0F, 6.0F, 3.0F}).PeakZ(), 990) << "1, then 1 again";
}

TEST(SweepCurve, StartsWithTheFirstCurvatureAlsoWhereAllAreNegative) {
    // Curvatures: -1, -2, -1.
    EXPECT_EQ(Sweep(1.0F, {1.0F, 1.0F, 2.0F, 5.0F, 9.0F}).PeakZ(), 990);
    // Curvatures: -2, -1: the larger one is not the first.
    EXPECT_EQ(Sweep(1.0F, {1.0F, 1.0F, 3.0F, 6.0F}).PeakZ(), 980);
}

TEST(SweepCurve, KeepsTheFirstOfEqualCurvatures) {
    // Curvatures from sample 2 on: -1, 1, -1, 1 (samples 3 and 5).
    EXPECT_EQ(Sweep(1.0F, {1.0F, 1.0F, 2.0F, 2.0F, 3.0F, 3.0F}).PeakZ(), 980);
}

TEST(SweepCurve, HasRoomForNinetySamples) {
    EXPECT_EQ(sweepSamples, 90U);
    Sweep sweep(1.0F, Scores(89, 1.0F));
    EXPECT_EQ(sweep.endedAt, -1);
    sweep.Add(0.5F); // the largest curvature, at the last of all
    EXPECT_EQ(sweep.last, keepsOn);
    EXPECT_EQ(sweep.PeakZ(), 1000 - 10 * 88);
}

TEST(SweepCurve, OfScoresThatAreNoNumbersNeverEnds) {
    const float none = std::numeric_limits<float>::quiet_NaN();
    const Sweep sweep(none, Scores(90, none));
    EXPECT_EQ(sweep.endedAt, -1);
    EXPECT_EQ(sweep.PeakZ(), std::nullopt);
}

} // namespace
} // namespace tessaro
