#include "app/status_lines.h"
#include "support/shell_fixture.h"

#include <limits>

namespace tessaro {
namespace {

using StatusLinesTest = ShellFixture;
using Texts = std::vector<std::string>;

TEST_F(StatusLinesTest, WriteInformationAndProgressIntoTheirBoxes) {
    EXPECT_EQ(status.ShowInformation("Image saved."), 1);
    EXPECT_EQ(status.ShowProgress("12% finished"), 1);
    EXPECT_EQ(PanelText(1006), "Image saved.");
    EXPECT_EQ(PanelText(1007), "12% finished");
}

TEST_F(StatusLinesTest, WriteNothingIntoAClosedPanelButSayThatAllWentWell) {
    ClosePanel();
    EXPECT_EQ(status.ShowInformation("lost"), 1);
    EXPECT_EQ(status.ShowProgress("lost"), 1);
    status.ShowItem(1041, "lost");
    EXPECT_TRUE(ui.dialogs.textsSet.empty());
}

TEST_F(StatusLinesTest, TellAListenerBothLinesWhetherOrNotThePanelIsOpen) {
    class Listening : public StatusListener {
    public:
        void InformationShown(std::string_view text) override { heard.push_back("i " + std::string(text)); }
        void ProgressShown(std::string_view text) override { heard.push_back("p " + std::string(text)); }
        Texts heard;
    };
    Listening listener;
    StatusLines heard{ui.dialogs, windows, stage, shownPosition, &listener};
    heard.ShowInformation("scanning...");
    EXPECT_EQ(PanelText(1006), "scanning...");
    ClosePanel();
    heard.ShowProgress("Done");
    heard.ShowItem(1041, "3");
    EXPECT_EQ(listener.heard, (Texts{"i scanning...", "p Done"}));
}

TEST_F(StatusLinesTest, ShowThePositionTruncatedTowardZero) {
    stage.position = {1234.9, -15.7, -0.4};
    EXPECT_EQ(status.ShowStagePosition(), 1);
    EXPECT_EQ(PanelText(1000), "1234");
    EXPECT_EQ(PanelText(1003), "-15");
    EXPECT_EQ(PanelText(1005), "0");
}

TEST_F(StatusLinesTest, ShowAllThreeAxesTheFirstTimeEvenAtZeroAndInOrder) {
    status.ShowStagePosition();
    const std::vector<std::pair<int, std::string>> expected = {{1000, "0"}, {1003, "0"}, {1005, "0"}};
    EXPECT_EQ(ui.dialogs.textsSet, expected);
    EXPECT_EQ(shownPosition.shownOnce, 1);
}

TEST_F(StatusLinesTest, WriteOnlyTheAxesWhoseWholeMicrometresHaveChanged) {
    stage.position = {10.0, 20.0, 30.0};
    status.ShowStagePosition();
    ui.dialogs.textsSet.clear();
    stage.position = {10.9, 21.0, 30.5};
    EXPECT_EQ(status.ShowStagePosition(), 1);
    const std::vector<std::pair<int, std::string>> expected = {{1003, "21"}};
    EXPECT_EQ(ui.dialogs.textsSet, expected);
}

TEST_F(StatusLinesTest, DoNotCountAClosedPanelAsShown) {
    ClosePanel();
    stage.position = {10.0, 20.0, 30.0};
    EXPECT_EQ(status.ShowStagePosition(), 0);
    EXPECT_EQ(shownPosition.shownOnce, 0);
    EXPECT_EQ(shownPosition.um, (std::array<std::int32_t, 3>{0, 0, 0}));
}

TEST_F(StatusLinesTest, LeaveAReopenedPanelEmptyUntilTheStageMoves) {
    class Silent : public DialogProcedure {
    public:
        void Initialize(WindowHandle) override {}
        void Command(WindowHandle, int, Notification) override {}
    } silent;
    stage.position = {10.0, 20.0, 30.0};
    status.ShowStagePosition();
    ClosePanel();
    windows.controlPanel = ui.dialogs.CreateModeless(137, windows.main, silent);
    EXPECT_EQ(status.ShowStagePosition(), 1);
    EXPECT_EQ(PanelText(1000), "");
    stage.position[0] = 11.0;
    status.ShowStagePosition();
    EXPECT_EQ(PanelText(1000), "11");
    EXPECT_EQ(PanelText(1003), "");
}

TEST_F(StatusLinesTest, ShowTheNearestNumberForAPositionThatNoNumberCanHold) {
    stage.position = {1e30, -1e30, std::numeric_limits<double>::quiet_NaN()};
    status.ShowStagePosition();
    EXPECT_EQ(PanelText(1000), "2147483647");
    EXPECT_EQ(PanelText(1003), "-2147483648");
    EXPECT_EQ(PanelText(1005), "0");
}

} // namespace
} // namespace tessaro
