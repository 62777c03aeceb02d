#include "app/number_text.h"
#include "stage/motor_controller.h"
#include "support/arriving_port.h"
#include "support/shell_fixture.h"

#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace tessaro {
namespace {

using namespace std::string_literals;

constexpr Colour grey{200, 200, 200};
constexpr Colour orange{255, 200, 100};

struct Button {
    const char* label;
    SurfaceRectangle area;
    std::array<double, 3> moved; // um, by one step of 100
};

constexpr std::array<Button, 6> buttons = {{{"-X", {5, 95, 95, 185}, {-100, 0, 0}},
                                            {"+X", {185, 95, 275, 185}, {100, 0, 0}},
                                            {"+Y", {95, 5, 185, 95}, {0, 100, 0}},
                                            {"-Y", {95, 185, 185, 275}, {0, -100, 0}},
                                            {"+Z", {280, 50, 370, 140}, {0, 0, 100}},
                                            {"-Z", {280, 140, 370, 230}, {0, 0, -100}}}};

constexpr std::pair<int, int> plusX{230, 140};
constexpr std::pair<int, int> outside{230, 20};

/// The stage is simulated, so that a step takes only the 5 ms of the pump behind it.
class MotorControllerTest : public ShellFixture {
protected:
    MotorControllerTest() : silentLine(std::exchange(stage.hComm, SerialHandle::Invalid)) {
        stage.offline = 1;
        ui.windows.RegisterWindowClass({"popup_controller", &controller});
        window = ui.windows.MakeWindow(
            {"popup_controller", "Motor Controller", WindowStyle::ToolPopup, 0, 0, 400, 400, windows.main});
        windows.motorController = window;
        ui.windows.Show(window);
        ui.windows.Update(window);
        liveView.Switch(1);
    }

    void Press(std::pair<int, int> at) {
        ui.messages.Dispatch({window, MessageKind::LeftButtonPress, 0, PackPosition(at.first, at.second)});
    }
    void ReleaseAt(std::uint64_t time) { ui.messages.PostAt(time, {window, MessageKind::LeftButtonRelease}); }
    void Hold(std::pair<int, int> at, std::uint64_t milliseconds) {
        ReleaseAt(ui.clock.now + milliseconds);
        Press(at);
    }
    void At(std::uint64_t time, std::function<void()> happens) {
        m_happens = std::move(happens);
        ui.messages.PostAt(time, {WindowHandle::None, MessageKind::Other});
        ui.messages.onDispatch = [this](const Message& message) {
            if (message.kind == MessageKind::Other)
                m_happens();
        };
    }

    FakeWindowSystem::Child& Child(ChildKind kind) {
        for (auto& [handle, child] : ui.windows.children) {
            if (child.description.kind == kind)
                return child;
        }
        throw std::logic_error("no such control");
    }
    std::string& StepText() { return Child(ChildKind::Edit).text; }

    Colour PixelAt(int x, int y) {
        const std::uint8_t* pixel = ui.drawing.windows.at(window).Pixel(x, y);
        return {pixel[2], pixel[1], pixel[0]};
    }
    Colour ColourOf(const Button& button) { return PixelAt(button.area.left + 45, button.area.top + 45); }

    /// The simulated stage's way in steps of 100 um.
    std::array<double, 3> Steps() const {
        return {stage.position[0] / 100, stage.position[1] / 100, stage.position[2] / 100};
    }

    StageMotion motion{stage, pump, status, ui.clock};
    int refreshed = 0;
    std::function<void()> whileRefreshing;
    MotorController controller{
        ui.windows, ui.drawing, windows, liveView, liveTimer, motion, status, pump, [this] {
            ++refreshed;
            if (whileRefreshing)
                whileRefreshing();
        }};
    WindowHandle window = WindowHandle::None;
    SerialHandle silentLine; // takes every command and answers none

private:
    std::function<void()> m_happens;
};

TEST_F(MotorControllerTest, HasALabelAndAnEditForTheStep) {
    ASSERT_EQ(ui.windows.children.size(), 2U);
    const ChildDescription label = Child(ChildKind::Label).description;
    EXPECT_EQ(label.text, "Step");
    EXPECT_EQ((std::array{label.x, label.y, label.width, label.height}), (std::array{5, 275, 40, 20}));
    const ChildDescription edit = Child(ChildKind::Edit).description;
    EXPECT_EQ(edit.text, "100");
    EXPECT_EQ((std::array{edit.x, edit.y, edit.width, edit.height}), (std::array{55, 275, 40, 20}));
}

TEST_F(MotorControllerTest, PaintsSixGreyButtonsWithBlackEdgesAndCentredLabels) {
    const auto frames = ui.drawing.windowSurface.All<RecordingSurface::Frame>();
    const auto texts = ui.drawing.windowSurface.All<RecordingSurface::Text>();
    ASSERT_EQ(frames.size(), 6U);
    ASSERT_EQ(texts.size(), 6U);
    for (std::size_t i = 0; i < buttons.size(); ++i) {
        EXPECT_EQ(frames[i], (RecordingSurface::Frame{buttons[i].area, 1, black}));
        EXPECT_EQ(texts[i], (RecordingSurface::Text{buttons[i].label, buttons[i].area,
                                                    TextAlignment::CentredBothWays, black}));
        EXPECT_EQ(ui.drawing.filled.at(i), buttons[i].area);
        EXPECT_EQ(ColourOf(buttons[i]), grey);
    }
}

TEST_F(MotorControllerTest, MovesTheAxisOfEachButtonStepByStepWhileItIsHeld) {
    for (const Button& button : buttons) {
        SCOPED_TRACE(button.label);
        stage.position = {};
        Hold({button.area.left + 45, button.area.top + 45}, 12); // in the third pump of 5 ms
        for (std::size_t axis = 0; axis < 3; ++axis)
            EXPECT_EQ(stage.position[axis], 3 * button.moved[axis]);
    }
}

TEST_F(MotorControllerTest, RefreshesViewAndPositionBoxesAfterEveryStep) {
    std::vector<std::string> boxes;
    whileRefreshing = [&] { boxes.push_back(PanelText(panel::positionX)); };
    Hold(plusX, 12);
    EXPECT_EQ(refreshed, 3);
    EXPECT_EQ(boxes, (std::vector<std::string>{"", "100", "200"})) << "the view first";
    EXPECT_EQ(PanelText(panel::positionX), "300");
}

TEST_F(MotorControllerTest, ShowsThePressedButtonAsMovingUntilItIsLetGo) {
    ui.drawing.windowSurface.calls.clear();
    std::vector<Colour> whileHeld;
    whileRefreshing = [&] {
        for (const Button& button : buttons)
            whileHeld.push_back(ColourOf(button));
        const auto texts = ui.drawing.windowSurface.All<RecordingSurface::Text>();
        ASSERT_EQ(texts.size(), 1U);
        EXPECT_EQ(texts[0],
                  (RecordingSurface::Text{"moving", buttons[1].area, TextAlignment::CentredBothWays, black}));
        EXPECT_EQ(ui.drawing.contextsHeld, 0) << "what was drawn can be seen";
    };
    Hold(plusX, 1);
    EXPECT_EQ(whileHeld, (std::vector<Colour>{grey, orange, grey, grey, grey, grey}));
    for (const Button& button : buttons)
        EXPECT_EQ(ColourOf(button), grey);
    EXPECT_EQ(ui.drawing.windowSurface.All<RecordingSurface::Text>().size(), 7U);
}

TEST_F(MotorControllerTest, TakesNoEdgeForAButton) {
    for (const Button& button : buttons) {
        const SurfaceRectangle& area = button.area;
        const int middleX = area.left + 45;
        const int middleY = area.top + 45;
        for (const auto& at : {std::pair(area.left, middleY), std::pair(area.right, middleY),
                               std::pair(middleX, area.top), std::pair(middleX, area.bottom),
                               std::pair(area.left, area.top), std::pair(area.right, area.bottom)}) {
            Hold(at, 1);
            EXPECT_EQ(Steps(), (std::array<double, 3>{})) << button.label << at.first << ',' << at.second;
        }
    }
}

TEST_F(MotorControllerTest, TakesThePixelsWithinTheEdgesForAButton) {
    const SurfaceRectangle& area = buttons[1].area;
    for (const auto& at :
         {std::pair(area.left + 1, area.top + 1), std::pair(area.right - 1, area.top + 1),
          std::pair(area.left + 1, area.bottom - 1), std::pair(area.right - 1, area.bottom - 1)}) {
        stage.position = {};
        Hold(at, 1);
        EXPECT_EQ(Steps(), (std::array<double, 3>{1, 0, 0}));
    }
}

TEST_F(MotorControllerTest, TakesNoPressThatWasDraggedOutOfTheWindow) {
    Hold({-230, 140}, 1);
    Hold({230, -140}, 1);
    EXPECT_EQ(Steps(), (std::array<double, 3>{}));
}

TEST_F(MotorControllerTest, ClampsTheTypedStepAndShowsIt) {
    for (const auto& [typed, shown] :
         {std::pair("5000", "1250"), std::pair("-5000", "-1250"), std::pair("1250", "1250"),
          std::pair("1251", "1250"), std::pair(" 7 um", "7"), std::pair("2147483647", "1250")}) {
        StepText() = typed;
        stage.position = {};
        Hold(plusX, 1);
        EXPECT_EQ(StepText(), shown);
        EXPECT_EQ(stage.position[0], static_cast<double>(*ParsedInteger(shown)));
    }
}

TEST_F(MotorControllerTest, TurnsAroundWithANegativeStep) {
    StepText() = "-30";
    Hold(plusX, 1);
    EXPECT_EQ(stage.position[0], -30.0);
    Hold({50, 140}, 1); // -X
    EXPECT_EQ(stage.position[0], 0.0);
}

TEST_F(MotorControllerTest, KeepsTheStepWhenTheTextIsNoNumber) {
    StepText() = "40";
    Hold(plusX, 1);
    for (const char* text : {"", "um", "9999999999"}) {
        StepText() = text;
        stage.position = {};
        Hold(plusX, 1);
        EXPECT_EQ(stage.position[0], 40.0);
        EXPECT_EQ(StepText(), text);
    }
}

TEST_F(MotorControllerTest, LooksAtTenCharactersOfTheStep) {
    StepText() = "00000000509";
    Hold(plusX, 1);
    EXPECT_EQ(stage.position[0], 50.0);
    EXPECT_EQ(StepText(), "50");
}

TEST_F(MotorControllerTest, TakesTheStepOfAPressOutsideAllButtonsToo) {
    StepText() = "5000";
    Hold(outside, 1);
    EXPECT_EQ(StepText(), "1250");
    EXPECT_EQ(Steps(), (std::array<double, 3>{}));
}

TEST_F(MotorControllerTest, StopsTheLiveViewUntilTheButtonIsLetGo) {
    std::int32_t whileHeld = 1;
    whileRefreshing = [&] { whileHeld = liveTimer.on; };
    Hold(plusX, 1);
    EXPECT_EQ(whileHeld, 0);
    EXPECT_EQ(liveTimer.on, 1);
    EXPECT_TRUE(LiveTimerRuns());
}

TEST_F(MotorControllerTest, StopsTheLiveViewForAPressOutsideAllButtonsToo) {
    Press(outside);
    EXPECT_EQ(liveTimer.on, 0);
    EXPECT_FALSE(LiveTimerRuns());
    ui.messages.Dispatch({window, MessageKind::LeftButtonRelease});
    EXPECT_EQ(liveTimer.on, 1);
    EXPECT_TRUE(LiveTimerRuns());
}

TEST_F(MotorControllerTest, LeavesALiveViewOffThatWasOff) {
    liveView.Switch(0);
    Hold(plusX, 1);
    EXPECT_EQ(liveTimer.on, 0);
    EXPECT_FALSE(LiveTimerRuns());
}

TEST_F(MotorControllerTest, StartsNoLiveViewForAReleaseWithoutAPress) {
    Hold(plusX, 1);
    liveView.Switch(0);
    ui.messages.Dispatch({window, MessageKind::LeftButtonRelease});
    EXPECT_EQ(liveTimer.on, 0);
}

TEST_F(MotorControllerTest, GivesTheKeysBackToTheMainWindow) {
    ui.windows.focused = window;
    whileRefreshing = [&] { EXPECT_EQ(ui.windows.focused, window); };
    Hold(plusX, 1);
    EXPECT_EQ(ui.windows.focused, windows.main);
}

TEST_F(MotorControllerTest, IgnoresAnotherPressWhileAJogRuns) {
    int rounds = 0;
    whileRefreshing = [&] {
        if (++rounds == 1) {
            StepText() = "7";
            Press({50, 140}); // -X
        }
    };
    Hold(plusX, 7);
    EXPECT_EQ(Steps(), (std::array<double, 3>{2, 0, 0}));
    EXPECT_EQ(StepText(), "7") << "not even its step is taken";
    EXPECT_EQ(liveTimer.on, 1) << "nor was the live view off before";
}

TEST_F(MotorControllerTest, TakesTheNextPressOnceTheJogHasEnded) {
    Hold(plusX, 1);
    Hold(outside, 1);
    Hold(plusX, 1);
    EXPECT_EQ(Steps()[0], 2.0);
}

TEST_F(MotorControllerTest, KeepsDispatchingWithAStepOfZero) {
    StepText() = "0";
    Hold(plusX, 22);
    EXPECT_EQ(refreshed, 5);
    EXPECT_EQ(Steps(), (std::array<double, 3>{}));
    EXPECT_EQ(ui.clock.now, 25U);
}

TEST_F(MotorControllerTest, EndsWithTheMoveInTheMiddleOfWhichTheButtonIsLetGo) {
    stage.hComm = silentLine; // a move gives up after 2 s
    stage.offline = 0;
    Hold(plusX, 500);
    EXPECT_EQ(port.writes, (std::vector<std::string>{"m160\0"s, "p\0"s}));
    EXPECT_EQ(refreshed, 1) << "the view shows where it has stopped";
    EXPECT_GE(ui.clock.now, 2000U);
}

TEST_F(MotorControllerTest, GoesOnFromWhereTheControllerSaysThatTheStageIs) {
    ArrivingPort arriving(ui.clock);
    stage.machine.serial = &arriving;
    stage.hComm = arriving.line;
    stage.offline = 0;
    Hold(plusX, 60); // a step takes 10 + 10 + 5 ms of waiting
    EXPECT_EQ(arriving.Commands(), (std::vector<std::string>{"m160", "m320", "m480"}));
    EXPECT_EQ(stage.position[0], 300.0);
    EXPECT_EQ(PanelText(panel::positionX), "300");
}

TEST_F(MotorControllerTest, StopsTheStageForAPressOnItsOwnEditOrAnotherWindowAndGoesOn) {
    ArrivingPort arriving(ui.clock);
    stage.machine.serial = &arriving;
    stage.hComm = arriving.line;
    stage.offline = 0;
    WindowHandle edit = WindowHandle::None;
    for (const auto& [handle, child] : ui.windows.children) {
        if (child.description.kind == ChildKind::Edit)
            edit = handle;
    }
    for (const WindowHandle pressed : {edit, windows.main, windows.controlPanel}) {
        arriving.writes.clear();
        stage.position = {};
        ui.messages.PostAt(ui.clock.now + 3, {pressed, MessageKind::LeftButtonPress});
        Hold(plusX, 30);
        EXPECT_EQ(arriving.Commands(), (std::vector<std::string>{"m160", "n", "N", "O", "m320"}));
    }
}

TEST_F(MotorControllerTest, AsksNothingWhenPressedDuringAScan) {
    scan.scanning = 1;
    ui.messages.PostAt(1, {window, MessageKind::LeftButtonPress, 0, PackPosition(230, 140)});
    ReleaseAt(8);
    EXPECT_EQ(pump.PumpMessages(20), 1);
    EXPECT_TRUE(ui.boxes.questions.empty());
    EXPECT_EQ(Steps()[0], 2.0);
}

TEST_F(MotorControllerTest, EndsTheJogWhenTheReleaseWasTakenAwayByAQuestion) {
    int rounds = 0;
    whileRefreshing = [&] { ui.windows.leftButtonHeld = ++rounds < 3; };
    Press(plusX);
    EXPECT_EQ(Steps()[0], 3.0);
    EXPECT_EQ(liveTimer.on, 1);
    EXPECT_EQ(ColourOf(buttons[1]), grey);
    EXPECT_EQ(ui.windows.focused, windows.main);
}

TEST_F(MotorControllerTest, MakesOneStepForAButtonThatIsUpAgainAlready) {
    ui.windows.leftButtonHeld = false;
    Press(plusX);
    EXPECT_EQ(Steps()[0], 1.0);
}

TEST_F(MotorControllerTest, IsHiddenAndNotDestroyedWhenClosed) {
    ui.messages.Dispatch({window, MessageKind::Close});
    ASSERT_TRUE(ui.windows.windows.contains(window));
    EXPECT_FALSE(ui.windows.windows[window].shown);
    EXPECT_EQ(ui.windows.focused, WindowHandle::None) << "the keys stay where they are";
}

TEST_F(MotorControllerTest, EndsTheJogWhenItIsClosed) {
    ui.messages.PostAt(7, {window, MessageKind::Close});
    Press(plusX);
    EXPECT_EQ(Steps()[0], 2.0);
    EXPECT_EQ(liveTimer.on, 1);
    EXPECT_FALSE(ui.windows.windows[window].shown);
    Hold(plusX, 1);
    EXPECT_EQ(Steps()[0], 3.0) << "it works again";
}

TEST_F(MotorControllerTest, StartsTheLiveViewAgainWhenItIsClosedAfterAPressOutsideAllButtons) {
    Press(outside);
    ui.messages.Dispatch({window, MessageKind::Close});
    EXPECT_EQ(liveTimer.on, 1);
}

TEST_F(MotorControllerTest, EndsTheJogWithTheProgramAndTouchesNothingThatIsGone) {
    At(7, [this] { ui.windows.Destroy(windows.main); });
    Press(plusX);
    EXPECT_EQ(refreshed, 2) << "the program ended in the wait behind the second step";
    EXPECT_EQ(Steps()[0], 2.0);
    EXPECT_EQ(windows.motorController, WindowHandle::None);
    EXPECT_TRUE(ui.windows.children.empty());
    EXPECT_EQ(ui.drawing.contextsHeld, 0);
}

TEST_F(MotorControllerTest, TakesNoFrameAnyMoreWhenTheProgramEndsDuringAMove) {
    stage.hComm = silentLine;
    stage.offline = 0;
    At(500, [this] { ui.windows.Destroy(windows.main); });
    Press(plusX);
    EXPECT_EQ(refreshed, 0);
    EXPECT_EQ(liveTimer.on, 0) << "nothing to show it on";
}

TEST_F(MotorControllerTest, LeavesEverythingElseToThePlatform) {
    for (const MessageKind kind :
         {MessageKind::KeyDown, MessageKind::Command, MessageKind::MouseMove, MessageKind::Other})
        EXPECT_FALSE(controller.HandleMessage({window, kind, 32802}));
    EXPECT_TRUE(ui.windows.windows[window].shown);
}

} // namespace
} // namespace tessaro
