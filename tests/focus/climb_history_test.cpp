#include "focus/climb_history.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

namespace tessaro {
namespace {

using Verdict = ClimbHistory::Verdict;
constexpr auto goOn = Verdict::GoOn;
constexpr auto ends = Verdict::PassEnds;
constexpr auto found = Verdict::InFocus;

TEST(ClimbStep, IsFourMicrometresByTheRootOfTheFocusValueTruncated) {
    EXPECT_EQ(ClimbStep(1.0F), 4);
    EXPECT_EQ(ClimbStep(0.25F), 8);
    EXPECT_EQ(ClimbStep(4.0F), 2);
    EXPECT_EQ(ClimbStep(1.5F), 3) << "3.27";
    EXPECT_EQ(ClimbStep(3.9F), 2) << "2.03";
    EXPECT_EQ(ClimbStep(4.1F), 1) << "1.98";
    EXPECT_EQ(ClimbStep(0.001F), 126) << "126.49";
}

TEST(ClimbStep, IsNeverLessThanOne) {
    EXPECT_EQ(ClimbStep(16.0F), 1);
    EXPECT_EQ(ClimbStep(16.5F), 1) << "0.98";
    EXPECT_EQ(ClimbStep(1e30F), 1);
    EXPECT_EQ(ClimbStep(std::numeric_limits<float>::infinity()), 1);
}

TEST(ClimbStep, IsOneWhereTheFocusValueIsNone) {
    EXPECT_EQ(ClimbStep(0.0F), 1);
    EXPECT_EQ(ClimbStep(-4.0F), 1);
    EXPECT_EQ(ClimbStep(std::numeric_limits<float>::quiet_NaN()), 1);
}

TEST(ClimbSteps, AreTenThenTwenty) {
    EXPECT_EQ(ClimbSteps(0), 10);
    EXPECT_EQ(ClimbSteps(1), 20);
}

/// A pass of steps of 10 um from 10 um on; each focus value is the previous one of the next.
class Pass {
public:
    Pass(ClimbHistory& history, int pass, float before) : m_history(history), m_previous(before) {
        m_history.BeginPass(pass);
    }

    Verdict To(float focusValue) {
        m_z += 10;
        const Verdict verdict = m_history.Add(m_z, m_previous, focusValue);
        m_previous = focusValue;
        return verdict;
    }

private:
    ClimbHistory& m_history;
    float m_previous;
    std::int32_t m_z = 0;
};

class ClimbHistoryTest : public testing::Test {
protected:
    /// What a pass says to these focus values in turn.
    std::vector<Verdict> Climb(int pass, float before, const std::vector<float>& values) {
        Pass climb(history, pass, before);
        std::vector<Verdict> verdicts;
        for (const float value : values)
            verdicts.push_back(climb.To(value));
        return verdicts;
    }

    ClimbHistory history;
};

using Verdicts = std::vector<Verdict>;

TEST_F(ClimbHistoryTest, GoesOnAsLongAsTheValueRises) {
    EXPECT_EQ(Climb(0, 2.0F, {2.5F, 3.0F, 3.5F, 4.0F, 4.5F, 5.0F, 5.5F, 6.0F, 6.5F, 7.0F}),
              Verdicts(10, goOn));
}

TEST_F(ClimbHistoryTest, EndsAPassAtTheFirstFallOfMoreThanATenth) {
    EXPECT_EQ(Climb(0, 2.0F, {1.875F}), Verdicts{ends});
    EXPECT_EQ(Climb(0, 2.0F, {2.5F, 3.0F, 2.875F}), (Verdicts{goOn, goOn, ends}))
        << "whatever it rose before";
}

TEST_F(ClimbHistoryTest, DoesNotMindASmallerFall) {
    EXPECT_EQ(Climb(0, 2.0F, {1.9375F}), Verdicts{goOn});
    EXPECT_EQ(Climb(0, 2.0F, {1.9F}), Verdicts{goOn}) << "exactly a tenth";
}

TEST_F(ClimbHistoryTest, EndsTheFirstPassAfterFourFlatSteps) {
    EXPECT_EQ(Climb(0, 2.0F, {2.0F, 2.0F, 2.0F, 2.0F}), (Verdicts{goOn, goOn, goOn, ends}));
}

TEST_F(ClimbHistoryTest, EndsTheSecondPassAfterEightFlatSteps) {
    Verdicts expected(8, goOn);
    expected.back() = ends;
    EXPECT_EQ(Climb(1, 2.0F, std::vector<float>(8, 2.0F)), expected);
}

TEST_F(ClimbHistoryTest, CountsFlatStepsOnlyInARow) {
    EXPECT_EQ(Climb(0, 2.0F, {2.0F, 2.0F, 2.0F, 2.5F, 2.5F, 2.5F, 2.5F, 2.5F}),
              (Verdicts{goOn, goOn, goOn, goOn, goOn, goOn, goOn, ends}));
    EXPECT_EQ(Climb(0, 2.0F, {2.0625F, 2.125F, 2.1875F, 2.25F}), (Verdicts{goOn, goOn, goOn, ends}))
        << "each rise is less than a tenth";
}

TEST_F(ClimbHistoryTest, CountsARiseOfATenthAsOne) {
    // 1.9 + 0.1 is 2 in single precision, so that 2 is no flat step from there.
    EXPECT_EQ(Climb(0, 1.9F, {2.0F, 2.0F, 2.0F, 2.0F, 2.0F}), (Verdicts{goOn, goOn, goOn, goOn, ends}));
}

TEST_F(ClimbHistoryTest, EndsWhenItIsMoreThanOneBelowTheFirstStep) {
    // Down by 3/32 seven times, up by 1/8, down again: neither a fall nor eight flat steps in a row.
    std::vector<float> values = {6.0F};
    for (int i = 1; i <= 7; ++i)
        values.push_back(6.0F - 0.09375F * static_cast<float>(i));
    values.push_back(5.46875F);
    for (int i = 1; i <= 5; ++i)
        values.push_back(5.46875F - 0.09375F * static_cast<float>(i));
    ASSERT_EQ(values.back(), 5.0F) << "exactly 1 below";
    EXPECT_EQ(Climb(1, 5.5F, values), Verdicts(14, goOn));
    values.push_back(4.90625F);
    EXPECT_EQ(Climb(1, 5.5F, values).back(), ends);
}

TEST_F(ClimbHistoryTest, MeasuresAFallByTheFirstStepOfThePassAndNotByWhatWasBefore) {
    EXPECT_EQ(Climb(0, 9.0F, {9.0F, 8.96875F}), Verdicts(2, goOn));
    EXPECT_EQ(Climb(0, 5.0F, {5.0F, 5.5F}), Verdicts(2, goOn)) << "4 below the pass before";
}

TEST_F(ClimbHistoryTest, IsInFocusAboveTen) {
    EXPECT_EQ(Climb(0, 9.5F, {10.0F}), Verdicts{goOn});
    EXPECT_EQ(Climb(0, 9.5F, {std::nextafter(10.0F, 11.0F)}), Verdicts{found});
    EXPECT_EQ(Climb(0, 30.0F, {11.0F}), Verdicts{found}) << "though it fell";
}

TEST_F(ClimbHistoryTest, BeginsEachPassWithoutTrendAndFlatSteps) {
    EXPECT_EQ(Climb(0, 2.0F, {2.0F, 2.0F, 2.0F, 2.0F}).back(), ends);
    EXPECT_EQ(Climb(0, 2.0F, {2.0F, 2.0F, 2.0F}).back(), goOn);
    EXPECT_EQ(Climb(0, 2.0F, {1.0F}).back(), ends);
    EXPECT_EQ(Climb(0, 1.0F, {1.0F}).back(), goOn);
}

TEST_F(ClimbHistoryTest, IsBestWhereTheValueIsHighest) {
    Climb(1, 2.0F, {3.0F, 4.0F, 5.0F, 4.9375F, 4.0F});
    EXPECT_EQ(history.BestZ(), 30);
}

TEST_F(ClimbHistoryTest, IsBestAtTheFirstOfEquals) {
    Climb(1, 2.0F, {2.0F, 3.0F, 3.0F, 3.0F});
    EXPECT_EQ(history.BestZ(), 20);
}

TEST_F(ClimbHistoryTest, LeavesOutTheStepThatEndedThePass) {
    // The previous value is told apart, so that the ending step is the highest of all.
    history.BeginPass(1);
    history.Add(10, 2.0F, 3.0F);
    history.Add(20, 3.0F, 4.0F);
    ASSERT_EQ(history.Add(30, 9.5F, 9.0F), ends);
    EXPECT_EQ(history.BestZ(), 20);
}

TEST_F(ClimbHistoryTest, HasNoBestWhenThePassEndedAtItsFirstStep) {
    Climb(0, 2.0F, {3.0F, 4.0F, 5.0F, 4.0F});
    EXPECT_EQ(Climb(1, 4.0F, {3.0F}), Verdicts{ends});
    EXPECT_EQ(history.BestZ(), std::nullopt) << "the first pass does not count";
}

TEST_F(ClimbHistoryTest, IsBestInTheSecondPassOnly) {
    Climb(0, 2.0F, {3.0F, 9.0F, 8.0F});
    history.BeginPass(1);
    history.Add(-5, 8.0F, 8.0F);
    history.Add(-7, 8.0F, 8.5F);
    EXPECT_EQ(history.BestZ(), -7) << "20 was better, and is overwritten or not looked at";
}

TEST_F(ClimbHistoryTest, KeepsTwentySteps) {
    std::vector<float> values;
    for (int i = 0; i < 20; ++i)
        values.push_back(2.0F + 0.25F * static_cast<float>(i));
    EXPECT_EQ(Climb(1, 1.75F, values), Verdicts(20, goOn));
    EXPECT_EQ(history.BestZ(), 200);
}

} // namespace
} // namespace tessaro
