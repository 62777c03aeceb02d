#include "support/scan_fixture.h"

#include <gtest/gtest.h>

#include <array>
#include <limits>
#include <string>

namespace tessaro {
namespace {

/// "Slope", the check box, and what they make of the depths that the panel shows.
class PanelTilt : public ControlPanelTest {
protected:
    PanelTilt() {
        settings.xRange = 6;
        settings.yRange = 7;
        dialog = &Open();
    }

    void TypeDepths(const std::string& origin, const std::string& farX, const std::string& farY) {
        dialog->texts[1019] = origin;
        dialog->texts[1017] = farX;
        dialog->texts[1018] = farY;
    }

    FakeDialogs::Dialog* dialog;
};

TEST_F(PanelTilt, IsWorkedOutFromTheDepthsWithFourDecimals) {
    TypeDepths("10", "25", "-11");
    Press(1026);
    EXPECT_EQ(focus.xTilt, 0.0025F) << "15 / 6000";
    EXPECT_EQ(focus.yTilt, -0.003F) << "-21 / 7000";
    EXPECT_EQ(PanelText(1035), "0.0025");
    EXPECT_EQ(PanelText(1040), "-0.0030");
    EXPECT_EQ(focus.tiltMeasured, 1);
    EXPECT_EQ((std::array{scan.zOrigin, scan.zXmax, scan.zYmax}), (std::array{10, 25, -11}));
    EXPECT_TRUE(arriving.writes.empty());
}

TEST_F(PanelTilt, KeepsDepthsThatTheBoxesDoNotSay) {
    scan.zOrigin = 10;
    scan.zXmax = 25;
    scan.zYmax = -11;
    TypeDepths("", "none", "99999999999");
    Press(1026);
    EXPECT_EQ((std::array{scan.zOrigin, scan.zXmax, scan.zYmax}), (std::array{10, 25, -11}));
    EXPECT_EQ(PanelText(1035), "0.0025");
    EXPECT_EQ(PanelText(1040), "-0.0030");
}

TEST_F(PanelTilt, LooksAtTenCharactersOfADepth) {
    TypeDepths("00000000012", "0000000034", " 5.9");
    Press(1026);
    EXPECT_EQ((std::array{scan.zOrigin, scan.zXmax, scan.zYmax}), (std::array{1, 34, 5}));
}

TEST_F(PanelTilt, TakesTheRangesThatAreTyped) {
    TypeDepths("0", "6", "6");
    dialog->texts[1012] = "3";
    dialog->texts[1015] = "4";
    Press(1026);
    EXPECT_EQ(PanelText(1035), "0.0020");
    EXPECT_EQ(PanelText(1040), "0.0015");
}

TEST_F(PanelTilt, IsNothingAlongARangeOfNothing) {
    TypeDepths("0", "6", "6");
    dialog->texts[1012] = "0";
    Press(1026);
    EXPECT_EQ(PanelText(1035), "0.0000");
    EXPECT_EQ(focus.xTilt, 0.0F);
    EXPECT_EQ(focus.tiltMeasured, 1);
}

TEST_F(PanelTilt, HoldsTheFarthestDepths) {
    TypeDepths("-214748364", "2147483647", "0");
    Press(1026);
    EXPECT_EQ(scan.zOrigin, -214748364) << "a tenth character and no more";
    EXPECT_EQ(scan.zXmax, std::numeric_limits<std::int32_t>::max());
    EXPECT_EQ(PanelText(1035), "393705.3438") << "as near as single precision comes";
}

TEST_F(PanelTilt, ComesFromTheThreePlacesWithoutTyping) {
    view.sharpness = [] { return FocusFigures{0.0F, 0.0F, 1.0F, 11.0F}; };
    arriving.tellsXY = true;
    const std::array<std::pair<int, double>, 3> places = {{{1010, 10.0}, {1008, 25.0}, {1009, -11.0}}};
    StandAt(100.0, 200.0, 0.0);
    for (const auto& [button, z] : places) {
        Press(button);
        stage.position[2] = z;
        Press(1023);
    }
    Press(1026);
    EXPECT_EQ(PanelText(1035), "0.0025");
    EXPECT_EQ(PanelText(1040), "-0.0030");
}

TEST_F(PanelTilt, IsForgottenWhenItsCorrectionIsSwitchedOff) {
    TypeDepths("10", "25", "-11");
    Press(1026);
    dialog->checks[1004] = false;
    Press(1004);
    EXPECT_EQ(focus.tiltCorrection, 0);
    EXPECT_EQ(focus.tiltMeasured, 0);
    EXPECT_EQ(PanelText(1035), "");
    EXPECT_EQ(PanelText(1040), "");
    EXPECT_EQ(PanelText(1019), "10") << "the depths stay";
    EXPECT_EQ(focus.xTilt, 0.0025F) << "and so does the way in which searches begin";
}

TEST_F(PanelTilt, IsNotBroughtBackWhenItsCorrectionIsSwitchedOnAgain) {
    TypeDepths("10", "25", "-11");
    Press(1026);
    for (const bool on : {false, true}) {
        dialog->checks[1004] = on;
        Press(1004);
    }
    EXPECT_EQ(focus.tiltCorrection, 1);
    EXPECT_EQ(focus.tiltMeasured, 0);
    EXPECT_EQ(PanelText(1035), "");
    view.sharpness = [] { return FocusFigures{0.0F, 0.0F, 1.0F, 11.0F}; };
    settings.xRange = 0;
    settings.yRange = 0;
    dialog->texts[1012] = dialog->texts[1015] = "0";
    Press(1013);
    EXPECT_EQ(Information().at(1), "Moving to Xmax position.") << "the next scan measures it";
}

TEST_F(PanelTilt, StaysKnownWhenItsCorrectionIsSwitchedOn) {
    focus.tiltMeasured = 1;
    dialog->checks[1004] = true;
    Press(1004);
    EXPECT_EQ(focus.tiltMeasured, 1);
    EXPECT_EQ(focus.tiltCorrection, 1);
    EXPECT_TRUE(dialogs.TextsOf(1035).empty());
}

} // namespace
} // namespace tessaro
