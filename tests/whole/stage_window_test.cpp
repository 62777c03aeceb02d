// The operator's windows of the stage without a controller: what mouse and keys do, and what is drawn.

#include "scan/control_panel_ids.h"
#include "whole/window_driver.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

namespace tessaro {
namespace {

constexpr std::pair<int, int> plusX{1131, 860}; // the middle of the button, on the screen
constexpr std::pair<int, int> stepEdit{976, 1005};
constexpr int labelReach = 30; // from the middle of a button

/// The windows that move the stage, which is simulated: it is where it was sent to at once.
class StageWindow : public WindowDriver {
protected:
    bool ButtonIs(int red, int green, int blue) {
        const auto screen = display.Screenshot(screenshots / "motor-controller.png");
        if (!screen.has_value())
            return false;
        const std::uint8_t* pixel = screen->Pixel(plusX.first - labelReach, plusX.second - labelReach);
        return pixel[2] == red && pixel[1] == green && pixel[0] == blue;
    }

    void Hold(std::pair<int, int> at) {
        display.MoveTo(at.first, at.second);
        display.HoldButton();
    }

    /// Where the stage is in tens of um, by the name of an image that is saved now.
    std::pair<int, int> Position() {
        const std::vector<std::filesystem::path> before = SavedImages();
        Menu("Save Image");
        EXPECT_TRUE(Eventually([&] { return SavedImages().size() == before.size() + 2; }));
        for (const std::filesystem::path& file : SavedImages()) {
            int x = 0;
            int y = 0;
            if (std::find(before.begin(), before.end(), file) == before.end() &&
                std::sscanf(file.filename().c_str(), "(%d,%d)", &x, &y) == 2)
                return {x, y};
        }
        ADD_FAILURE() << "no image was saved";
        return {};
    }
};

TEST_F(StageWindow, JogsWhileAButtonIsHeldAndShowsWhere) {
    StartWithPopup();
    const std::string before = PanelText(panel::positionX);
    Hold(plusX);
    ASSERT_TRUE(Eventually([&] { return PanelText(panel::positionX) != before; }));
    EXPECT_TRUE(ButtonIs(255, 200, 100));
    const std::string onTheWay = PanelText(panel::positionX);
    EXPECT_TRUE(Eventually([&] { return PanelText(panel::positionX) != onTheWay; })) << "it runs on";
    display.LetGoOfButton();
    EXPECT_TRUE(Eventually([&] { return ButtonIs(200, 200, 200); }));
    EXPECT_EQ(display.ActiveTitle(), std::string(mainTitle) + "\n");
    const auto [x, y] = Position();
    EXPECT_GT(x, 0);
    EXPECT_EQ(x % 10, 0) << "steps of 100 um";
    EXPECT_EQ(y, 0);
    EXPECT_EQ(Position(), std::pair(x, y)) << "it stands";
    Exit();
}

TEST_F(StageWindow, JogsByTheStepThatIsTyped) {
    StartWithPopup();
    display.Click(stepEdit.first, stepEdit.second);
    ASSERT_TRUE(Eventually([this] { return display.ActiveTitle() == std::string(popupTitle) + "\n"; }));
    display.Keys({"ctrl+a", "minus"});
    display.Type("770");
    Hold(plusX);
    ASSERT_TRUE(Eventually([this] { return ButtonIs(255, 200, 100); }));
    display.LetGoOfButton();
    EXPECT_TRUE(Eventually([this] { return ButtonIs(200, 200, 200); }));
    const int x = Position().first;
    EXPECT_LT(x, 0);
    EXPECT_EQ(x % 77, 0);
    Exit();
}

TEST_F(StageWindow, StandsStillOnceTheMotorControllerIsClosedUnderAHeldButton) {
    StartWithPopup();
    Hold(plusX);
    ASSERT_TRUE(Eventually([this] { return ButtonIs(255, 200, 100); }));
    display.Close(popupTitle);
    ASSERT_TRUE(Eventually([this] { return !display.Shows(popupTitle); }));
    display.LetGoOfButton();
    const auto position = Position();
    EXPECT_GT(position.first, 0);
    EXPECT_EQ(Position(), position);
    Exit();
}

TEST_F(StageWindow, EndsWithTheProgramUnderAHeldButton) {
    StartWithPopup();
    Hold(plusX);
    ASSERT_TRUE(Eventually([this] { return ButtonIs(255, 200, 100); }));
    display.Close(mainTitle);
    EXPECT_TRUE(Eventually([this] { return program->ExitStatus().has_value(); }));
    EXPECT_EQ(program->ExitStatus(), 0);
    display.LetGoOfButton();
}

TEST_F(StageWindow, MovesToPositionsThatAreTypedInTheStageDialog) {
    Start();
    Menu("XY Stage Configuration");
    ASSERT_TRUE(Eventually([this] { return display.Shows("XYZ stage Configuration"); }));
    Menu("XY Stage Configuration"); // does nothing
    Menu("Setting XY stage");       // its title has the same letters
    ASSERT_TRUE(Eventually([this] { return display.Windows("XYZ stage Configuration").size() == 2; }));
    ASSERT_TRUE(
        Eventually([this] { return display.ActiveTitle() == std::string("XYZ stage configuration\n"); }));
    display.Keys({"ctrl+a"});
    display.Type("12");
    display.Keys({"Tab", "ctrl+a"});
    display.Type("34");
    display.Screenshot(screenshots / "stage-dialogs.png");
    display.Keys({"Tab", "space", "Escape"}); // Go, Done
    ASSERT_TRUE(Eventually([this] { return display.Windows("XYZ stage Configuration").size() == 1; }));
    EXPECT_EQ(Position(), std::pair(12, 34));
    Exit();
}

} // namespace
} // namespace tessaro
