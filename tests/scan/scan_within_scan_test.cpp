#include "support/travelling_port.h"
#include "tests/scan/small_scan.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace tessaro {
namespace {

/// A scan that is started while another one waits.
class ScanWithinAScan : public SmallScan {
protected:
    void StartAnotherAt(const std::string& command, std::uint64_t afterMs) {
        ui.messages.onDispatch = [this](const Message& message) {
            if (message.kind != MessageKind::Other)
                return;
            EXPECT_EQ(scan.scanning, 1);
            scanRun.RunScan();
            liveWithin = liveTimer.on;
            totalFound = 5;
        };
        When(command, [this, afterMs] {
            ui.messages.PostAt(ui.clock.now + afterMs, {windows.main, MessageKind::Other});
            arriving.onCommand = nullptr;
        });
    }

    std::int32_t liveWithin = -1;
};

TEST_F(ScanWithinAScan, RunsToItsEndAndInterruptsTheOuterOne) {
    totalFound = 3;
    StartAnotherAt("m640", inThePump);
    scanRun.RunScan();
    EXPECT_EQ(told.begun, 2);
    EXPECT_EQ(told.Places(), (Places{{0, 0}, {0, 0}, {0, 1}, {1, 1}, {1, 0}}));
    EXPECT_EQ(told.ends, (std::vector{ScanEnd::Completed, ScanEnd::Interrupted}));
    EXPECT_EQ(scan.scanning, 0);
    EXPECT_EQ(totalFound, 5) << "as the inner one has left it";
    EXPECT_EQ(Information().back(), "Scanning has completed.");
}

TEST_F(ScanWithinAScan, LeavesTheLiveViewToTheOuterOne) {
    StartAnotherAt("m640", inThePump);
    scanRun.RunScan();
    EXPECT_EQ(liveWithin, 0);
    EXPECT_EQ(liveTimer.on, 1);
    EXPECT_TRUE(LiveTimerRuns());
}

/// The waits between rows do not look whether a scan is still running.
TEST_F(ScanWithinAScan, IsNoticedAtTheNextStepAlongARow) {
    StartAnotherAt("M640", inThePump);
    scanRun.RunScan();
    EXPECT_EQ(told.Places(), (Places{{0, 0}, {0, 1}, {0, 0}, {0, 1}, {1, 1}, {1, 0}, {1, 1}}));
    EXPECT_EQ(told.ends, (std::vector{ScanEnd::Completed, ScanEnd::Interrupted}));
}

TEST_F(ScanWithinAScan, StopsBothWhenItIsStopped) {
    StartAnotherAt("m640", inThePump);
    field.onCall = [this](const std::string&) {
        if (told.begun == 2 && ui.boxes.answers.empty())
            ClickIn(0, true);
    };
    scanRun.RunScan();
    EXPECT_EQ(told.Places(), (Places{{0, 0}, {0, 0}}));
    EXPECT_EQ(told.ends, (std::vector{ScanEnd::Stopped, ScanEnd::Stopped}));
}

/// The program is told to quit in the middle: nobody is there any more who could answer.
class QuitScan : public SmallScan {
protected:
    void ExpectQuiet() {
        EXPECT_EQ(told.ends, std::vector{ScanEnd::Stopped});
        EXPECT_TRUE(ui.boxes.questions.empty());
        EXPECT_TRUE(ui.boxes.warnings.empty());
        const Texts sent = arriving.Commands();
        EXPECT_EQ(Texts(sent.end() - 2, sent.end()), (Texts{"m0", "M0"})) << "its last way is to the origin";
        EXPECT_EQ(scan.scanning, 0);
    }
};

TEST_F(QuitScan, EndsAtOnceWithoutAQuestion) {
    When("m640", [this] {
        ClickIn(0, false); // stays in the queue
        ui.messages.PostQuit(0);
    });
    scanRun.RunScan();
    ExpectQuiet();
    EXPECT_EQ(told.Places(), (Places{{0, 0}}));
}

TEST_F(QuitScan, EndsInAWaitThatIsUnderWay) {
    ui.messages.onDispatch = [this](const Message&) { ui.messages.PostQuit(0); };
    When("M640", [this] {
        ui.messages.PostAt(ui.clock.now + inThePump, {windows.main, MessageKind::Other});
    });
    scanRun.RunScan();
    ExpectQuiet();
    EXPECT_EQ(told.Places(), (Places{{0, 0}, {0, 1}}));
}

TEST_F(QuitScan, EndsWhenItIsToldBeforeItBegins) {
    ui.messages.PostQuit(0);
    scanRun.RunScan();
    ExpectQuiet();
    EXPECT_TRUE(field.calls.empty());
}

TEST_F(QuitScan, EndsWhileThePlaneIsMeasured) {
    focus.tiltCorrection = 1;
    view.onGrab = [this] { ui.messages.PostQuit(0); };
    scanRun.RunScan();
    EXPECT_EQ(told.ends, std::vector{ScanEnd::Stopped});
    EXPECT_TRUE(ui.boxes.questions.empty());
    EXPECT_TRUE(field.calls.empty());
}

/// The main window sends the stage home when it is closed; so does the scan when it finds out.
TEST_F(QuitScan, LeavesAStageThatComesToRestAtTheOrigin) {
    TravellingPort travelling{ui.clock};
    stage.machine.serial = &travelling;
    stage.hComm = travelling.line;
    ui.messages.onDispatch = [this](const Message& message) {
        if (message.kind != MessageKind::Close)
            return;
        motion.MoveXY(scan.originX, scan.originY);
        ui.messages.PostQuit(0);
        ClosePanel();
    };
    bool closed = false;
    field.onCall = [&](const std::string&) {
        if (told.fields.size() == 2 && !std::exchange(closed, true))
            ui.messages.PostAt(ui.clock.now + 100,
                               {windows.main, MessageKind::Close}); // in the step behind it
    };
    scanRun.RunScan();
    EXPECT_EQ(told.ends, std::vector{ScanEnd::Stopped});
    EXPECT_EQ(told.fields.size(), 3U) << "the one in work";
    EXPECT_TRUE(ui.boxes.questions.empty());
    ui.clock.now += 1000;
    for (const int axis : {axisX, axisY}) {
        EXPECT_FALSE(travelling.Moves(axis));
        EXPECT_EQ(travelling.Um(axis), 0.0);
    }
}

} // namespace
} // namespace tessaro
