#include "app/resource_ids.h"
#include "support/scan_fixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <functional>
#include <string>
#include <utility>

namespace tessaro {
namespace {

/// "Start Scan" and what happens in the panel while a scan runs: two rows of two fields from (0, 0).
class PanelScan : public ControlPanelTest {
protected:
    PanelScan() {
        settings.xRange = 1;
        settings.yRange = 1;
        focus.tiltCorrection = 0;
        Open();
    }

    void During(std::size_t fields, const std::function<void()>& action) {
        field.onCall = [this, fields, action](const std::string& call) {
            if (call == "decide" && field.calls.size() == 7 * fields)
                action();
        };
    }

    /// In the wait at the place behind so many fields.
    void PressAfter(std::size_t fields, int button) {
        ui.messages.onDispatch = [this, button](const Message& message) {
            if (message.kind == MessageKind::Other)
                Press(button);
        };
        During(fields, [this] {
            ui.messages.PostAt(ui.clock.now + 100, {windows.main, MessageKind::Other}); // a move takes 20 ms
        });
    }
};

TEST_F(PanelScan, StartsWithNothingFoundAndReturnsWhenItHasEnded) {
    Type(1041, "12");
    dialogs.textsSet.clear();
    Press(1013);
    ASSERT_GE(dialogs.textsSet.size(), 2U);
    EXPECT_EQ(dialogs.textsSet[0], (std::pair<int, std::string>{1041, "0"}));
    EXPECT_EQ(dialogs.textsSet[1], (std::pair<int, std::string>{1006, "scanning..."}));
    EXPECT_EQ(told.ends, std::vector{ScanEnd::Completed});
    EXPECT_EQ(Information().back(), "Scanning has completed.");
}

TEST_F(PanelScan, ScansTheRangesThatAreTyped) {
    dialogs.dialogs.at(windows.controlPanel).texts[1012] = "2";
    Press(1013);
    EXPECT_EQ(told.fields.size(), 10U) << "two rows of five";
}

TEST_F(PanelScan, KeepsItsColumnsAndRowsWhenOtherRangesAreTypedMeanwhile) {
    During(1, [this] {
        Type(1012, "2");
        Type(1015, "3");
    });
    Press(1013);
    EXPECT_EQ(told.fields.size(), 4U);
    EXPECT_EQ(settings.xRange, 2);
    EXPECT_EQ(settings.yRange, 3);
}

TEST_F(PanelScan, IsToldWhereItIsInAPanelThatWasOpenedMeanwhile) {
    During(1, [this] { panel.Close(); });
    field.onCall = [this, close = field.onCall](const std::string& call) {
        close(call);
        if (call == "grab 4" && field.calls.size() == 15)
            panel.Open(owner);
    };
    Press(1013);
    EXPECT_EQ(Information(),
              (Texts{"scanning...", "0% finished, 0.1 minute left", "25% finished, 0.0 minute left",
                     "50% finished, 0.0 minute left", "Scanning has completed."}))
        << "the second field was not shown anywhere";
    EXPECT_EQ(told.fields.size(), 4U);
    EXPECT_EQ(PanelText(1003), "0");
    EXPECT_EQ(PanelText(1005), "") << "a box of a new panel is empty until the stage has moved";
}

TEST_F(PanelScan, EndsInAPanelThatIsClosed) {
    During(1, [this] { Press(2); });
    Press(1013);
    EXPECT_EQ(told.ends, std::vector{ScanEnd::Completed});
    EXPECT_EQ(windows.controlPanel, WindowHandle::None);
}

/// Nothing forbids it: the click is answered No, and then dispatched.
TEST_F(PanelScan, StartsWithinAScan) {
    ui.messages.onDispatch = [this](const Message& message) {
        if (message.kind == MessageKind::LeftButtonPress)
            Press(1013);
    };
    During(2, [this] { ClickIn(0, false); });
    Type(1041, "3");
    Press(1013);
    EXPECT_EQ(dialogs.TextsOf(1041), (Texts{"3", "0", "0"}));
    EXPECT_EQ(told.ends, (std::vector{ScanEnd::Completed, ScanEnd::Interrupted}));
    EXPECT_EQ(ui.boxes.questions.size(), 1U);
    EXPECT_EQ(scan.scanning, 0);
}

TEST_F(PanelScan, MovesTheStageByItsButtonsMeanwhile) {
    ui.messages.onDispatch = [this](const Message& message) {
        if (message.kind == MessageKind::Other)
            Press(1042);
    };
    During(1, [this] { ui.messages.Post({windows.main, MessageKind::Other}); });
    StandAt(0.0, 0.0, 4.0);
    Press(1013);
    const Texts sent = arriving.Commands();
    EXPECT_EQ(std::count(sent.begin(), sent.end(), "L8"), 1) << "from 4 um up to 5";
    EXPECT_EQ(told.fields.size(), 4U);
    EXPECT_EQ(told.fields.back().position[2], 5.0);
}

TEST_F(PanelScan, GoesOnWithoutTheLiveViewAfterTestScore) {
    liveView.Switch(1);
    PressAfter(1, 1014);
    field.onCall = [this, press = field.onCall](const std::string& call) {
        press(call);
        EXPECT_EQ(liveTimer.on, 0) << call << " of call " << field.calls.size();
    };
    Press(1013);
    EXPECT_EQ(std::count(field.calls.begin(), field.calls.end(), "find and paint"), 1);
    EXPECT_EQ(told.fields.size(), 4U);
    EXPECT_EQ(told.ends, std::vector{ScanEnd::Completed});
    EXPECT_EQ(liveTimer.on, 1);
}

TEST_F(PanelScan, GoesBackToAnOriginThatIsSetMeanwhile) {
    PressAfter(2, 1011); // at (400, 400)
    Press(1013);
    EXPECT_EQ(arriving.Commands(),
              (Texts{"s3200", "S3200", "m0", "M0", "m640", "M640", "m0", "m640", "M1280", "m640", "M640"}));
    EXPECT_EQ(told.fields.back().position, (std::array<double, 3>{0.0, 400.0, 0.0})) << "it steps on";
}

/// The wish to stop is not looked at on the way back along X, and the sweep forgets it.
TEST_F(PanelScan, GoesOnWhenCoarseIsPressedBeforeAStopWasNoticed) {
    Type(1015, "2"); // three pairs of rows
    view.sharpness = [] { return FocusFigures{0.0F, 0.0F, 11.0F, 2.0F}; };
    ui.messages.onDispatch = [this](const Message& message) {
        if (message.kind != MessageKind::Other)
            return;
        EXPECT_EQ(scan.stopRequested, 1);
        Press(1016);
    };
    When(
        "m0",
        [this] {
            ClickIn(0, true);
            ui.messages.PostAt(ui.clock.now + 100, {windows.main, MessageKind::Other});
        },
        3); // the origin, the step back, the way back
    Press(1013);
    EXPECT_EQ(ui.boxes.questions.size(), 1U);
    EXPECT_EQ(told.fields.size(), 12U);
    EXPECT_EQ(told.ends, std::vector{ScanEnd::Completed});
}

TEST_F(PanelScan, IsInterruptedByAFocusingThatFails) {
    view.sharpness = [] { return FocusFigures{0.0F, 0.0F, 0.0F, 0.0005F}; };
    PressAfter(1, 1023);
    Press(1013);
    EXPECT_EQ(ui.boxes.warnings.size(), 2U);
    EXPECT_EQ(told.fields.size(), 1U);
    EXPECT_EQ(told.ends, std::vector{ScanEnd::Interrupted});
    EXPECT_EQ(Information().back(), "Scanning has completed.");
}

TEST_F(PanelScan, FollowsThePlaneOnceItsCorrectionIsSwitchedOn) {
    During(3, [this] {
        dialogs.dialogs.at(windows.controlPanel).checks[1004] = true;
        scan.zOrigin = 5;
        Press(1004);
    });
    Press(1013);
    const Texts sent = arriving.Commands();
    EXPECT_EQ(std::count(sent.begin(), sent.end(), "L8"), 1) << "after the step that is left";
}

TEST_F(PanelScan, GivesStopTheKeyboardAndNothingElse) {
    Press(1032);
    EXPECT_EQ(ui.windows.focused, windows.controlPanel);
    EXPECT_TRUE(arriving.writes.empty());
    EXPECT_TRUE(dialogs.TextsOf(1006).empty());
    EXPECT_TRUE(ui.boxes.questions.empty());
}

/// The press of the button is what the pump asks about; the button itself does not stop anything.
TEST_F(PanelScan, StopsByTheClickOnStop) {
    for (const bool answer : {false, true}) {
        told = {};
        field.calls.clear();
        During(1, [&] {
            ui.messages.Post({windows.controlPanel, MessageKind::LeftButtonPress});
            ui.boxes.answers.push_back(answer);
        });
        ui.messages.onDispatch = [this](const Message& message) {
            if (message.window == windows.controlPanel)
                Press(1032);
        };
        Press(1013);
        EXPECT_EQ(told.ends, std::vector{answer ? ScanEnd::Stopped : ScanEnd::Completed});
    }
    EXPECT_EQ(ui.boxes.questions.size(), 2U);
}

/// "Test Score" works on the frame that is there.
class ScoreTest : public ControlPanelTest {
protected:
    ScoreTest() {
        liveView.Switch(1);
        Open();
    }
};

TEST_F(ScoreTest, AnalysesTheFrameThatIsThere) {
    Press(1014);
    EXPECT_EQ(field.calls, (Texts{"find and paint", "reject noise", "group", "decide"}));
    EXPECT_EQ(Progress(), (Texts{"Score testing", "Test finished."}));
    EXPECT_TRUE(Information().empty());
    EXPECT_TRUE(arriving.writes.empty());
    EXPECT_TRUE(view.calls.empty());
}

TEST_F(ScoreTest, SaysSoBeforeAndAfterwards) {
    field.onCall = [this](const std::string&) { EXPECT_EQ(PanelText(1007), "Score testing"); };
    Press(1014);
    EXPECT_EQ(PanelText(1007), "Test finished.");
}

TEST_F(ScoreTest, SwitchesTheLiveViewOffMeanwhile) {
    field.onCall = [this](const std::string&) {
        EXPECT_EQ(liveTimer.on, 0);
        EXPECT_FALSE(LiveTimerRuns());
    };
    Press(1014);
    EXPECT_EQ(liveTimer.on, 1);
    EXPECT_TRUE(LiveTimerRuns());
}

TEST_F(ScoreTest, LeavesALiveViewOffThatWasOff) {
    liveView.Switch(0);
    Press(1014);
    EXPECT_EQ(liveTimer.on, 0);
    EXPECT_FALSE(LiveTimerRuns());
}

TEST_F(ScoreTest, LeavesWhatWasFoundInTheScanBefore) {
    Type(1041, "12");
    Press(1014);
    EXPECT_EQ(PanelText(1041), "12");
    EXPECT_EQ(totalFound, 0);
    EXPECT_TRUE(told.fields.empty());
}

} // namespace
} // namespace tessaro
