#include "tests/stage/stage_fixture.h"

#include <algorithm>

namespace tessaro {
namespace {

const Message click = {WindowHandle::None, MessageKind::LeftButtonPress};

/// Waits begin with a pump of 10 ms; every read that nothing ends takes 150 ms.
class ArrivalWait : public StageFixture {
protected:
    ArrivalWait() { BeOnline(); }

    void Wait(int axis, double target) { motion.WaitForArrival(axis, target, 0); }
};

class ArrivalLetter : public ArrivalWait, public testing::WithParamInterface<const char*> {};

TEST_P(ArrivalLetter, EndsTheWaitForWhateverAxis) {
    line.Arrive(30, Terminated(GetParam()));
    line.Expect("Q", Answered("1600"));
    Wait(axisZ, 1000.0);
    EXPECT_EQ(Progress(), Texts{"arrived : 10/1000"});
    EXPECT_EQ(stage.position[2], 1000.0) << "asked for at the end";
    EXPECT_EQ(ui.clock.now, 40U + 15U + 10U) << "read, query, pump";
}

INSTANTIATE_TEST_SUITE_P(Letters, ArrivalLetter, testing::Values("X", "Y", "Z", "X1600"),
                         [](const auto& letter) { return std::string(letter.param); });

TEST_F(ArrivalWait, EndsWhenTheProgressIsTheVeryTarget) {
    line.Arrive(30, Terminated("p1599"));
    line.Arrive(80, Terminated("p1600"));
    line.Expect("p", Answered("1600"));
    Wait(axisX, 1000.0);
    EXPECT_EQ(Progress(), (Texts{"moving: 10/1000", "moving: 10/1000", "arrived : 10/1000"}))
        << "progress restarts the clock";
}

TEST_F(ArrivalWait, DoesNotEndBesideATargetThatNoStepMeets) {
    line.Arrive(30, Terminated("p20"));
    line.Expect("p", Answered("20"));
    Wait(axisX, 13.0);
    EXPECT_EQ(stage.position[0], 12.5);
    EXPECT_EQ(Progress().back().substr(0, 12), "time passed:");
}

TEST_F(ArrivalWait, TakesTheProgressOfEveryAxis) {
    line.Arrive(20, Terminated("p1600"));
    line.Arrive(70, Terminated("P-8"));
    line.Arrive(120, Terminated("Q1"));
    line.Arrive(170, Terminated("X"));
    line.Expect("Q", Answered("1"));
    Wait(axisZ, 50.0);
    EXPECT_EQ(stage.position, (std::array<double, 3>{1000.0, -5.0, 0.625}));
    EXPECT_EQ(PanelText(panel::positionX), "1000");
    EXPECT_EQ(PanelText(panel::positionY), "-5");
}

TEST_F(ArrivalWait, EndsEvenWhenAnotherAxisReportsTheTarget) {
    line.Arrive(20, Terminated("P1600"));
    line.Expect("Q", Answered("8"));
    Wait(axisZ, 1000.0);
    EXPECT_EQ(Progress().back(), "arrived : 10/1000");
    EXPECT_EQ(stage.position, (std::array<double, 3>{0.0, 1000.0, 5.0}));
}

TEST_F(ArrivalWait, GivesUpAfterTwoSecondsOfSilence) {
    line.Expect("p");
    Wait(axisX, 1000.0);
    // It looks at the clock at 10 ms and then every 160 ms: 13 times in vain, the 14th at 2090 ms.
    const Texts progress = Progress();
    ASSERT_EQ(progress.size(), 14U);
    EXPECT_EQ(progress[0], "ReadFile error: 10/1000");
    EXPECT_EQ(progress[1], "ReadFile error: 170/1000");
    EXPECT_EQ(progress[12], "ReadFile error: 1930/1000");
    EXPECT_EQ(progress[13], "time passed: 2090/1000, Fail to read:13/13");
    EXPECT_EQ(ui.clock.now, 2090U + 150U + 10U);
}

TEST_F(ArrivalWait, CountsAcrossTheEndOfThe32BitClock) {
    ui.clock.now = 0xFFFF'FFFF - 499U;
    line.Expect("p");
    Wait(axisX, 1000.0);
    EXPECT_EQ(Progress().back(), "time passed: 2090/1000, Fail to read:13/13");
}

TEST_F(ArrivalWait, LastsAsLongAsThereIsProgress) {
    for (std::uint64_t at = 50; at < 60'000; at += 50)
        line.Arrive(at, Terminated("Q" + std::to_string(at)));
    line.Arrive(60'000, Terminated("Z"));
    line.Expect("Q", Answered("96000"));
    Wait(axisZ, 60'000.0);
    EXPECT_EQ(Progress().back(), "arrived : 10/1000");
    EXPECT_EQ(ui.clock.now, 60'000U + 10U + 15U + 10U);
}

TEST_F(ArrivalWait, GivesUpTwoSecondsAfterTheLastProgress) {
    for (std::uint64_t at = 50; at <= 1000; at += 50)
        line.Arrive(at, Terminated("Q" + std::to_string(at)));
    line.Expect("Q");
    Wait(axisZ, 60'000.0);
    // The last progress is read until 1010 ms; 160 ms a turn from 10 ms behind that.
    EXPECT_EQ(Progress().back(), "time passed: 2090/1000, Fail to read:13/33");
    EXPECT_EQ(ui.clock.now, 1010U + 2090U + 150U + 10U);
}

TEST_F(ArrivalWait, ProgressWithoutANumberRestartsTheClockAlone) {
    stage.position[0] = 3.0;
    line.Arrive(1500, Terminated("p?"));
    line.Arrive(3000, Terminated("p-"));
    line.Expect("p");
    Wait(axisX, 1000.0);
    EXPECT_EQ(stage.position[0], 3.0);
    const Texts progress = Progress();
    EXPECT_TRUE(std::none_of(progress.begin(), progress.end(),
                             [](const std::string& text) { return text.starts_with("moving"); }));
    EXPECT_GT(ui.clock.now, 5000U);
}

TEST_F(ArrivalWait, TakesNoProgressThatIsNoPosition) {
    line.Expect("M-2147483648");
    stage.StartMove(axisY, -1e300);
    line.Arrive(20, "p999999999"); // a read; behind it the end of the command is left: 48
    line.Expect("p");
    Wait(axisX, 1000.0);
    EXPECT_EQ(stage.position[0], 0.0);
}

TEST_F(ArrivalWait, CountsReadsOfLessThanTwoBytes) {
    line.Arrive(20, "p");
    line.Arrive(50, "p1");
    line.Expect("p");
    Wait(axisX, 1000.0);
    EXPECT_EQ(Progress().back(), "time passed: 2090/1000, Fail to read:14/15");
}

TEST_F(ArrivalWait, WithoutALineEndsAtOnceAndSaysNothing) {
    stage.hComm = SerialHandle::Invalid;
    Wait(axisX, 1000.0);
    EXPECT_TRUE(Progress().empty());
    EXPECT_TRUE(line.calls.empty());
    EXPECT_EQ(ui.clock.now, 0U);
}

TEST_F(ArrivalWait, OnABrokenLineWaitsTwoSecondsWithoutSpinning) {
    line.HangUp();
    Wait(axisX, 1000.0);
    EXPECT_EQ(Progress().back(), "time passed: 2000/1000, Fail to read:199/199");
    EXPECT_EQ(stage.offline, 1) << "the query at the end could not be written";
    EXPECT_EQ(line.calls.size(), 199U + 2U);
}

TEST_F(ArrivalWait, EndsAtOnceWhenTheOperatorStopsTheScanBeforeTheFirstRead) {
    scan.scanning = 1;
    ui.boxes.answers = {true};
    ui.messages.Post(click);
    Wait(axisX, 1000.0);
    EXPECT_TRUE(Progress().empty());
    EXPECT_TRUE(line.calls.empty());
    EXPECT_EQ(scan.stopRequested, 1);
}

TEST_F(ArrivalWait, EndsWithoutArrivalWhenTheOperatorStopsTheScanLater) {
    scan.scanning = 1;
    ui.boxes.answers = {true};
    ui.messages.PostAt(325, click); // in the pump behind the second read
    line.Expect("p", Answered("160"));
    Wait(axisX, 1000.0);
    EXPECT_EQ(Progress().back(), "time passed: 170/1000, Fail to read:1/1") << "the last turn does not count";
    EXPECT_EQ(stage.position[0], 100.0);
    EXPECT_EQ(PanelText(panel::positionX), "100");
}

TEST_F(ArrivalWait, IsOverAnywayWhenTheOperatorStopsTheScanInTheLastPump) {
    scan.scanning = 1;
    ui.boxes.answers = {true};
    line.Arrive(20, Terminated("X"));
    line.Expect("p", Answered("1600"));
    ui.messages.PostAt(50, click);
    Wait(axisX, 1000.0);
    EXPECT_EQ(Progress(), Texts{"arrived : 10/1000"});
    EXPECT_EQ(scan.stopRequested, 1);
}

TEST_F(ArrivalWait, AClickStopsAllAxesAndTheWaitRunsOn) {
    ui.messages.PostAt(165, click);
    line.Expect("n");
    line.Expect("N");
    line.Expect("O");
    line.Expect("p", Answered("80"));
    Wait(axisX, 1000.0);
    EXPECT_EQ(Progress().back(), "time passed: 2090/1000, Fail to read:13/13");
    EXPECT_EQ(stage.position[0], 50.0);
}

/// What says neither progress nor arrival makes the wait ask where the axis is.
class SettledStage : public ArrivalWait {
protected:
    /// Junk, and where the controller then says that the axis is; every 100 ms.
    void Junk(const Texts& steps) {
        std::uint64_t at = 20;
        for (const std::string& reply : steps) {
            line.Arrive(at, "?");
            line.Expect("p", Answered(reply));
            at += 100;
        }
    }
    bool Arrived() const { return Progress().back().substr(0, 7) == "arrived"; }
};

TEST_F(SettledStage, IsBelievedAtOnceWithinAMicrometre) {
    Junk({"1599"}); // 0.625 um off
    line.Expect("p", Answered("1600"));
    Wait(axisX, 1000.0);
    EXPECT_TRUE(Arrived());
    EXPECT_EQ(stage.position[0], 1000.0);
}

TEST_F(SettledStage, IsNotBelievedAtOnceAtExactlyAMicrometre) {
    Junk({"1600"}); // 1000 um
    line.Expect("p", Answered("1600"));
    Wait(axisX, 1001.0);
    EXPECT_FALSE(Arrived());
}

TEST_F(SettledStage, IsBelievedTheSecondTimeWithinTwoMicrometres) {
    Junk({"1597", "1603"}); // 1.875 um off, on either side
    line.Expect("p", Answered("1603"));
    Wait(axisX, 1000.0);
    EXPECT_TRUE(Arrived());
}

TEST_F(SettledStage, IsBelievedAtExactlyTwoMicrometres) {
    Junk({"1597", "1597"}); // 998.125 um
    line.Expect("p");
    Wait(axisX, 1000.125);
    EXPECT_TRUE(Arrived());
}

TEST_F(SettledStage, IsNotBelievedBeyondTwoMicrometresHoweverStillItStands) {
    Junk({"1596", "1596", "1596"}); // 2.5 um off
    line.Expect("p", Answered("1596"));
    Wait(axisX, 1000.0);
    EXPECT_FALSE(Arrived());
}

TEST_F(SettledStage, IsNotBelievedWhileItComesCloserByAMicrometre) {
    Junk({"1596", "1598"}); // 2.5 and 1.25 um off
    line.Expect("p", Answered("1598"));
    Wait(axisX, 1000.0);
    EXPECT_FALSE(Arrived());
}

TEST_F(SettledStage, DoesNotRestartTheClock) {
    Junk({"8", "8", "8"});
    line.Expect("p", Answered("8"));
    Wait(axisX, 1000.0);
    EXPECT_LT(ui.clock.now, 2400U);
}

TEST_F(SettledStage, IsNotBelievedOffline) {
    line.Arrive(20, "?");
    line.HangUpAt(25);
    Wait(axisX, 0.0);
    EXPECT_FALSE(Arrived()) << "though a line that cannot be read answers 0";
    EXPECT_EQ(stage.offline, 1);
}

} // namespace
} // namespace tessaro
