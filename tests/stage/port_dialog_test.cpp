#include "stage/port_dialog.h"
#include "support/arriving_port.h"
#include "support/shell_fixture.h"

#include <gtest/gtest.h>

#include <string>
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
