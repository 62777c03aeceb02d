#include "platform/fake/fake_user_interface.h"
#include "stage/motor_controller.h"

#include <gtest/gtest.h>

namespace tessaro {
namespace {

class MotorControllerTest : public testing::Test {
protected:
    MotorControllerTest() {
        ui.windows.RegisterWindowClass({"popup_controller", &controller});
        window = ui.windows.MakeWindow({"popup_controller", "Motor Controller"});
        ui.windows.Show(window);
    }

    FakeUserInterface ui;
    MotorController controller{ui.windows};
    WindowHandle window = WindowHandle::None;
};

TEST_F(MotorControllerTest, IsHiddenAndNotDestroyedWhenClosed) {
    ui.messages.Dispatch({window, MessageKind::Close});
    ASSERT_TRUE(ui.windows.windows.contains(window));
    EXPECT_FALSE(ui.windows.windows[window].shown);
}

TEST_F(MotorControllerTest, LeavesEverythingElseToThePlatform) {
    for (const MessageKind kind :
         {MessageKind::Create, MessageKind::Destroy, MessageKind::Paint, MessageKind::KeyDown,
          MessageKind::Command, MessageKind::MouseMove, MessageKind::LeftButtonPress, MessageKind::Other})
        EXPECT_FALSE(controller.HandleMessage({window, kind, 32802}));
    EXPECT_TRUE(ui.windows.windows[window].shown);
}

} // namespace
} // namespace tessaro
