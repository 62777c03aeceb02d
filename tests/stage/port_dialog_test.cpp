#include "scan/control_panel_ids.h"
#include "stage/motor_controller.h"
#include "stage/port_dialog.h"
#include "stage/stage_motion.h"
#include "support/arriving_port.h"
#include "support/shell_fixture.h"
#include "tests/stage/model_controller.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace tessaro {
namespace {

class PortDialogTest : public ShellFixture {
protected:
    PortDialogTest() {
        stage.machine.serial = &ports;
        stage.hComm = ports.line;
        ports.calls.clear();
        stage.portNumber = 7;
    }

    FakeDialogs::Dialog& Open() {
        portDialog.Open(windows.main);
        return ui.dialogs.dialogs.at(windows.portConfiguration);
    }
    void Press(int controlId) {
        ui.dialogs.Notify(windows.portConfiguration, controlId, Notification::Clicked);
    }

    /// Which lines were opened since the dialog is there.
    std::vector<std::string> Opened() const {
        std::vector<std::string> names;
        for (const std::string& call : ports.calls) {
            if (call.starts_with("Open "))
                names.push_back(call.substr(5));
        }
        return names;
    }

    ArrivingPort ports{ui.clock};
    int camerasInitialized = 0;
    PortDialog portDialog{ui.dialogs, windows, stage, [this] { ++camerasInitialized; }};
};

TEST_F(PortDialogTest, IsDialog141BesideTheMainWindowWithThePortNumber) {
    FakeDialogs::Dialog& dialog = Open();
    EXPECT_EQ(dialog.resource, 141);
    EXPECT_EQ(dialog.owner, windows.main);
    EXPECT_TRUE(dialog.shown);
    EXPECT_EQ(dialog.texts[1000], "7");
    EXPECT_EQ(dialog.texts[1003], "");
    EXPECT_EQ(dialog.texts[1005], "");
}

TEST_F(PortDialogTest, HasNoControlThatShowsTheSpeed) {
    EXPECT_FALSE(Open().texts.contains(200));
    EXPECT_TRUE(ui.dialogs.TextsOf(200).empty());
}

TEST_F(PortDialogTest, IsNeverOpenTwice) {
    Open();
    const WindowHandle first = windows.portConfiguration;
    portDialog.Open(windows.main);
    EXPECT_EQ(windows.portConfiguration, first);
    EXPECT_EQ(ui.dialogs.dialogs.size(), 2U) << "and the control panel";
}

TEST_F(PortDialogTest, StaysClosedWhenItsResourceIsMissing) {
    ui.dialogs.noResources = true;
    portDialog.Open(windows.main);
    EXPECT_EQ(windows.portConfiguration, WindowHandle::None);
    ui.dialogs.noResources = false;
    Open();
}

TEST_F(PortDialogTest, OpensTheLineOfTheTypedNumberAndKeepsIt) {
    Open().texts[1000] = "12";
    Press(1008);
    EXPECT_EQ(stage.portNumber, 12);
    EXPECT_EQ(Opened(), std::vector<std::string>{"line 12"});
    EXPECT_EQ(stage.offline, 0);
    EXPECT_NE(windows.portConfiguration, WindowHandle::None) << "it stays open";
}

TEST_F(PortDialogTest, OpensTheLineOfTheOldNumberWithoutATypedOne) {
    for (const char* text : {"", "COM4", "99999999999"}) {
        ports.calls.clear();
        Open().texts[1000] = text;
        Press(1008);
        EXPECT_EQ(stage.portNumber, 7);
        EXPECT_EQ(Opened(), std::vector<std::string>{"line 7"});
    }
}

TEST_F(PortDialogTest, LooksAtFiftyCharactersOfTheNumber) {
    Open().texts[1000] = std::string(49, ' ') + "45";
    Press(1008);
    EXPECT_EQ(stage.portNumber, 4);
}

TEST_F(PortDialogTest, TellsOfALineThatIsNotThereAndOpensAnotherOneLater) {
    ports.present = false;
    Open();
    Press(1008);
    ASSERT_EQ(ui.boxes.warnings.size(), 1U);
    EXPECT_EQ(ui.boxes.warnings[0].owner, windows.main);
    EXPECT_EQ(stage.offline, 1);
    ports.present = true;
    Press(1008);
    EXPECT_EQ(stage.offline, 0);
    EXPECT_EQ(ui.boxes.warnings.size(), 1U);
}

TEST_F(PortDialogTest, LooksForTheCamera) {
    Open();
    Press(1009);
    EXPECT_EQ(camerasInitialized, 1);
    EXPECT_TRUE(Opened().empty());
}

TEST_F(PortDialogTest, DoesNothingOnOkAndStaysOpen) {
    Open();
    Press(1);
    EXPECT_NE(windows.portConfiguration, WindowHandle::None);
    EXPECT_TRUE(ports.writes.empty());
    EXPECT_EQ(stage.speed, (std::array<std::int32_t, 3>{1500, 1500, 1500}));
}

TEST_F(PortDialogTest, IgnoresTheTwoEditsThatItDoesNotUse) {
    FakeDialogs::Dialog& dialog = Open();
    for (const int edit : {1003, 1005}) {
        dialog.texts[edit] = "5";
        ui.dialogs.Notify(windows.portConfiguration, edit, Notification::TextChanged);
    }
    Press(1008);
    EXPECT_EQ(stage.portNumber, 7);
}

TEST_F(PortDialogTest, IsGoneOnCancelAndCanBeOpenedAgain) {
    Open();
    const WindowHandle first = windows.portConfiguration;
    Press(2);
    EXPECT_EQ(windows.portConfiguration, WindowHandle::None);
    EXPECT_FALSE(ui.dialogs.dialogs.contains(first));
    stage.portNumber = 9;
    EXPECT_EQ(Open().texts[1000], "9");
}

TEST_F(PortDialogTest, ThatIsClosedCanBeClosedAgain) {
    portDialog.Close();
    EXPECT_EQ(windows.portConfiguration, WindowHandle::None);
}

/// A box that is open for some time.
class SlowBoxes : public MessageBoxes {
public:
    explicit SlowBoxes(VirtualClock& clock) : m_clock(clock) {}
    bool AskYesNo(WindowHandle, const std::string&, const std::string&) override { return false; }
    void ShowWarning(WindowHandle, const std::string&, const std::string&) override {
        ++warnings;
        m_clock.Sleep(openMs);
        if (whileOpen)
            whileOpen();
    }

    int warnings = 0;
    std::uint32_t openMs = 3000;
    std::function<void()> whileOpen;

private:
    VirtualClock& m_clock;
};

/// "Initialize" is pressed in the middle of a move: in the pump of the wait for its arrival.
class InitializeDuringAMove : public ShellFixture {
protected:
    InitializeDuringAMove() {
        stage.machine = {&line, &boxes, &ui.clock};
        stage.hComm = SerialHandle::None;
        line.TakeAnyWrite([this](const std::string& written) { return controller.Answer(written); });
        stage.Open(windows.main);
        ui.windows.RegisterWindowClass({"jog", &jog});
        jogWindow = ui.windows.MakeWindow({"jog", "Motor Controller", WindowStyle::ToolPopup});
        ui.windows.Show(jogWindow);
        ui.windows.Update(jogWindow);
        windows.motorController = jogWindow;
        ui.windows.leftButtonHeld = true;
        portDialog.Open(windows.main);
        start = ui.clock.now;
    }

    void InitializeAfter(std::uint64_t milliseconds) {
        ui.messages.PostAt(start + milliseconds, {WindowHandle::None, MessageKind::Other});
        ui.messages.onDispatch = [this](const Message& message) {
            if (message.kind == MessageKind::Other)
                ui.dialogs.Notify(windows.portConfiguration, 1008, Notification::Clicked);
        };
    }
    void Jog() {
        constexpr std::pair<int, int> jogButton{230, 140};
        ui.messages.Dispatch(
            {jogWindow, MessageKind::LeftButtonPress, 0, PackPosition(jogButton.first, jogButton.second)});
    }
    void LetGoAfter(std::uint64_t milliseconds) {
        ui.messages.PostAt(start + milliseconds, {jogWindow, MessageKind::LeftButtonRelease});
    }
    std::uint64_t Took() const { return ui.clock.now - start; }
    std::string Progress() const {
        const auto texts = ui.dialogs.TextsOf(panel::progress);
        return texts.empty() ? std::string() : texts.back();
    }

    ScriptedSerialPorts line{ui.clock};
    ModelController controller{ui.clock}; // a step a millisecond
    SlowBoxes boxes{ui.clock};
    StageMotion motion{stage, pump, status, ui.clock};
    PortDialog portDialog{ui.dialogs, windows, stage, [] {}};
    MotorController jog{ui.windows, ui.drawing, windows, liveView, liveTimer, motion, status, pump, [] {}};
    WindowHandle jogWindow = WindowHandle::None;
    std::uint64_t start = 0;
};

TEST_F(InitializeDuringAMove, LetsTheMoveArriveOnTheNewLine) {
    InitializeAfter(300);
    motion.MoveAxisTo(axisX, 625.0);
    EXPECT_TRUE(Progress().starts_with("arrived")) << Progress();
    EXPECT_EQ(stage.position[0], 625.0);
    EXPECT_EQ(controller.Steps(0), 1000);
    EXPECT_EQ(stage.offline, 0);
    EXPECT_EQ(boxes.warnings, 0);
    EXPECT_EQ(std::ranges::count(line.writes, std::string("z\0", 2)), 2) << "opened twice";
}

TEST_F(InitializeDuringAMove, EndsTheWaitWhereTheLineIsMissing) {
    line.present = false;
    InitializeAfter(300);
    motion.MoveAxisTo(axisX, 625.0);
    EXPECT_EQ(boxes.warnings, 1);
    EXPECT_TRUE(Progress().starts_with("time passed")) << Progress();
    EXPECT_EQ(stage.offline, 1);
    EXPECT_LE(Took(), 300U + 3000U + 200U) << "the box was open for longer than a wait is silent";
    EXPECT_LT(stage.position[0], 200.0) << "where it was when it was heard of last";
    line.present = true;
    ui.dialogs.Notify(windows.portConfiguration, 1008, Notification::Clicked);
    EXPECT_EQ(stage.offline, 0);
    EXPECT_EQ(controller.Steps(0), 1000) << "it went on meanwhile";
}

TEST_F(InitializeDuringAMove, EndsTheWaitTwoSecondsAfterABoxThatIsGoneAtOnce) {
    line.present = false;
    boxes.openMs = 0;
    InitializeAfter(300);
    motion.MoveAxisTo(axisX, 625.0);
    EXPECT_TRUE(Progress().starts_with("time passed")) << Progress();
    EXPECT_LE(Took(), 300U + 2000U + 200U);
}

TEST_F(InitializeDuringAMove, StandsAnotherPressWhileItsBoxIsOpen) {
    line.present = false;
    boxes.whileOpen = [this] {
        boxes.whileOpen = nullptr;
        line.present = true;
        ui.dialogs.Notify(windows.portConfiguration, 1008, Notification::Clicked);
    };
    InitializeAfter(300);
    motion.MoveAxisTo(axisX, 625.0);
    EXPECT_EQ(boxes.warnings, 1);
    EXPECT_EQ(stage.offline, 0);
    EXPECT_EQ(controller.Steps(0), 1000);
    EXPECT_EQ(line.calls.back().substr(0, 4), "Read");
}

TEST_F(InitializeDuringAMove, GoesOnWithAJogOnTheNewLineUntilItIsLetGo) {
    InitializeAfter(300);
    LetGoAfter(1000);
    Jog();
    EXPECT_EQ(stage.offline, 0);
    EXPECT_EQ(boxes.warnings, 0);
    EXPECT_GE(Took(), 1000U);
    EXPECT_LE(Took(), 300U + 2000U + 200U) << "the opening may take the arrival of the step that it comes in";
    EXPECT_EQ(stage.position[0], static_cast<double>(controller.Steps(0)) * 0.625);
    const std::uint64_t first = Took();
    LetGoAfter(first + 100);
    Jog();
    EXPECT_GT(Took(), first) << "the next press jogs";
}

TEST_F(InitializeDuringAMove, EndsAJogWhereTheLineIsMissingAndItsBoxTookTheButton) {
    line.present = false;
    boxes.whileOpen = [this] { ui.windows.leftButtonHeld = false; };
    InitializeAfter(100);
    Jog();
    EXPECT_EQ(boxes.warnings, 1);
    EXPECT_EQ(stage.offline, 1);
    EXPECT_LE(Took(), 100U + 3000U + 200U);
    EXPECT_LE(stage.position[0], 100.0) << "no step is simulated after it";
}

TEST_F(InitializeDuringAMove, EndsAJogThatIsLetGoAfterTheLineWentMissing) {
    line.present = false;
    boxes.openMs = 0;
    InitializeAfter(100);
    LetGoAfter(2500);
    Jog();
    EXPECT_GE(Took(), 2500U);
    EXPECT_LE(Took(), 2600U);
    EXPECT_EQ(stage.offline, 1);
}

/// Dialogs whose port dialog has the speed's control.
class DialogsWithSpeed : public FakeDialogs {
public:
    void SetItemText(WindowHandle dialog, int controlId, const std::string& text) override {
        if (controlId == 200)
            speed = text;
        FakeDialogs::SetItemText(dialog, controlId, text);
    }
    std::string ItemText(WindowHandle dialog, int controlId, std::size_t maximumBytes) override {
        return controlId == 200 ? speed.substr(0, maximumBytes)
                                : FakeDialogs::ItemText(dialog, controlId, maximumBytes);
    }

    std::string speed;
};

TEST_F(PortDialogTest, WouldSetTheSpeedsOfXAndYWithinLimitsIfItHadTheControl) {
    DialogsWithSpeed dialogs;
    PortDialog withSpeed(dialogs, windows, stage, [] {});
    stage.speed[0] = 1234;
    withSpeed.Open(windows.main);
    EXPECT_EQ(dialogs.speed, "1234");
    for (const auto& [typed, speed] :
         {std::pair("1000", 1000), std::pair("99", 100), std::pair("2001", 2000)}) {
        dialogs.speed = typed;
        dialogs.Notify(windows.portConfiguration, 1, Notification::Clicked);
        EXPECT_EQ(stage.speed, (std::array<std::int32_t, 3>{speed, speed, 1500}));
        EXPECT_EQ(dialogs.speed, std::to_string(speed));
    }
    EXPECT_EQ(ports.Commands(),
              (std::vector<std::string>{"s1600", "S1600", "s160", "S160", "s3200", "S3200"}));
}

} // namespace
} // namespace tessaro
