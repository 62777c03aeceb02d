#include "scan/control_panel.h"
#include "support/arriving_port.h"
#include "support/scripted_focus_view.h"
#include "support/shell_fixture.h"

#include <gtest/gtest.h>

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
    ControlPanel panel{{dialogs, windows, settings, focus, scan, stage, motion, autoFocus, status}};
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

} // namespace
} // namespace tessaro
