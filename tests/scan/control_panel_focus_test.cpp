#include "support/scan_fixture.h"

#include <gtest/gtest.h>

#include <limits>
#include <utility>

namespace tessaro {
namespace {

TEST_F(ControlPanelTest, SweepsByTwoThousandMicrometresAtTheFocusSpeed) {
    view.sharpness = [] { return FocusFigures{0.0F, 0.0F, 11.0F, 2.0F}; };
    Open();
    focus.focusSpeed = 200;
    Press(1016);
    EXPECT_EQ(arriving.Commands(), (Texts{"T640", "L3200", "T320", "L-3200", "O", "T640"}));
}

TEST_F(ControlPanelTest, SweepsFinelyByAThousandAtHalfTheFocusSpeed) {
    view.sharpness = [] { return FocusFigures{0.0F, 0.0F, 11.0F, 2.0F}; };
    Open();
    focus.focusSpeed = 449;
    Press(1024);
    EXPECT_EQ(arriving.Commands(), (Texts{"T716", "L1600", "T358", "L-1600", "O", "T716"})) << "224 um/s";
}

TEST_F(ControlPanelTest, SweepsFinelyAtTheLeastSpeedWhereTheHalfIsNothing) {
    view.sharpness = [] { return FocusFigures{0.0F, 0.0F, 11.0F, 2.0F}; };
    Open();
    focus.focusSpeed = 1;
    Press(1024);
    EXPECT_EQ(arriving.Commands(), (Texts{"T1", "L1600", "T1", "L-1600", "O", "T1"}));
}

TEST_F(ControlPanelTest, FocusesAndTakesItsDirectionFromTheTilt) {
    view.sharpness = [] { return FocusFigures{0.0F, 0.0F, 1.0F, 2.0F}; };
    Open();
    Press(1023);
    EXPECT_EQ(arriving.Commands().front(), "L-3");
    EXPECT_EQ(Information().back(), "Focusing completed.");
    motion.MoveAxisTo(axisZ, 0.0);
    arriving.writes.clear();
    focus.xTilt = 0.001F;
    Press(1023);
    EXPECT_EQ(arriving.Commands().front(), "L3");
}

/// "focus" in a field that is in focus: Z stays, and the panel records it or not.
class DepthRecording : public ControlPanelTest {
protected:
    DepthRecording() {
        view.sharpness = [] { return FocusFigures{0.0F, 0.0F, 1.0F, 11.0F}; };
        scan.originX = 1000;
        scan.originY = -500;
        scan.zOrigin = scan.zXmax = scan.zYmax = 7777;
        settings.xRange = 6;
        settings.yRange = 10;
        Open();
    }

    void FocusAt(double x, double y, double z) {
        stage.position = {x, y, z};
        Press(1023);
    }
    Texts Shown() { return {PanelText(1019), PanelText(1017), PanelText(1018)}; }
    std::array<std::int32_t, 3> Depths() const { return {scan.zOrigin, scan.zXmax, scan.zYmax}; }

    using Recorded = std::array<std::int32_t, 3>;
};

TEST_F(DepthRecording, FillsInThreeDepthsAtTheThreePlaces) {
    FocusAt(1000.0, -500.0, 31.0);
    EXPECT_EQ(Depths(), (Recorded{31, 7777, 7777}));
    EXPECT_EQ(Shown(), (Texts{"31", "", ""}));
    FocusAt(7000.0, -500.0, 32.0);
    EXPECT_EQ(Depths(), (Recorded{31, 32, 7777}));
    FocusAt(1000.0, 9500.0, -33.0);
    EXPECT_EQ(Depths(), (Recorded{31, 32, -33}));
    EXPECT_EQ(Shown(), (Texts{"31", "32", "-33"}));
    EXPECT_TRUE(arriving.writes.empty());
}

TEST_F(DepthRecording, RecordsNothingAnywhereElse) {
    for (const auto& [x, y] : {std::pair{999.0, -500.0}, std::pair{1000.0, -499.0}, std::pair{7000.0, 9500.0},
                               std::pair{7001.0, -500.0}, std::pair{1000.0, 9501.0}, std::pair{0.0, 0.0}})
        FocusAt(x, y, 31.0);
    EXPECT_EQ(Depths(), (Recorded{7777, 7777, 7777}));
    EXPECT_EQ(Shown(), (Texts{"", "", ""}));
}

TEST_F(DepthRecording, CutsPositionsTowardZero) {
    FocusAt(1000.9, -500.9, -12.9);
    EXPECT_EQ(Depths(), (Recorded{-12, 7777, 7777}));
    EXPECT_EQ(PanelText(1019), "-12");
    FocusAt(999.9, -500.0, 50.0);
    FocusAt(1000.0, -499.9, 50.0);
    EXPECT_EQ(scan.zOrigin, -12);
    scan.originX = 0;
    scan.originY = 0;
    FocusAt(-0.9, 0.9, 0.9);
    EXPECT_EQ(scan.zOrigin, 0);
}

TEST_F(DepthRecording, TakesTheOriginWhereARangeIsNothing) {
    settings.xRange = 0;
    settings.yRange = 0;
    FocusAt(1000.0, -500.0, 31.0);
    EXPECT_EQ(Depths(), (Recorded{31, 7777, 7777}));
    settings.xRange = 6;
    FocusAt(7000.0, -500.0, 32.0);
    EXPECT_EQ(Depths(), (Recorded{31, 32, 7777}));
}

TEST_F(DepthRecording, FollowsNegativeRangesAndOrigins) {
    scan.originX = -3000;
    dialogs.SetItemText(windows.controlPanel, 1012, "-2");
    FocusAt(-5000.0, -500.0, 31.0);
    EXPECT_EQ(Depths(), (Recorded{7777, 31, 7777}));
}

TEST_F(DepthRecording, RecordsNoFarEndBeyondWhatAPositionBoxCanShow) {
    constexpr std::int32_t most = std::numeric_limits<std::int32_t>::max();
    scan.originX = most;
    scan.originY = most;
    dialogs.SetItemText(windows.controlPanel, 1012, "2147483647");
    dialogs.SetItemText(windows.controlPanel, 1015, "2147483647");
    FocusAt(1e12, 1e12, 1e12);
    EXPECT_EQ(Depths(), (Recorded{most, 7777, 7777})) << "the nearest that can be told";
    FocusAt(-1e12, most, 31.0);
    FocusAt(most, -1e12, 31.0);
    EXPECT_EQ(Depths(), (Recorded{most, 7777, 7777}));
}

TEST_F(DepthRecording, RecordsWhereFocusingHasFailedToo) {
    view.sharpness = [] { return FocusFigures{0.0F, 0.0F, 1.0F, 0.0001F}; };
    scan.stopRequested = 1; // so that it does not climb
    FocusAt(1000.0, -500.0, 10.0);
    EXPECT_EQ(ui.boxes.warnings.size(), 2U);
    EXPECT_EQ(scan.zOrigin, 10);
}

TEST_F(DepthRecording, ShowsThePositionAndRecordsWhereTheSearchHasEnded) {
    view.sharpness = [] { return FocusFigures{0.0F, 0.0F, 1.0F, 2.0F}; };
    FocusAt(1000.0, -500.0, 0.0);
    EXPECT_EQ(stage.position[2], -5.0) << "of a flat curve";
    EXPECT_EQ(scan.zOrigin, -5);
    EXPECT_EQ(PanelText(1000), "1000");
    EXPECT_EQ(PanelText(1005), "-5");
}

TEST_F(DepthRecording, KeepsTheDepthWhenThePanelIsClosedMeanwhile) {
    view.sharpness = [] { return FocusFigures{0.0F, 0.0F, 1.0F, 2.0F}; };
    ui.messages.onDispatch = [&](const Message&) { panel.Close(); };
    ui.messages.PostAt(500, {windows.main, MessageKind::Other});
    FocusAt(1000.0, -500.0, 0.0);
    EXPECT_EQ(windows.controlPanel, WindowHandle::None);
    EXPECT_EQ(scan.zOrigin, -5);
    EXPECT_TRUE(dialogs.TextsOf(1019).empty());
    EXPECT_EQ(focus.focusBusy, 0);
}

TEST_F(DepthRecording, RecordsTwiceWhenFocusIsPressedInTheMiddleOfFocusing) {
    view.sharpness = [] { return FocusFigures{0.0F, 0.0F, 1.0F, 2.0F}; };
    Texts within;
    ui.messages.onDispatch = [&](const Message& message) {
        if (message.kind != MessageKind::Other)
            return;
        Press(1023);
        within = dialogs.TextsOf(1019);
        EXPECT_EQ(focus.focusBusy, 0) << "nor is the first one any more";
        EXPECT_EQ(liveTimer.on, 0) << "which goes on";
    };
    ui.messages.PostAt(500, {windows.main, MessageKind::Other});
    FocusAt(1000.0, -500.0, 0.0);
    EXPECT_EQ(within.size(), 1U);
    EXPECT_EQ(dialogs.TextsOf(1019).size(), 2U);
    EXPECT_EQ(PanelText(1019), std::to_string(scan.zOrigin));
    EXPECT_EQ(Information(), (Texts{"Auto focusing has started.", "Auto focusing has started.",
                                    "Focusing completed.", "Focusing completed."}));
    EXPECT_EQ(focus.focusBusy, 0);
    EXPECT_EQ(liveTimer.on, 1);
}

TEST_F(DepthRecording, ShowsNothingInAPanelThatWasOpenedMeanwhile) {
    view.sharpness = [] { return FocusFigures{0.0F, 0.0F, 1.0F, 2.0F}; };
    ui.messages.onDispatch = [&](const Message&) {
        panel.Close();
        panel.Open(owner);
    };
    ui.messages.PostAt(500, {windows.main, MessageKind::Other});
    FocusAt(1000.0, -500.0, 0.0);
    EXPECT_EQ(scan.zOrigin, -5);
    EXPECT_EQ(PanelText(1019), "");
    EXPECT_EQ(Information().back(), "Focusing completed.");
}

TEST_F(ControlPanelTest, MovesZByItsButtonsInTheMiddleOfFocusing) {
    view.sharpness = [] { return FocusFigures{0.0F, 0.0F, 1.0F, 2.0F}; };
    Open();
    Texts sent;
    ui.messages.onDispatch = [&](const Message& message) {
        if (message.kind != MessageKind::Other)
            return;
        Press(1042);
        sent = arriving.Commands();
    };
    When("L-3", [this] { ui.messages.PostAt(ui.clock.now + 100, {windows.main, MessageKind::Other}); });
    Press(1023);
    EXPECT_EQ(sent, (Texts{"L-3", "L-1"})) << "from -1.875 um to -0.875 um, which are -1.4 steps";
    EXPECT_EQ(Information().back(), "Focusing completed.");
}

TEST_F(ControlPanelTest, DoesNotStartASearchForOtherControls) {
    Open();
    for (const int other : {1006, 1007, 1019, 1017, 1018, 1036, 1039})
        Press(other);
    EXPECT_TRUE(arriving.writes.empty());
    EXPECT_TRUE(view.calls.empty());
}

} // namespace
} // namespace tessaro
