#include "support/scan_fixture.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

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

TEST_F(ControlPanelTest, ReadsEachTargetWhenTheStageHasArrivedAtTheOneBefore) {
    FakeDialogs::Dialog& dialog = Open();
    dialog.texts[1002] = "100";
    dialog.texts[1021] = "-200";
    ui.messages.onDispatch = [&](const Message& message) {
        if (message.kind != MessageKind::Other)
            return;
        dialog.texts[1002] = "500";
        dialog.texts[1021] = "300";
        dialog.texts[1022] = "50";
    };
    When("m160", [this] { ui.messages.Post({windows.main, MessageKind::Other}); });
    Press(1027);
    EXPECT_EQ(arriving.Commands(), (Texts{"M0", "m160", "m160", "M480", "L80"}));
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

/// The buttons that move by themselves, over an area of 6 mm by 7 mm at (1000, -500).
class PanelButtons : public ControlPanelTest {
protected:
    static constexpr int farX = 1008, farY = 1009, origin = 1010, up = 1042, down = 1029;

    PanelButtons() {
        arriving.tellsXY = true;
        scan.originX = 1000;
        scan.originY = -500;
        settings.xRange = 6;
        settings.yRange = 7;
        Open();
    }

    /// While a command is carried out.
    void PressWhile(const std::string& command, int button) {
        ui.messages.onDispatch = [this, button](const Message& message) {
            if (message.kind != MessageKind::Other)
                return;
            Press(button);
            ++pressedMeanwhile;
        };
        When(command, [this] { ui.messages.Post({windows.main, MessageKind::Other}); });
    }

    int pressedMeanwhile = 0;
};

TEST_F(PanelButtons, GoToTheThreePlaces) {
    Press(farX);
    EXPECT_EQ(arriving.Commands(), (Texts{"M-800", "m11200"}));
    Press(farY);
    Press(origin);
    EXPECT_EQ(arriving.Commands(), (Texts{"M-800", "m11200", "m1600", "M10400", "m1600", "M-800"}));
    EXPECT_EQ(dialogs.TextsOf(1000), (Texts{"0", "7000", "1000"}));
    EXPECT_EQ(dialogs.TextsOf(1003), (Texts{"-500", "6500", "-500"}));
}

TEST_F(PanelButtons, ShowThePositionOfASimulatedStage) {
    stage.hComm = SerialHandle::Invalid;
    stage.offline = 1;
    Press(farX);
    EXPECT_EQ(PanelText(1000), "7000");
    EXPECT_EQ(PanelText(1003), "-500");
    EXPECT_EQ(PanelText(1005), "0");
}

TEST_F(PanelButtons, ShowTheZOfASimulatedStage) {
    stage.hComm = SerialHandle::Invalid;
    stage.offline = 1;
    Press(up);
    EXPECT_EQ(PanelText(1005), "1");
    Press(down);
    EXPECT_EQ(PanelText(1005), "0");
}

TEST_F(PanelButtons, AreIgnoredWhileAnotherMoves) {
    for (const int button : {farX, farY, origin, up, down}) {
        StandAt(0.0, 0.0, 0.0);
        arriving.writes.clear();
        PressWhile("m11200", button);
        Press(farX);
        EXPECT_EQ(arriving.Commands(), (Texts{"M-800", "m11200"})) << button;
    }
    EXPECT_EQ(pressedMeanwhile, 5);
}

TEST_F(PanelButtons, AreIgnoredWhileZMovesByAMicrometre) {
    for (const int button : {farX, farY, origin, up, down}) {
        StandAt(0.0, 0.0, 4.0);
        arriving.writes.clear();
        PressWhile("L8", button);
        Press(up);
        EXPECT_EQ(arriving.Commands(), Texts{"L8"}) << button;
    }
    EXPECT_EQ(pressedMeanwhile, 5);
}

TEST_F(PanelButtons, ActAgainAfterwards) {
    PressWhile("m11200", farY);
    Press(farX);
    Press(up);
    Press(down);
    Press(origin);
    EXPECT_EQ(arriving.Commands(), (Texts{"M-800", "m11200", "L1", "L0", "M-800", "m1600"}));
}

/// Only these five keep out of each other's way.
TEST_F(PanelButtons, DoNotKeepTheTypedTargetsBack) {
    dialogs.dialogs.at(windows.controlPanel).texts[1022] = "10";
    PressWhile("m11200", 1027);
    Press(farX);
    EXPECT_EQ(arriving.Commands(), (Texts{"M-800", "m11200", "L16"}));
}

/// Recording a depth ends the busy time, whoever has begun it.
TEST_F(PanelButtons, ActOnceAFocusingInTheMiddleHasEnded) {
    view.sharpness = [] { return FocusFigures{0.0F, 0.0F, 1.0F, 11.0F}; };
    ui.messages.onDispatch = [this](const Message& message) {
        if (message.kind != MessageKind::Other)
            return;
        Press(1023);
        Press(up);
    };
    When("m11200", [this] { ui.messages.Post({windows.main, MessageKind::Other}); });
    Press(farX);
    EXPECT_EQ(arriving.Commands(), (Texts{"M-800", "m11200", "L1"}));
}

TEST_F(PanelButtons, MoveZByAMicrometre) {
    StandAt(0.0, 0.0, 10.0);
    Press(up);
    EXPECT_EQ(arriving.Commands().back(), "L17") << "11 um are 17.6 steps";
    EXPECT_EQ(PanelText(1005), "10") << "10.625";
    StandAt(0.0, 0.0, 10.0);
    Press(down);
    EXPECT_EQ(arriving.Commands().back(), "L14") << "9 um are 14.4 steps";
    EXPECT_EQ(PanelText(1005), "8") << "8.75";
}

TEST_F(PanelButtons, RecordTheDepthWhereZIsMoved) {
    StandAt(1000.0, -500.0, 10.0);
    Press(up);
    EXPECT_EQ(scan.zOrigin, 10);
    EXPECT_EQ(PanelText(1019), "10");
    StandAt(7000.0, -500.0, 20.0);
    Press(down);
    EXPECT_EQ(scan.zXmax, 18) << "19 um are 30.4 steps, and these 18.75 um";
    EXPECT_EQ(PanelText(1017), "18");
    StandAt(1000.0, 6500.0, -20.0);
    Press(down);
    EXPECT_EQ(scan.zYmax, -20) << "-21 um are -33.6 steps, and these -20.625 um";
    EXPECT_EQ(PanelText(1018), "-20");
    StandAt(0.0, 0.0, 50.0);
    Press(up);
    EXPECT_EQ(scan.zOrigin, 10);
}

TEST_F(PanelButtons, TakeTheRangesThatWereTypedDuringAMove) {
    StandAt(2000.0, -500.0, 10.0);
    ui.messages.onDispatch = [this](const Message& message) {
        if (message.kind == MessageKind::Other)
            Type(1012, "1");
    };
    When("L17", [this] { ui.messages.Post({windows.main, MessageKind::Other}); });
    Press(up);
    EXPECT_EQ(scan.zXmax, 10) << "X max is here now";
}

TEST_F(PanelButtons, StopTheStageByAClickWhileItMoves) {
    When("m11200", [this] { ui.messages.Post({windows.main, MessageKind::LeftButtonPress}); });
    Press(farX);
    EXPECT_EQ(arriving.Commands(), (Texts{"M-800", "m11200", "n", "N", "O"}));
    EXPECT_TRUE(ui.boxes.questions.empty());
}

TEST_F(PanelButtons, SetTheOriginTowardZero) {
    stage.position = {12.9, -12.9, 77.0};
    Press(1011);
    EXPECT_EQ(scan.originX, 12);
    EXPECT_EQ(scan.originY, -12);
    EXPECT_EQ(scan.zOrigin, 0) << "its height stays";
    EXPECT_EQ(Information(), Texts{"Starting point is set here."});
    EXPECT_TRUE(arriving.writes.empty());
    EXPECT_TRUE(dialogs.TextsOf(1000).empty());
}

TEST_F(PanelButtons, SetAnOriginThatThePositionCannotTell) {
    stage.position = {1e12, -1e12, 0.0};
    Press(1011);
    EXPECT_EQ(scan.originX, std::numeric_limits<std::int32_t>::max());
    EXPECT_EQ(scan.originY, std::numeric_limits<std::int32_t>::min());
}

TEST_F(PanelButtons, DoNothingThatIsNotOneOfThem) {
    for (const int other : {1, 1000, 1002, 1006, 1007, 1012, 1019, 1035, 1041, 32800, 0, -1})
        Press(other);
    EXPECT_TRUE(arriving.writes.empty());
    EXPECT_EQ(dialogs.textsSet.size(), 2U) << "the ranges as it opened";
    EXPECT_TRUE(field.calls.empty());
}

} // namespace
} // namespace tessaro
