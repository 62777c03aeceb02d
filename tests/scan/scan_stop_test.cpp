#include "app/resource_ids.h"
#include "tests/scan/small_scan.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace tessaro {
namespace {

class StoppedScan : public SmallScan {};

TEST_F(StoppedScan, AsksWithTheBoxOfThePump) {
    StopAt("m640");
    scanRun.RunScan();
    ASSERT_EQ(ui.boxes.questions.size(), 1U);
    EXPECT_EQ(ui.boxes.questions[0].text, "Do you want to stop, now ?");
}

TEST_F(StoppedScan, EndsDuringAStepAlongTheRow) {
    StopAt("m640");
    scanRun.RunScan();
    ExpectStopped();
    EXPECT_EQ(told.Places(), (Places{{0, 0}}));
    EXPECT_EQ(SentAfterTheStart(), (Texts{"m0", "M0", "m640", "m0", "M0"}));
}

TEST_F(StoppedScan, EndsInTheWaitAfterAStep) {
    StopAt("m640", inThePump);
    scanRun.RunScan();
    ExpectStopped();
    EXPECT_EQ(told.Places(), (Places{{0, 0}}));
    EXPECT_EQ(SentAfterTheStart(), (Texts{"m0", "M0", "m640", "M0", "m0"}));
}

TEST_F(StoppedScan, EndsDuringAStepOnTheWayBack) {
    StopAt("m0", 0, 2);
    scanRun.RunScan();
    ExpectStopped();
    EXPECT_EQ(told.Places(), (Places{{0, 0}, {0, 1}, {1, 1}}));
}

TEST_F(StoppedScan, EndsDuringTheStepToTheNextRow) {
    StopAt("M640");
    scanRun.RunScan();
    ExpectStopped();
    EXPECT_EQ(told.Places(), (Places{{0, 0}, {0, 1}}));
    EXPECT_EQ(SentAfterTheStart(), (Texts{"m0", "M0", "m640", "M640", "M0", "m0"})) << "X has the longer way";
}

TEST_F(StoppedScan, EndsInTheWaitAtTheNextRow) {
    StopAt("M640", inThePump);
    scanRun.RunScan();
    ExpectStopped();
    EXPECT_EQ(told.Places(), (Places{{0, 0}, {0, 1}}));
}

TEST_F(StoppedScan, EndsOnTheWayToTheOrigin) {
    StopAt("M0");
    scanRun.RunScan();
    ExpectStopped();
    EXPECT_TRUE(field.calls.empty());
}

TEST_F(StoppedScan, EndsInTheWaitAtTheOrigin) {
    StopAt("M0", 25);
    scanRun.RunScan();
    ExpectStopped();
    EXPECT_TRUE(field.calls.empty());
}

/// Between two pairs of rows the wish itself is not looked at, only what the wait has been told.
TEST_F(StoppedScan, TakesOneFieldMoreWhenItIsStoppedOnTheWayBackAlongX) {
    settings.yRange = 2;
    StopAt("m0", 0, 3); // the origin, the step back, the way back
    scanRun.RunScan();
    ExpectStopped();
    EXPECT_EQ(told.Places(), (Places{{0, 0}, {0, 1}, {1, 1}, {1, 0}, {2, 0}}));
}

TEST_F(StoppedScan, EndsInTheWaitBetweenTwoPairsOfRows) {
    settings.yRange = 2;
    StopAt("M1280", inThePump);
    scanRun.RunScan();
    ExpectStopped();
    EXPECT_EQ(told.Places(), (Places{{0, 0}, {0, 1}, {1, 1}, {1, 0}}));
}

TEST_F(StoppedScan, HasFinishedTheFieldInWork) {
    field.onCall = [this](const std::string& call) {
        if (call == "find" && told.fields.size() == 1)
            ClickIn(0, true);
    };
    scanRun.RunScan();
    ExpectStopped();
    EXPECT_EQ(told.Places(), (Places{{0, 0}, {0, 1}}));
}

TEST_F(StoppedScan, EndsDuringTheFirstMoveOfZ) {
    focus.tiltCorrection = 1;
    focus.tiltMeasured = 1;
    scan.zOrigin = 10;
    StopAt("L16");
    scanRun.RunScan();
    ExpectStopped();
    EXPECT_EQ(SentAfterTheStart(), (Texts{"L16", "m0", "M0"}));
    EXPECT_TRUE(field.calls.empty());
}

TEST_F(StoppedScan, SendsZNoMoreAfterAStepInWhichItWasStopped) {
    focus.tiltCorrection = 1;
    focus.tiltMeasured = 1;
    StandAt(0.0, 0.0, 5.0); // the plane is at 0
    StopAt("m640");
    scanRun.RunScan();
    ExpectStopped();
    EXPECT_EQ(SentAfterTheStart(), (Texts{"L8", "m0", "M0", "m640", "m0", "M0"}));
}

TEST_F(StoppedScan, EndsWhileZFollowsThePlane) {
    focus.tiltCorrection = 1;
    focus.tiltMeasured = 1;
    focus.xTilt = 0.125F;
    StopAt("L80");
    scanRun.RunScan();
    ExpectStopped();
    EXPECT_EQ(told.Places(), (Places{{0, 0}}));
    EXPECT_EQ(SentAfterTheStart(), (Texts{"L0", "m0", "M0", "m640", "L80", "M0", "m0"}));
}

TEST_F(StoppedScan, GoesOnWhenTheAnswerIsNo) {
    for (const char* command : {"M0", "m640", "M640", "M1280"}) {
        told = {};
        When(command, [this] {
            ClickIn(0, false);
            ClickIn(inThePump, false);
        });
        scanRun.RunScan();
        EXPECT_EQ(told.fields.size(), 4U) << command;
        EXPECT_EQ(told.ends, std::vector{ScanEnd::Completed}) << command;
        EXPECT_EQ(scan.stopRequested, 0);
    }
    EXPECT_GE(ui.boxes.questions.size(), 8U);
    const Texts sent = arriving.Commands();
    EXPECT_EQ(std::count(sent.begin(), sent.end(), "n"), 0) << "the stage is not stopped while a scan runs";
}

TEST_F(StoppedScan, CanBeStartedAgain) {
    StopAt("m640");
    scanRun.RunScan();
    EXPECT_EQ(scan.stopRequested, 1);
    scanRun.RunScan();
    EXPECT_EQ(scan.stopRequested, 0);
    EXPECT_EQ(told.ends, (std::vector{ScanEnd::Stopped, ScanEnd::Completed}));
    EXPECT_EQ(told.fields.size(), 5U);
}

TEST_F(StoppedScan, IsStoppedOnTheWayBackBehindItsLastFieldToo) {
    StopAt("m0", 0, 3);
    scanRun.RunScan();
    ExpectStopped();
    EXPECT_EQ(told.fields.size(), 4U);
}

TEST_F(StoppedScan, IsStoppedInTheLastWaitToo) {
    StopAt("M1280", inThePump);
    scanRun.RunScan();
    ExpectStopped();
    EXPECT_EQ(told.fields.size(), 4U);
}

/// Until the stage has been sent home the scan runs: a click asks, and does not stop the stage.
TEST_F(StoppedScan, RunsStillOnItsWayHome) {
    for (const bool answer : {false, true}) {
        told = {};
        ui.boxes.questions.clear();
        When(
            "M0",
            [&] {
                EXPECT_EQ(scan.scanning, 1);
                EXPECT_EQ(liveTimer.on, 0);
                EXPECT_FALSE(LiveTimerRuns());
                EXPECT_EQ(told.fields.size(), 4U);
                ClickIn(0, answer);
            },
            2); // the first is to the origin
        scanRun.RunScan();
        EXPECT_EQ(ui.boxes.questions.size(), 1U);
        EXPECT_EQ(told.ends, std::vector{ScanEnd::Completed}) << "which was said already";
        EXPECT_EQ(scan.scanning, 0);
        EXPECT_EQ(liveTimer.on, 1);
    }
    const Texts sent = arriving.Commands();
    EXPECT_EQ(std::count(sent.begin(), sent.end(), "n"), 0);
}

TEST_F(StoppedScan, IsStoppedByTheMenuToo) {
    When("m640", [this] {
        ChooseIn(inThePump, command::stop);
        ui.boxes.answers.push_back(true);
    });
    scanRun.RunScan();
    ExpectStopped();
}

TEST_F(StoppedScan, MovesOnWhileItIsPaused) {
    When("m640", [this] {
        ChooseIn(inThePump, command::pauseResume);
        ChooseIn(5 * inThePump, command::pauseResume);
    });
    scanRun.RunScan();
    EXPECT_EQ(Information(),
              (Texts{"scanning...", "0% finished, 0.1 minute left", "Paused...",
                     "25% finished, 0.0 minute left", "25% finished, 0.0 minute left", "Scanning resumed...",
                     "50% finished, 0.0 minute left", "Scanning has completed."}));
    EXPECT_EQ(told.ends, std::vector{ScanEnd::Completed});
    EXPECT_EQ(scan.paused, 0);
}

TEST_F(StoppedScan, EndsAfterAStepAlongTheRowOnceItsFlagIsCleared) {
    field.onCall = [this](const std::string&) {
        if (told.fields.size() == 1)
            scan.scanning = 0; // at the end of the row, behind which nobody looks
    };
    scanRun.RunScan();
    EXPECT_EQ(told.Places(), (Places{{0, 0}, {0, 1}, {1, 1}}));
    EXPECT_EQ(told.ends, std::vector{ScanEnd::Interrupted});
    EXPECT_EQ(SentAfterTheStart(), (Texts{"m0", "M0", "m640", "M640", "m0", "m0", "M0"}));
    EXPECT_EQ(Information().back(), "Scanning has completed.");
    EXPECT_EQ(scan.stopRequested, 0);
    EXPECT_EQ(liveTimer.on, 1);
}

} // namespace
} // namespace tessaro
