#include "app/resource_ids.h"
#include "platform/fake/scripted_camera.h"
#include "tests/app/program_fixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace tessaro {
namespace {

// The program is in its message loop by then.
constexpr std::uint64_t start = 200;

/// The whole program with a simulated stage, and without a camera.
class StageWindowsTest : public ProgramTest {
protected:
    StageWindowsTest() {
        camera.present = false;
        cameraRuntime = &camera;
    }

    void RunUntil(std::uint64_t end) {
        EXPECT_EQ(ProgramTest::RunUntil(end), 0);
        EXPECT_TRUE(ui.dialogs.dialogs.empty());
        EXPECT_TRUE(ui.windows.children.empty());
        EXPECT_EQ(globals->windows.controlPanel, WindowHandle::None);
        EXPECT_EQ(globals->windows.portConfiguration, WindowHandle::None);
        EXPECT_EQ(globals->windows.motorController, WindowHandle::None);
    }

    void Press(int resource, int controlId) {
        ui.dialogs.Notify(ui.dialogs.Find(resource), controlId, Notification::Clicked);
    }

    ScriptedCamera camera{[](const std::string& breach) { ADD_FAILURE() << breach; }};
};

TEST_F(StageWindowsTest, OpenThePortDialogOnceAndLookForTheCameraAgain) {
    ChooseAt(start, command::xyStageConfiguration);
    ChooseAt(start + 1, command::xyStageConfiguration);
    const auto searches = [this] {
        return std::count(camera.calls.begin(), camera.calls.end(), "CreateFirstDevice");
    };
    std::ptrdiff_t before = 0;
    std::ptrdiff_t after = 0;
    At(start + 2, [&] {
        EXPECT_EQ(ui.dialogs.Find(141), globals->windows.portConfiguration);
        EXPECT_EQ(std::count(ui.calls.begin(), ui.calls.end(), "dialog 141"), 1);
        before = searches();
        Press(141, 1009);
        after = searches();
    });
    RunUntil(start + 40);
    EXPECT_EQ(before, 1);
    EXPECT_EQ(after, 2);
}

TEST_F(StageWindowsTest, OpenTheStageDialogOfTheMenuAndMoveTheStage) {
    ui.dialogs.whileModal = [this](WindowHandle dialog) {
        EXPECT_EQ(ui.dialogs.dialogs.at(dialog).owner, mainWindow);
        ui.dialogs.Notify(dialog, 1011, Notification::Clicked);
        ui.dialogs.Notify(dialog, 2, Notification::Clicked);
    };
    ChooseAt(start, command::settingXyStage);
    double x = 0.0;
    At(start + 1, [&] { x = globals->stage.position[0]; });
    RunUntil(start + 40);
    EXPECT_EQ(ui.dialogs.modalResources, std::vector<int>{130});
    EXPECT_EQ(x, 400.0);
}

TEST_F(StageWindowsTest, TakeTheYOfTheStageDialogForTheXRangeThroughTheOpenPanel) {
    ui.dialogs.whileModal = [this](WindowHandle dialog) {
        ui.dialogs.SetItemText(dialog, 1012, "7");  // Y
        ui.dialogs.SetItemText(dialog, 1005, "20"); // the scan area
        ui.dialogs.SetItemText(dialog, 1006, "30");
        ui.dialogs.Notify(dialog, 1, Notification::Clicked);
        ui.dialogs.Notify(dialog, 2, Notification::Clicked);
    };
    ChooseAt(start, command::settingXyStage);
    RunUntil(start + 40);
    EXPECT_EQ(globals->settings.xRange, 7) << "the panel takes what it shows when its Y range is written";
    EXPECT_EQ(globals->settings.yRange, 30);
}

TEST_F(StageWindowsTest, JogTheStageAndShowWhereItIs) {
    ui.messages.PostAt(start, {popupWindow, MessageKind::LeftButtonPress, 0, PackPosition(230, 140)});
    ui.messages.PostAt(start + 18, {popupWindow, MessageKind::LeftButtonRelease});
    std::string x;
    int on = 0;
    At(start + 30, [&] {
        x = PanelText(1000);
        on = globals->liveTimer.on;
    });
    RunUntil(start + 40);
    EXPECT_EQ(x, "400");
    EXPECT_EQ(on, 1);
}

TEST_F(StageWindowsTest, EndWithTheProgramInTheMiddleOfAJog) {
    ChooseAt(start, command::xyStageConfiguration);
    ui.messages.PostAt(start + 10, {popupWindow, MessageKind::LeftButtonPress, 0, PackPosition(230, 140)});
    RunUntil(start + 40);
    EXPECT_EQ(globals->stage.position[0], 0.0) << "the scan's origin";
    EXPECT_LT(ui.clock.now, 1000U);
}

TEST_F(StageWindowsTest, EndWithTheProgramInTheMiddleOfAModalDialog) {
    ui.dialogs.whileModal = [this](WindowHandle) {
        ui.windows.Destroy(mainWindow);
        Press(130, 1009);
    };
    ChooseAt(start, command::settingXyStage);
    RunUntil(start + 40);
    EXPECT_EQ(globals->stage.position[0], 0.0);
}

} // namespace
} // namespace tessaro
