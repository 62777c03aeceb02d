#include "scan/control_panel.h"
#include "support/scan_fixture.h"

#include <gtest/gtest.h>

namespace tessaro {
namespace {

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

TEST_F(ControlPanelTest, IsClosedByItsCloseCommand) {
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

} // namespace
} // namespace tessaro
