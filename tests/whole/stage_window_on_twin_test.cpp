#include "scan/control_panel_ids.h"
#include "whole/window_on_twin.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

namespace tessaro {
namespace {

using ScreenPlace = std::pair<int, int>; // pixels of the screen

constexpr std::array<int, 3> targetEdits = {panel::targetX, panel::targetY, panel::targetZ};
constexpr ScreenPlace plusX{1131, 860}; // in the motor controller

/// The operator's program with the simulated microscope's stage and camera behind it.
class StageWindowOnTwin : public WindowOnTwin {
protected:
    void SetUp() override {
        WindowOnTwin::SetUp();
        StartTwin({"--wafer-mm", "4", "--seed", "5", "--at", "1000,1000,0"});
    }

    bool WasTold(const std::string& order) const {
        const std::vector<std::string> orders = stage.Orders();
        return std::find(orders.begin(), orders.end(), order) != orders.end();
    }

    /// A key that comes while another is worked on is dropped, so it is pressed until it is obeyed.
    void PressUntil(const std::string& key, const std::string& order) {
        ASSERT_TRUE(Eventually([&] {
            display.Keys({key});
            return Eventually([&] { return WasTold(order); }, std::chrono::seconds(2));
        })) << key;
    }

    /// What is shown at the places of the panel's three position boxes.
    std::string PositionBoxes() const {
        return PanelText(panel::positionX) + PanelText(panel::positionY) + PanelText(panel::positionZ);
    }

    bool ButtonIsLetGo() {
        const auto screen = display.Screenshot(screenshots / "stage-jog-ended.png");
        const int reach = 30;
        return screen.has_value() && screen->Pixel(plusX.first - reach, plusX.second - reach)[0] == 200;
    }

    /// A few pixels of the image.
    std::string Image() const { return display.PartOfScreen(600, 500) + display.PartOfScreen(300, 300); }

    void TypeTarget(std::size_t axis, const std::string& um) { TypeIntoPanel(targetEdits.at(axis), um); }
};

TEST_F(StageWindowOnTwin, AsksWhereTheStageIsAndTellsTwoSpeedsAtTheStart) {
    Start();
    EXPECT_EQ(stage.Commands(), (std::vector<std::string>{"z", "p", "P", "Q", "S2400", "T2400"}));
    display.Screenshot(screenshots / "stage-on-twin.png");
    Exit();
    EXPECT_TRUE(StandsAt({0.0, 0.0, 0.0})) << "at the end it goes to the scan origin";
    EXPECT_EQ(stage.Orders(), (std::vector<std::string>{"z", "S2400", "T2400", "m0", "M0"}));
}

TEST_F(StageWindowOnTwin, MovesTheWaferUnderTheLensByKeysWithTheBoxesFollowing) {
    Start();
    const std::vector<std::pair<std::string, Position>> moves = {
        {"Right", {1400, 1000, 0}}, {"Up", {1400, 1400, 0}},      {"Left", {1000, 1400, 0}},
        {"Down", {1000, 1000, 0}},  {"Page_Up", {1000, 1000, 3}}, {"Page_Down", {1000, 1000, 0}}};
    const std::vector<std::string> orders = {"m2240", "M2240", "m1600", "M1600", "L4", "L0"};
    for (std::size_t i = 0; i < moves.size(); ++i) {
        const std::string boxes = PositionBoxes();
        const std::string image = Image();
        const std::string& key = moves[i].first;
        const Position& target = moves[i].second;
        PressUntil(key, orders[i]);
        EXPECT_TRUE(Eventually([&] { return PositionBoxes() != boxes; })) << key;
        EXPECT_TRUE(Eventually([&] { return Image() != image; })) << key;
        if (i < 4) {
            EXPECT_TRUE(Eventually([&] { return StandsAt(target); })) << key;
        }
    }
    display.Screenshot(screenshots / "stage-moved-by-keys.png");
    Exit();
}

TEST_F(StageWindowOnTwin, GoesToTheTargetsOfThePanelOneAfterTheOther) {
    Start();
    WaitForTheWafer();
    TypeTarget(0, "1500");
    TypeTarget(1, "700");
    TypeTarget(2, "20");
    const std::size_t before = stage.Orders().size();
    const std::string image = Image();
    const std::string boxes = PositionBoxes();
    ClickPanel(panel::move);
    EXPECT_TRUE(Eventually([this] { return StandsAt({1500, 700, 20}) && IsIdle(); }));
    const std::vector<std::string> all = stage.Orders();
    EXPECT_EQ(std::vector<std::string>(all.begin() + static_cast<std::ptrdiff_t>(before), all.end()),
              (std::vector<std::string>{"M1600", "m2400", "m2400", "M1120", "L32"}));
    EXPECT_TRUE(Eventually([&] { return PositionBoxes() != boxes && Image() != image; }));
    display.Screenshot(screenshots / "stage-at-targets.png");
    Exit();
}

TEST_F(StageWindowOnTwin, GoesWhereTheStageDialogSends) {
    Start();
    Menu("Setting XY stage");
    ASSERT_TRUE(Eventually([this] { return display.ActiveTitle() == "XYZ stage configuration\n"; }));
    display.Keys({"ctrl+a"});
    display.Type("120"); // tens of um
    display.Keys({"Tab", "ctrl+a"});
    display.Type("80");
    display.Keys({"Tab", "space"}); // Go
    EXPECT_TRUE(Eventually([this] { return StandsAt({1200, 800, 0}) && IsIdle(); }));
    display.Keys({"Tab", "space"}); // Go to origin
    EXPECT_TRUE(Eventually([this] { return StandsAt({0, 0, 0}) && IsIdle(); }));
    display.Screenshot(screenshots / "stage-dialog-on-twin.png");
    display.Keys({"Escape"});
    ASSERT_TRUE(Eventually([this] { return !display.Shows("XYZ stage configuration"); }));
    Exit();
}

TEST_F(StageWindowOnTwin, StopsAllAxesAtAClickDuringAMove) {
    Start();
    TypeTarget(0, "30000");
    ClickPanel(panel::move);
    ASSERT_TRUE(Eventually([this] { return Where()[0] > 1200.0; }));
    display.ClickIn(panelTitle, panelCaption.x, panelCaption.y);
    ASSERT_TRUE(Eventually([this] { return WasTold("O"); }));
    const std::vector<std::string> orders = stage.Orders();
    EXPECT_EQ(std::vector<std::string>(orders.end() - 3, orders.end()),
              (std::vector<std::string>{"n", "N", "O"}));
    EXPECT_TRUE(Eventually([this] { return IsIdle(); })) << "the wait gives up";
    EXPECT_LT(Where()[0], 20'000.0);
    Exit();
}

TEST_F(StageWindowOnTwin, JogsWhileAButtonIsHeld) {
    StartWithPopup();
    WaitForTheWafer();
    display.MoveTo(plusX.first, plusX.second);
    display.HoldButton();
    const std::string image = Image();
    EXPECT_TRUE(Eventually([this] { return Where()[0] > 1350.0; })) << "step after step of 100 um";
    EXPECT_NE(Image(), image) << "the view follows";
    display.Screenshot(screenshots / "stage-jogging.png");
    display.LetGoOfButton();
    EXPECT_TRUE(Eventually([this] { return IsIdle() && ButtonIsLetGo(); }));
    const double x = Where()[0];
    EXPECT_NEAR(std::remainder(x - 1000.0, 100.0), 0.0, 2.0) << x;
    Exit();
}

TEST_F(StageWindowOnTwin, ComesBackByInitializeAfterItsLineHadGone) {
    Start();
    const std::string boxes = PositionBoxes();
    ASSERT_EQ(twin->Say("fault stage-gone"), "ok");
    display.Keys({"Right"});
    ASSERT_TRUE(Eventually([&] { return PositionBoxes() != boxes; })) << "simulated from now on";
    ASSERT_EQ(twin->Say("clear stage-gone"), "ok");
    Menu("XY Stage Configuration");
    ASSERT_TRUE(Eventually([this] { return display.ActiveTitle() == "XYZ stage Configuration\n"; }));
    display.Keys({"Tab", "space"}); // Initialize
    ASSERT_TRUE(Eventually([this] { return stage.Commands().size() == 12; })) << "opened twice";
    GiveKeysToTheWindow();
    PressUntil("Up", "M2240");
    EXPECT_TRUE(Eventually([this] { return StandsAt({1000, 1400, 0}); }));
    Exit();
}

} // namespace
} // namespace tessaro
