#include "support/scan_fixture.h"

#include <gtest/gtest.h>

namespace tessaro {
namespace {

TEST_F(ControlPanelTest, MovesToTheTypedTargetsOneAfterTheOther) {
    FakeDialogs::Dialog& dialog = Open();
    dialog.texts[1002] = "100";
    dialog.texts[1021] = "-200";
    dialog.texts[1022] = "30";
    Press(1027);
    EXPECT_EQ(arriving.Commands(), (Texts{"M0", "m160", "m160", "M-320", "L48"}));
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
    EXPECT_EQ(arriving.Commands(), (Texts{"m16", "M64"}));
    arriving.writes.clear();
    dialog.texts[1021] = "";
    dialog.texts[1022] = "9999999999";
    Press(1027);
    EXPECT_TRUE(arriving.writes.empty());
}

TEST_F(ControlPanelTest, LooksAtFiftyCharactersOfATarget) {
    Open().texts[1022] = std::string(48, '0') + "123";
    Press(1027);
    EXPECT_EQ(arriving.Commands(), Texts{"L19"}) << "12 um";
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
    EXPECT_EQ(arriving.Commands(), (Texts{"M0", "m160"}));
}

} // namespace
} // namespace tessaro
