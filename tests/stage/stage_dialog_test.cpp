#include "stage/stage_dialog.h"
#include "stage/stage_units.h"
#include "support/arriving_port.h"
#include "support/shell_fixture.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace tessaro {
namespace {

using namespace std::string_literals;
using Commands = std::vector<std::string>;

/// Moves arrive at once; 1 um is 1.6 steps.
class StageDialogTest : public ShellFixture {
protected:
    StageDialogTest() {
        stage.machine.serial = &arriving;
        stage.hComm = arriving.line;
    }

    /// Opens the dialog, lets the operator act in it, and closes it again unless it is gone.
    void Use(const std::function<void()>& act) {
        ui.dialogs.whileModal = [this, act](WindowHandle handle) {
            dialog = handle;
            act();
            Press(2);
        };
        stageDialog.Show(windows.main);
    }
    void Press(int controlId) { ui.dialogs.Notify(dialog, controlId, Notification::Clicked); }
    void Type(int controlId, const std::string& text) {
        ui.dialogs.dialogs.at(dialog).texts[controlId] = text;
    }
    std::string Text(int controlId) { return ui.dialogs.ItemText(dialog, controlId, 100); }
    void PutStageAt(double x, double y, double z = 0.0) {
        stage.position = {x, y, z};
        for (std::size_t axis = 0; axis < 3; ++axis)
            arriving.steps[axis] = StepsOf(stage.position[axis]);
    }

    ArrivingPort arriving{ui.clock};
    Settings settings;
    StageMotion motion{stage, pump, status, ui.clock};
    StageDialog stageDialog{ui.dialogs, stage, motion, settings, status};
    WindowHandle dialog = WindowHandle::None;
};

TEST_F(StageDialogTest, IsDialog130AndEndsWithDone) {
    bool ended = false;
    Use([&] {
        EXPECT_EQ(ui.dialogs.dialogs.at(dialog).owner, windows.main);
        ui.dialogs.Notify(dialog, 1007, Notification::TextChanged);
        EXPECT_FALSE(ui.dialogs.dialogs.at(dialog).ended);
        Press(2);
        ended = ui.dialogs.dialogs.at(dialog).ended;
        EXPECT_EQ(ui.dialogs.dialogs.at(dialog).result, 2);
    });
    EXPECT_EQ(ui.dialogs.modalResources, std::vector<int>{130});
    EXPECT_TRUE(ended);
    EXPECT_TRUE(arriving.writes.empty());
}

TEST_F(StageDialogTest, ShowsPositionsAndStepInTensOfMicrometres) {
    PutStageAt(1234.9, -1234.9, 77.0);
    settings.xRange = 12;
    settings.yRange = 0;
    Use([&] {
        EXPECT_EQ(Text(1007), "123");
        EXPECT_EQ(Text(1012), "-123");
        EXPECT_EQ(Text(1000), "100") << "whatever Z is";
        EXPECT_EQ(Text(1005), "12");
        EXPECT_EQ(Text(1006), "0");
        EXPECT_EQ(Text(1015), "40");
    });
}

TEST_F(StageDialogTest, TruncatesAPositionTowardZeroTwice) {
    for (const auto& [um, shown] :
         {std::pair(9.99, "0"), std::pair(-9.99, "0"), std::pair(-10.0, "-1"), std::pair(10.0, "1"),
          std::pair(19.99, "1"), std::pair(1e300, "214748364")}) {
        stage.position[0] = um;
        Use([&, shown = shown] { EXPECT_EQ(Text(1007), shown); });
    }
}

TEST_F(StageDialogTest, GoesToTheTypedXAndThenToTheTypedY) {
    PutStageAt(1000.0, 2000.0);
    Use([&] {
        Type(1007, "12");
        Type(1012, "-34");
        Press(1009);
    });
    EXPECT_EQ(arriving.Commands(), (Commands{"M3200", "m192", "m192", "M-544"}));
    EXPECT_EQ(stage.position[0], 120.0);
    EXPECT_EQ(stage.position[1], -340.0);
}

TEST_F(StageDialogTest, GoesAlongOneAxisWhenTheOtherTextIsNoNumber) {
    PutStageAt(1000.0, 2000.0);
    Use([&] {
        Type(1007, "");
        Type(1012, "34");
        Press(1009);
        EXPECT_EQ(arriving.Commands(), (Commands{"m1600", "M544"}));
        arriving.writes.clear();
        Type(1007, "12");
        Type(1012, "up");
        Press(1009);
        EXPECT_EQ(arriving.Commands(), (Commands{"M544", "m192"}));
        arriving.writes.clear();
        Type(1007, "-");
        Press(1009);
        EXPECT_TRUE(arriving.writes.empty());
    });
}

TEST_F(StageDialogTest, LooksAtTenCharactersOfANumber) {
    Use([&] {
        Type(1007, "00000000123");
        Type(1012, "");
        Press(1009);
    });
    EXPECT_EQ(stage.position[0], 120.0);
}

TEST_F(StageDialogTest, SendsTheStageAsFarAsItCanBeToldForANumberThatIsTooLarge) {
    Use([&] {
        Type(1007, "2147483647");
        Type(1012, "");
        Press(1009);
        EXPECT_EQ(arriving.Commands(), (Commands{"M0", "m2147483647"}));
        arriving.writes.clear();
        Type(1007, "-999999999");
        Press(1009);
        EXPECT_EQ(arriving.Commands(), (Commands{"M0", "m-2147483648"}));
        arriving.writes.clear();
        Type(1007, "9999999999"); // no number that it could hold
        Press(1009);
        EXPECT_TRUE(arriving.writes.empty());
    });
}

TEST_F(StageDialogTest, GoesToTheOriginByAbsoluteMovesXFirstAndWaitsForY) {
    PutStageAt(1000.0, -20.0);
    Use([&] {
        Press(1008);
        EXPECT_EQ(Text(1007), "0");
        EXPECT_EQ(Text(1012), "0");
    });
    EXPECT_EQ(arriving.writes, (Commands{"m0\0"s, "M0\0"s, "P\0"s}));
    EXPECT_EQ(stage.position[0], 0.0);
    EXPECT_EQ(stage.position[1], 0.0);
}

TEST_F(StageDialogTest, StepsAlongXAndYAndShowsWhereItIsThen) {
    PutStageAt(1000.0, 2000.0);
    Use([&] {
        Type(1015, "5");
        Press(1010); // -X
        EXPECT_EQ(Text(1007), "95");
        Press(1011); // +X
        Press(1011);
        EXPECT_EQ(Text(1007), "105");
        EXPECT_EQ(Text(1012), "200");
        Press(1050); // -Y
        EXPECT_EQ(Text(1012), "195");
        EXPECT_EQ(Text(1007), "105");
    });
    EXPECT_EQ(arriving.Commands(),
              (Commands{"M3200", "m1520", "M3200", "m1600", "M3200", "m1680", "m1680", "M3120"}));
}

TEST_F(StageDialogTest, StepsFromWhereTheStageIsAndNotFromWhatIsTyped) {
    PutStageAt(1000.0, 0.0);
    Use([&] {
        Type(1007, "7");
        Press(1011);
        EXPECT_EQ(Text(1007), "140") << "from where the stage is, by the 400 um that the step starts with";
    });
}

TEST_F(StageDialogTest, TurnsAroundWithANegativeStep) {
    Use([&] {
        Type(1015, "-5");
        Press(1011);
        EXPECT_EQ(Text(1007), "-5");
    });
}

TEST_F(StageDialogTest, StepsNowhereWhenTheStepIsNoNumber) {
    Use([&] {
        Type(1015, "");
        Type(1000, "z");
        for (const int button : {1010, 1011, 1050, 1016, 1026})
            Press(button);
        ui.dialogs.Notify(dialog, 1051, Notification::Clicked);
    });
    EXPECT_TRUE(arriving.writes.empty());
}

TEST_F(StageDialogTest, DoesNothingOnThePlusYButton) {
    Use([&] {
        Press(1014);
        EXPECT_EQ(Text(1012), "0");
    });
    EXPECT_TRUE(arriving.writes.empty());
}

TEST_F(StageDialogTest, StepsUpAlongYOnTheCommandThatNoButtonHas) {
    Use([&] {
        Press(1051);
        EXPECT_EQ(Text(1012), "40");
    });
    EXPECT_EQ(arriving.Commands(), (Commands{"m0", "M640"}));
}

TEST_F(StageDialogTest, MovesZByMicrometres) {
    PutStageAt(0.0, 0.0, 10.0);
    Use([&] {
        Press(1016);
        EXPECT_EQ(stage.position[2], 110.0);
        Type(1000, "-3");
        Press(1026);
        EXPECT_EQ(stage.position[2], 112.5) << "113 um are 180.8 steps";
        Type(1000, "2147483647");
        Press(1016);
    });
    EXPECT_EQ(arriving.Commands(), (Commands{"L176", "L180", "L2147483647"}));
}

TEST_F(StageDialogTest, SetsThePositionWithoutAnyMotion) {
    Use([&] {
        Type(1007, "12");
        Type(1012, " 34 ");
        Press(1);
        EXPECT_FALSE(ui.dialogs.dialogs.at(dialog).ended);
        EXPECT_EQ(Text(1007), "12");
    });
    EXPECT_EQ(stage.position[0], 120.0);
    EXPECT_EQ(stage.position[1], 340.0);
    EXPECT_EQ(PanelText(1012), " 34 ") << "the very text";
    EXPECT_TRUE(arriving.writes.empty());
}

TEST_F(StageDialogTest, SetsTheScanAreaWithinItsLimits) {
    for (const auto& [typed, length] : {std::pair("7", 7), std::pair("0", 1), std::pair("-5", 1),
                                        std::pair("50", 50), std::pair("51", 50)}) {
        Use([&, typed = typed, length = length] {
            Type(1005, typed);
            Type(1006, typed);
            Press(1);
            EXPECT_EQ(Text(1005), std::to_string(length));
            EXPECT_EQ(Text(1006), std::to_string(length));
        });
        EXPECT_EQ(settings.xRange, length);
        EXPECT_EQ(settings.yRange, length);
        EXPECT_EQ(PanelText(1015), std::to_string(length));
    }
}

TEST_F(StageDialogTest, SetsOnlyWhatIsANumber) {
    PutStageAt(10.0, 20.0);
    settings.xRange = 3;
    settings.yRange = 4;
    Use([&] {
        for (const int edit : {1007, 1012, 1005, 1006})
            Type(edit, "none");
        Press(1);
        EXPECT_EQ(Text(1005), "none");
        EXPECT_EQ(Text(1006), "none");
    });
    EXPECT_EQ(stage.position, (std::array<double, 3>{10.0, 20.0, 0.0}));
    EXPECT_EQ(settings.xRange, 3);
    EXPECT_EQ(settings.yRange, 4);
    EXPECT_EQ(PanelText(1012), "");
    EXPECT_EQ(PanelText(1015), "");
}

TEST_F(StageDialogTest, SetsWithoutAControlPanel) {
    ClosePanel();
    Use([&] {
        Type(1012, "5");
        Press(1);
    });
    EXPECT_EQ(stage.position[1], 50.0);
}

TEST_F(StageDialogTest, MovesNothingMoreWhenItGoesAwayDuringAMove) {
    bool destroyed = false;
    ui.messages.onDispatch = [&](const Message&) {
        destroyed = true;
        ui.windows.Destroy(windows.main);
    };
    Use([&] {
        Type(1007, "12");
        Type(1012, "34");
        ui.messages.Post({windows.main, MessageKind::Other});
        Press(1009);
    });
    EXPECT_TRUE(destroyed);
    EXPECT_EQ(arriving.Commands(), (Commands{"M0", "m192"}));
    EXPECT_EQ(ui.dialogs.Find(130), WindowHandle::None);
}

TEST_F(StageDialogTest, RunsAnotherCommandInTheMiddleOfAMove) {
    ui.messages.onDispatch = [&](const Message& message) {
        if (message.kind == MessageKind::Other)
            Press(1016);
    };
    Use([&] {
        ui.messages.Post({windows.main, MessageKind::Other});
        Press(1011);
    });
    EXPECT_EQ(arriving.Commands(), (Commands{"M0", "m640", "L160"}));
    EXPECT_EQ(stage.position[2], 100.0);
}

TEST_F(StageDialogTest, MovesASimulatedStageAtOnce) {
    stage.hComm = SerialHandle::Invalid;
    stage.offline = 1;
    Use([&] {
        Press(1011);
        EXPECT_EQ(Text(1007), "40");
        Press(1008);
        EXPECT_EQ(Text(1007), "0");
    });
    EXPECT_EQ(ui.clock.now, 0U);
}

} // namespace
} // namespace tessaro
