#include "scan/control_panel.h"
#include "support/arriving_port.h"
#include "support/scripted_field.h"
#include "support/scripted_focus_view.h"
#include "support/shell_fixture.h"

#include <gtest/gtest.h>

#include <limits>
#include <utility>

namespace tessaro {
namespace {

class ControlPanelTest : public ShellFixture {
protected:
    static constexpr auto owner = static_cast<WindowHandle>(5);

    ControlPanelTest() {
        ClosePanel();
        stage.machine.serial = &arriving;
        stage.hComm = arriving.line;
    }

    FakeDialogs::Dialog& Open() {
        panel.Open(owner);
        return dialogs.dialogs.at(windows.controlPanel);
    }

    void Press(int controlId) { dialogs.Notify(windows.controlPanel, controlId, Notification::Clicked); }

    FakeDialogs& dialogs = ui.dialogs;
    ArrivingPort arriving{ui.clock}; // 1 um is 1.6 steps
    Settings settings;
    FocusControl focus;
    StageMotion motion{stage, pump, status, ui.clock};
    float focusValue = 10.0F;
    ScriptedFocusView view{focusValue};
    AutoFocus autoFocus{
        {view, focus, focusValue, scan, stage, motion, pump, liveView, liveTimer, status, ui.boxes, windows}};
    ScriptedField field;
    ImageFolders folders{ui.folders};
    ScreenView screenView;
    Screen screen{screenView, ui.drawing, ui.windows, windows, status, pump};
    ImageFiles images{folders, ui.folders, ui.pictures, ui.clock, screen, ui.drawing, windows, status, stage};
    std::int32_t totalFound = 0;
    TiltPlane tilt{{view, autoFocus, stage, motion, pump, status, scan, settings}};
    ScanRun scanRun{{field, images, tilt, focus, stage, motion, pump, liveView, liveTimer, status, scan,
                     settings, totalFound}};
    ControlPanel panel{{dialogs, ui.windows, windows, settings, focus, scan, stage, motion, autoFocus, tilt,
                        field, scanRun, liveView, liveTimer, status}};
};

TEST_F(ControlPanelTest, IsDialog137ShownBesideItsOwner) {
    const FakeDialogs::Dialog& dialog = Open();
    EXPECT_EQ(dialog.resource, 137);
    EXPECT_EQ(dialog.owner, owner);
    EXPECT_TRUE(dialog.shown);
}

TEST_F(ControlPanelTest, StartsWithTheScanRangesOfTheSettings) {
    settings.xRange = 12;
    settings.yRange = -7;
    FakeDialogs::Dialog& dialog = Open();
    EXPECT_EQ(dialog.texts[1012], "12");
    EXPECT_EQ(dialog.texts[1015], "-7");
}

TEST_F(ControlPanelTest, ChecksTiltCorrectionOnlyForOne) {
    EXPECT_TRUE(Open().checks[1004]) << "on from the start";
    panel.Close();
    focus.tiltCorrection = 0;
    EXPECT_FALSE(Open().checks[1004]);
    panel.Close();
    focus.tiltCorrection = 2;
    EXPECT_FALSE(Open().checks[1004]);
}

TEST_F(ControlPanelTest, IsNeverOpenTwice) {
    Open();
    const WindowHandle first = windows.controlPanel;
    panel.Open(owner);
    EXPECT_EQ(windows.controlPanel, first);
    EXPECT_EQ(dialogs.dialogs.size(), 1U);
}

TEST_F(ControlPanelTest, IsGoneWhenClosedAndCanBeOpenedAgain) {
    Open();
    const WindowHandle first = windows.controlPanel;
    panel.Close();
    EXPECT_EQ(windows.controlPanel, WindowHandle::None);
    EXPECT_TRUE(dialogs.dialogs.empty());
    Open();
    EXPECT_NE(windows.controlPanel, first);
}

TEST_F(ControlPanelTest, IsClosedByEscapeAndByItsCloseButton) {
    Open();
    dialogs.Notify(windows.controlPanel, 2, Notification::Clicked);
    EXPECT_EQ(windows.controlPanel, WindowHandle::None);
    EXPECT_TRUE(dialogs.dialogs.empty());
}

TEST_F(ControlPanelTest, ThatIsClosedCanBeClosedAgain) {
    panel.Close();
    EXPECT_EQ(windows.controlPanel, WindowHandle::None);
}

TEST_F(ControlPanelTest, TakesNewRangesWhileItIsOpenOnly) {
    panel.ShowRanges();
    EXPECT_TRUE(dialogs.textsSet.empty());
    FakeDialogs::Dialog& dialog = Open();
    settings.xRange = 3;
    settings.yRange = 4;
    panel.ShowRanges();
    EXPECT_EQ(dialog.texts[1012], "3");
    EXPECT_EQ(dialog.texts[1015], "4");
}

TEST_F(ControlPanelTest, StaysClosedWhenItsResourceIsMissing) {
    dialogs.noResources = true;
    panel.Open(owner);
    EXPECT_EQ(windows.controlPanel, WindowHandle::None);
    dialogs.noResources = false;
    panel.Open(owner);
    EXPECT_NE(windows.controlPanel, WindowHandle::None);
}

using Commands = std::vector<std::string>;

TEST_F(ControlPanelTest, MovesToTheTypedTargetsOneAfterTheOther) {
    FakeDialogs::Dialog& dialog = Open();
    dialog.texts[1002] = "100";
    dialog.texts[1021] = "-200";
    dialog.texts[1022] = "30";
    Press(1027);
    EXPECT_EQ(arriving.Commands(), (Commands{"M0", "m160", "m160", "M-320", "L48"}));
    EXPECT_EQ(stage.position, (std::array<double, 3>{100.0, -200.0, 30.0}));
    EXPECT_EQ(dialog.texts[1000], "100");
    EXPECT_EQ(dialog.texts[1003], "-200");
    EXPECT_EQ(dialog.texts[1005], "30");
}

TEST_F(ControlPanelTest, MovesOnlyToTargetsThatAreNumbers) {
    stage.position = {10.0, 20.0, 30.0};
    arriving.steps = {16, 32, 48};
    FakeDialogs::Dialog& dialog = Open();
    Press(1027);
    EXPECT_TRUE(arriving.writes.empty());
    EXPECT_EQ(dialog.texts[1000], "10") << "the position boxes are shown at any rate";
    dialog.texts[1002] = "up";
    dialog.texts[1021] = "40";
    Press(1027);
    EXPECT_EQ(arriving.Commands(), (Commands{"m16", "M64"}));
    arriving.writes.clear();
    dialog.texts[1021] = "";
    dialog.texts[1022] = "9999999999";
    Press(1027);
    EXPECT_TRUE(arriving.writes.empty());
}

TEST_F(ControlPanelTest, LooksAtFiftyCharactersOfATarget) {
    Open().texts[1022] = std::string(48, '0') + "123";
    Press(1027);
    EXPECT_EQ(arriving.Commands(), Commands{"L19"}) << "12 um";
}

TEST_F(ControlPanelTest, ShowsThePositionOfASimulatedStageAfterAMove) {
    stage.hComm = SerialHandle::Invalid;
    stage.offline = 1;
    FakeDialogs::Dialog& dialog = Open();
    dialog.texts[1002] = "2147483647";
    Press(1027);
    EXPECT_EQ(dialog.texts[1000], "2147483647");
}

TEST_F(ControlPanelTest, MovesNothingMoreWhenItIsClosedDuringAMove) {
    FakeDialogs::Dialog& dialog = Open();
    dialog.texts[1002] = "100";
    dialog.texts[1021] = "200";
    ui.messages.onDispatch = [&](const Message&) { panel.Close(); };
    ui.messages.Post({windows.main, MessageKind::Other});
    Press(1027);
    EXPECT_EQ(arriving.Commands(), (Commands{"M0", "m160"}));
}

TEST_F(ControlPanelTest, SweepsByTwoThousandMicrometresAtTheFocusSpeed) {
    view.sharpness = [] { return FocusFigures{0.0F, 0.0F, 11.0F, 2.0F}; };
    Open();
    focus.focusSpeed = 200;
    Press(1016);
    EXPECT_EQ(arriving.Commands(), (Commands{"T640", "L3200", "T320", "L-3200", "O", "T640"}));
}

TEST_F(ControlPanelTest, SweepsFinelyByAThousandAtHalfTheFocusSpeed) {
    view.sharpness = [] { return FocusFigures{0.0F, 0.0F, 11.0F, 2.0F}; };
    Open();
    focus.focusSpeed = 201;
    Press(1024);
    EXPECT_EQ(arriving.Commands(), (Commands{"T320", "L1600", "T160", "L-1600", "O", "T320"})) << "100 um/s";
}

TEST_F(ControlPanelTest, SweepsFinelyAtTheLeastSpeedWhereTheHalfIsNothing) {
    view.sharpness = [] { return FocusFigures{0.0F, 0.0F, 11.0F, 2.0F}; };
    Open();
    focus.focusSpeed = 1;
    Press(1024);
    EXPECT_EQ(arriving.Commands(), (Commands{"T1", "L1600", "T1", "L-1600", "O", "T1"}));
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
    Commands Shown() { return {PanelText(1019), PanelText(1017), PanelText(1018)}; }
    std::array<std::int32_t, 3> Depths() const { return {scan.zOrigin, scan.zXmax, scan.zYmax}; }

    using Recorded = std::array<std::int32_t, 3>;
};

TEST_F(DepthRecording, FillsInThreeDepthsAtTheThreePlaces) {
    FocusAt(1000.0, -500.0, 31.0);
    EXPECT_EQ(Depths(), (Recorded{31, 7777, 7777}));
    EXPECT_EQ(Shown(), (Commands{"31", "", ""}));
    FocusAt(7000.0, -500.0, 32.0);
    EXPECT_EQ(Depths(), (Recorded{31, 32, 7777}));
    FocusAt(1000.0, 9500.0, -33.0);
    EXPECT_EQ(Depths(), (Recorded{31, 32, -33}));
    EXPECT_EQ(Shown(), (Commands{"31", "32", "-33"}));
    EXPECT_TRUE(arriving.writes.empty());
}

TEST_F(DepthRecording, RecordsNothingAnywhereElse) {
    for (const auto& [x, y] : {std::pair{999.0, -500.0}, std::pair{1000.0, -499.0}, std::pair{7000.0, 9500.0},
                               std::pair{7001.0, -500.0}, std::pair{1000.0, 9501.0}, std::pair{0.0, 0.0}})
        FocusAt(x, y, 31.0);
    EXPECT_EQ(Depths(), (Recorded{7777, 7777, 7777}));
    EXPECT_EQ(Shown(), (Commands{"", "", ""}));
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

TEST_F(DepthRecording, HasNoFarEndBeyondWhatAPositionCanBe) {
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
    Commands within;
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
    EXPECT_EQ(Information(), (Commands{"Auto focusing has started.", "Auto focusing has started.",
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

TEST_F(ControlPanelTest, DoesNotStartASearchForOtherControls) {
    Open();
    for (const int other : {1006, 1007, 1019, 1017, 1018, 1036, 1039})
        Press(other);
    EXPECT_TRUE(arriving.writes.empty());
    EXPECT_TRUE(view.calls.empty());
}

} // namespace
} // namespace tessaro
