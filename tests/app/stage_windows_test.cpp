#include "app/program.h"
#include "app/resource_ids.h"
#include "platform/fake/fake_user_interface.h"
#include "platform/fake/scripted_camera.h"
#include "platform/standard/absent_serial_ports.h"
#include "stage/stage_link.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace tessaro {
namespace {

constexpr auto mainWindow = static_cast<WindowHandle>(1); // made first
constexpr auto popupWindow = static_cast<WindowHandle>(2);

// The program is in its message loop by then.
constexpr std::uint64_t start = 200;

/// The whole program with a simulated stage, and without a camera.
class StageWindowsTest : public testing::Test {
protected:
    StageWindowsTest() { camera.present = false; }

    void RunUntil(std::uint64_t end) {
        ui.messages.PostAt(end, {mainWindow, MessageKind::Close});
        EXPECT_EQ(RunProgram(*globals, ui.Adapters(), {camera, serial}), 0);
        EXPECT_FALSE(ui.messages.waitedForEver);
        EXPECT_EQ(ui.drawing.contextsHeld, 0);
        EXPECT_TRUE(ui.dialogs.dialogs.empty());
        EXPECT_TRUE(ui.windows.children.empty());
        EXPECT_EQ(globals->windows.controlPanel, WindowHandle::None);
        EXPECT_EQ(globals->windows.portConfiguration, WindowHandle::None);
        EXPECT_EQ(globals->windows.motorController, WindowHandle::None);
    }

    void ChooseAt(std::uint64_t time, std::uint32_t command) {
        ui.messages.PostAt(time, {mainWindow, MessageKind::Command, command});
    }
    void At(std::uint64_t time, const std::function<void()>& look) {
        const auto number = static_cast<std::uint32_t>(m_looks.size());
        m_looks.push_back(look);
        ui.messages.PostAt(time, {WindowHandle::None, MessageKind::Other, 0, number});
        ui.messages.onDispatch = [this](const Message& message) {
            if (message.kind == MessageKind::Other)
                m_looks[message.position]();
        };
    }
    void Press(int resource, int controlId) {
        ui.dialogs.Notify(ui.dialogs.Find(resource), controlId, Notification::Clicked);
    }
    std::string PanelText(int controlId) {
        return ui.dialogs.ItemText(globals->windows.controlPanel, controlId, 100);
    }

    FakeUserInterface ui;
    ScriptedCamera camera{[](const std::string& breach) { ADD_FAILURE() << breach; }};
    AbsentSerialPorts serial;
    std::unique_ptr<Globals> globals = std::make_unique<Globals>(ui.folders);

private:
    std::vector<std::function<void()>> m_looks;
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
