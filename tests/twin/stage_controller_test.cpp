#include "simulated_field/reproducible_random.h"
#include "virtual_line.h"

#include <gtest/gtest.h>

namespace tessaro {
namespace {

using Texts = std::vector<std::string>;

constexpr ProgressAxes allAxes = {true, true, true};

/// Without the progress on the way.
Texts WithoutProgress(const Texts& texts) {
    Texts others;
    for (const std::string& text : texts)
        if (text.empty() || std::string("pPQ").find(text.front()) == std::string::npos)
            others.push_back(text);
    return others;
}

TEST(StageController, AnswersWhereEachAxisIs) {
    VirtualLine line;
    line.axes.Put({1000.0, -2.5, 12.5}, line.now);
    line.Send({"z", "p", "P", "Q"});
    EXPECT_EQ(line.TextsUntilSilence(), (Texts{"1600", "-4", "20"}));
}

TEST(StageController, SaysNothingToOtherCommandsUntilTheStageMoves) {
    VirtualLine line;
    line.Send({"z", "s1600", "S1600", "T1600", "n", "N", "O"});
    EXPECT_EQ(line.TextsUntilSilence(), Texts{});
    EXPECT_EQ(line.log, (Texts{"z", "s1600", "S1600", "T1600", "n", "N", "O"}));
}

TEST(StageController, TellsTheProgressEvery50MsAndTheArrival) {
    VirtualLine line;
    line.Send({"s1600"});
    line.Send({"m420"}); // speeds up to 0.1 s, goes 260 steps, slows down: 0.3625 s
    const double begun = line.now;
    EXPECT_EQ(line.TextsUntilSilence(), (Texts{"p20", "p80", "p160", "p240", "p320", "p388", "p418", "X"}));
    for (int i = 0; i < 7; ++i)
        EXPECT_NEAR(line.heard[static_cast<std::size_t>(i)].begin, begun + 0.05 * (i + 1) + byteTime,
                    rounding)
            << "the first byte is there a byte's time later";
    // The silence after the last progress goes on until 0.35 + 5 bytes + 0.015.
    EXPECT_NEAR(line.heard[7].begin, begun + 0.35 + 6 * byteTime + 0.015, rounding);
}

TEST(StageController, UsesTheLettersOfEachAxis) {
    for (const auto& [move, progress, arrival] :
         {std::tuple{"m-1200", 'p', "X"}, std::tuple{"M-1600", 'P', "Y"}, std::tuple{"L-1600", 'Q', "Z"}}) {
        VirtualLine line(1.0, allAxes);
        line.Send({move});
        const Texts texts = line.TextsUntilSilence();
        ASSERT_GT(texts.size(), 10U);
        for (std::size_t i = 0; i + 1 < texts.size(); ++i)
            EXPECT_EQ(texts[i].substr(0, 2), std::string(1, progress) + "-");
        EXPECT_EQ(texts.back(), arrival);
    }
}

TEST(StageController, GoesSilentlyAlongZButAnswersAndTellsTheArrival) {
    VirtualLine line;
    line.Send({"L-1600"});
    line.RunFor(0.5);
    EXPECT_EQ(line.Texts(), Texts{});
    line.Send({"Q"});
    line.RunFor(0.05);
    ASSERT_EQ(line.heard.size(), 1U);
    EXPECT_LT(std::stoi(line.heard[0].text), -900) << "the position alone: 2400 steps/s for some 0.43 s";
    EXPECT_EQ(line.TextsUntilSilence(), Texts{"Z"});
}

TEST(StageController, TellsTheProgressOfTheChosenAxesOnly) {
    VirtualLine mute(1.0, {false, false, false});
    mute.Send({"m-1600", "M-800", "L400"});
    EXPECT_EQ(mute.TextsUntilSilence(), (Texts{"Z", "Y", "X"}));
    VirtualLine onlyZ(1.0, {false, false, true});
    onlyZ.Send({"m-1600", "M-1600", "L-1600"});
    const Texts texts = onlyZ.TextsUntilSilence();
    ASSERT_GT(texts.size(), 13U);
    for (std::size_t i = 0; i + 3 < texts.size(); ++i)
        EXPECT_EQ(texts[i].substr(0, 2), "Q-");
}

TEST(StageController, HasASpeedOf1500UmASecondAtFirst) {
    VirtualLine line;
    line.Send({"M4800"}); // speeds up for 0.15 s over 180 steps
    EXPECT_NEAR(line.axes.EndTime(1), line.now + 0.15 + 4440.0 / 2400.0 + 0.15, rounding);
}

TEST(StageController, KeepsSpeedsWithinWhatTheMotorsDo) {
    VirtualLine line;
    line.Send({"s0", "m4"}); // one step a second
    EXPECT_NEAR(line.axes.EndTime(0), line.now + 4.0, 0.01);
    line.Send({"S999999999", "M8000"}); // 16000 steps/s is never reached: up for 4000 steps and down
    EXPECT_NEAR(line.axes.EndTime(1), line.now + 2.0 * std::sqrt(4000.0 * 2.0 / 16'000.0), rounding);
}

TEST(StageController, ReportsAMoveToWhereTheAxisStandsNotBefore50Ms) {
    VirtualLine line;
    line.Send({"L0"});
    const double begun = line.now;
    EXPECT_EQ(line.TextsUntilSilence(), Texts{"Z"});
    EXPECT_NEAR(line.heard[0].begin, begun + 0.05 + byteTime, rounding);
}

TEST(StageController, ReportsAShortMoveNotBefore50MsEither) {
    VirtualLine line(1000.0); // everything is reached at once
    line.Send({"M100", "m4000"});
    EXPECT_EQ(line.TextsUntilSilence(), (Texts{"Y", "X"})) << "the axis that was sent last has its time";
    EXPECT_EQ(line.axes.PositionAt(line.now).x, 2500.0);
}

TEST(StageController, KeepsTheArrivalOfAnAxisUntilAllStand) {
    VirtualLine line;
    line.Send({"m1600", "M160"});
    EXPECT_EQ(WithoutProgress(line.TextsUntilSilence()), (Texts{"Y", "X"}));
    EXPECT_GE(line.heard[line.heard.size() - 2].begin, line.axes.EndTime(0));
    EXPECT_NEAR(line.heard.back().begin, line.heard[line.heard.size() - 2].begin + 2 * byteTime, rounding)
        << "in one reply";
}

TEST(StageController, AKeptArrivalWaitsForAxesThatReportNoneToo) {
    VirtualLine line;
    line.Send({"m1600", "M16"});
    line.RunFor(0.3);
    line.Send({"n"});
    EXPECT_EQ(WithoutProgress(line.TextsUntilSilence()), Texts{"Y"});
    EXPECT_GE(line.heard.back().begin, line.axes.EndTime(0));
}

TEST(StageController, AStoppedAxisReportsNoArrival) {
    VirtualLine line;
    line.Send({"m1600", "M1600", "L1600"});
    line.RunFor(0.4);
    line.Send({"n", "N", "O"});
    EXPECT_EQ(WithoutProgress(line.TextsUntilSilence()), Texts{});
    EXPECT_FALSE(line.heard.empty()) << "it tells where it is as long as it slows down";
    EXPECT_LT(line.axes.StepAt(0, line.now), 1600);
}

TEST(StageController, AStopTakesBackAnArrivalThatIsStillKept) {
    VirtualLine line;
    line.Send({"m3200", "M16"});
    line.RunFor(0.3);
    line.Send({"n", "N", "O"});
    EXPECT_EQ(WithoutProgress(line.TextsUntilSilence()), Texts{});
}

TEST(StageController, ANewMoveTakesThePlaceOfTheOldOne) {
    VirtualLine line;
    line.Send({"m1600"});
    line.RunFor(0.3);
    line.Send({"m0"});
    EXPECT_EQ(WithoutProgress(line.TextsUntilSilence()), Texts{"X"});
    EXPECT_EQ(line.axes.StepAt(0, line.now), 0);
}

TEST(StageController, AnAxisAtItsLimitReportsNoArrival) {
    VirtualLine line;
    line.Send({"m-1601"}); // the limit is -1600
    EXPECT_EQ(WithoutProgress(line.TextsUntilSilence()), Texts{});
    line.RunFor(0.05);
    EXPECT_EQ(line.axes.StepAt(0, line.now), -1600);
    line.Send({"m-99999999999"});
    EXPECT_EQ(line.TextsUntilSilence(), Texts{});
    line.Send({"m-1600"});
    EXPECT_EQ(line.TextsUntilSilence(), Texts{"X"});
}

TEST(StageController, ForgetsMovesWhenTheStageIsPutSomewhere) {
    VirtualLine line;
    line.Send({"m1600", "M1600"});
    line.RunFor(0.3);
    line.controller.ForgetMoves();
    line.axes.Put({5.0, 6.25, 0.0}, line.now);
    line.RunFor(0.02); // what was under way
    EXPECT_EQ(line.TextsUntilSilence(), Texts{});
    line.Send({"P"});
    EXPECT_EQ(line.TextsUntilSilence(), Texts{"10"});
}

TEST(StageController, AnswersOnTheWay) {
    VirtualLine line;
    line.Send({"s1600", "m1600"});
    const double begun = line.now;
    line.RunFor(0.599 - 2 * byteTime);
    line.heard.clear();
    line.Send({"p"}); // comes at 0.599, just before a progress is due
    line.RunUntil(begun + 0.66);
    ASSERT_GE(line.heard.size(), 2U);
    EXPECT_EQ(line.heard[0].text, "878"); // 80 + 0.499 * 1600
    EXPECT_EQ(line.heard[1].text.front(), 'p');
}

TEST(StageController, RepliesOfSeveralAxesNeverRunTogether) {
    VirtualLine line(1.0, allAxes);
    line.Send({"m-1600", "M-1600", "L-1600"});
    line.RunFor(0.2);
    line.Send({"p", "P", "Q", "p"});
    line.TextsUntilSilence();
    ASSERT_GT(line.heard.size(), 20U);
    for (std::size_t i = 1; i + 2 < line.heard.size(); ++i) // the arrivals at the end are one reply
        EXPECT_GE(line.heard[i].begin - line.heard[i - 1].end, 0.015) << i;
}

TEST(StageController, TwoAxesKeepTheirPaceBesideEachOther) {
    VirtualLine line;
    line.Send({"m-1600", "M-1600"});
    line.RunFor(1.0);
    int xs = 0;
    for (const HeardReply& reply : line.heard)
        xs += reply.text.front() == 'p' ? 1 : 0;
    EXPECT_GE(xs, 14) << "in the 0.8 s that it moves";
    EXPECT_GE(static_cast<int>(line.heard.size()) - xs, 14);
}

TEST(StageController, LetsNobodyWaitWhenThreeAxesMove) {
    VirtualLine line(1.0, allAxes);
    line.Send({"m-1600", "M-1600", "L-1600"});
    line.RunFor(0.7);
    for (const char letter : {'p', 'P', 'Q'})
        EXPECT_GE(std::ranges::count_if(line.heard,
                                        [&](const HeardReply& reply) { return reply.text[0] == letter; }),
                  8)
            << letter;
}

TEST(StageController, IgnoresWhatIsNoCommand) {
    VirtualLine line;
    line.Send({"", "", "hello", "m", "m5x", "p1", "zz", std::string(5000, 'm'), "-5"});
    EXPECT_EQ(line.TextsUntilSilence(), Texts{});
    line.Send({"p"});
    EXPECT_EQ(line.TextsUntilSilence(), Texts{"0"});
}

TEST(StageController, AnswersNoMoreThanItCanRemember) {
    VirtualLine line;
    line.Send(Texts(200, "p"));
    EXPECT_LE(line.TextsUntilSilence().size(), 64U);
    line.Send({"Q"});
    EXPECT_EQ(line.TextsUntilSilence(), Texts{"0"});
}

TEST(StageController, StandsAnyBytes) {
    ReproducibleRandom random(3);
    VirtualLine line(50.0, allAxes);
    const std::string likely("zpPQmMLsSTnNO0123456789-\0\0\0", 27);
    for (int burst = 0; burst < 300; ++burst) {
        std::string bytes;
        for (int i = random.WholeBetween(1, 60); i > 0; --i)
            bytes += random.Chance(0.1) ? static_cast<char>(random.WholeBetween(-128, 127))
                                        : likely[static_cast<std::size_t>(random.WholeBetween(0, 26))];
        line.SendBytes(bytes);
    }
    line.SendBytes(std::string(1, '\0'));
    line.Send({"n", "N", "O"});
    line.TextsUntilSilence();
    line.Send({"z", "m16"});
    EXPECT_EQ(line.TextsUntilSilence().back(), "X");
    line.Send({"p"});
    EXPECT_EQ(line.TextsUntilSilence(), Texts{"16"});
}

} // namespace
} // namespace tessaro
