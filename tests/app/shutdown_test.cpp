// What the program leaves behind when it is ended, whatever it is in the middle of at that moment.

#include "app/resource_ids.h"
#include "support/even_camera.h"
#include "support/sanitizer.h"
#include "support/virtual_serial_ports.h"
#include "support/watched_stage.h"
#include "tests/app/program_fixture.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tessaro {
namespace {

constexpr std::uint64_t running = 700; // it is in its message loop by then
constexpr std::uint64_t giveUp = 20'000;
constexpr std::uint64_t lookMs = 2;
constexpr std::uint64_t brakingMs = 500;
constexpr std::uint64_t longestWayMs = 6000; // of 10 mm
constexpr std::uint64_t silenceMs = 2600;    // after which a wait gives up, and what comes before and after

constexpr Texts::size_type wayToOrigin = 2; // one command to each axis
constexpr std::array<double, 2> origin = {400.0, -800.0};
constexpr const char* originX = "m640";
constexpr const char* originY = "M-1280";
constexpr const char* changedLine = "3,-12.000000,-8.000000,-2.000000,6.000000,10,10,42,4,70.000000\n";

/// What becomes of the line to the stage and of the camera when the program is ended.
enum class Line { Works, IsDead, IsSilent, IsMissing };
enum class CameraThen { Answers, IsGone };

class Shutdown;

/// What is open: how it is begun, and by what it is known to be under way. A modal one that runs a loop of
/// its own is ended from there, and has no second function.
struct Occupation {
    const char* name;
    void (Shutdown::*begin)();
    bool (Shutdown::*isUnderWay)() const;
    bool needsTravel = false; // there is no middle of it on a stage that is everywhere at once
};

struct Ending {
    Occupation occupation;
    Line line;
    CameraThen camera;
};

class Shutdown : public ProgramTest, public testing::WithParamInterface<Ending> {
public:
    void DoNothing() {}
    bool Always() const { return true; }

    void Scan() {
        globals->focusControl.tiltCorrection = 0;
        Choose(command::startScan);
    }
    bool IsInTheMiddleOfARow() const {
        return globals->scan.scanning == 1 && globals->stage.position[axisX] > origin[0] + 500.0;
    }

    void ScanFourFields() {
        TypeRanges("1");
        Scan();
    }
    bool IsOnTheWayBack() const { return Shows("Scanning has completed."); }

    void MeasureTilt() { Choose(command::startScan); }
    bool GoesToFarX() const { return Shows("Moving to Xmax position.") && OrdersSinceBegin("m") > 0; }
    bool FocusesAtFarX() const { return globals->scan.scanning == 1 && IsClimbing(); }

    void Jog() { ui.messages.Post({popupWindow, MessageKind::LeftButtonPress, 0, PackPosition(230, 140)}); }
    bool IsJogging() const { return globals->stage.position[axisX] > 150.0; }

    void PressArrow() { ui.messages.Post({mainWindow, MessageKind::KeyDown, key::right}); }
    bool IsInAKey() const { return globals->mainWindow.keyBusy == 1; }

    void SweepCoarsely() { PressPanel(panel::coarse); }
    bool IsSweeping() const { return globals->focusControl.focusBusy == 1 && Shows("Course Focusing step:"); }
    bool IsLifting() const { return Shows("Stage lifting"); }

    void Climb() { PressPanel(panel::autoFocus); }
    bool IsClimbing() const {
        return globals->focusControl.focusBusy == 1 &&
               PanelTextOf(panel::progress).starts_with("Focusing step:");
    }

    void MoveByThePanel() {
        for (const int target : {panel::targetX, panel::targetY, panel::targetZ})
            ui.dialogs.SetItemText(globals->windows.controlPanel, target, "700");
        PressPanel(panel::move);
    }
    bool IsTold() const { return OrdersSinceBegin("mM") > 0; }

    void ShowAChannel() { Choose(command::redImage); }

    void OpenAbout() { OpenModal(command::information); }
    void OpenContrast() { OpenModal(command::configuration); }
    void OpenStageDialog() { OpenModal(command::settingXyStage); }
    void OpenModal(std::uint32_t command) {
        ui.dialogs.whileModal = [this](WindowHandle) { EndNow(); };
        Choose(command);
    }

    void MoveByTheStageDialog() {
        ui.dialogs.whileModal = [this](WindowHandle dialog) {
            ui.dialogs.SetItemText(dialog, 1007, "70");
            ui.dialogs.SetItemText(dialog, 1012, "70");
            ui.dialogs.Notify(dialog, 1009, Notification::Clicked); // Go
        };
        Choose(command::settingXyStage);
    }

    void AskAboutAStop() {
        ui.boxes.whileAsking = [this] { EndNow(); };
        ui.boxes.answers = {false};
        Scan();
        ui.messages.PostAt(ui.clock.now + 700, {mainWindow, MessageKind::Command, command::stop});
    }
    void ProbeAPixel() {
        ui.boxes.whileAsking = [this] { EndNow(); };
        ui.boxes.answers = {false};
        ui.messages.Post({mainWindow, MessageKind::LeftButtonPress, 0, PackPosition(600, 500)});
    }
    void FocusOnNothing() {
        camera.stripes = 0;
        ui.boxes.whileWarning = [this] { EndNow(); };
        Climb();
    }
    void Import() {
        OfferEvenPicture(90);
        ui.chooser.whileChoosing = [this] { EndNow(); };
        Choose(command::importImage);
    }
    bool Never() const { return false; }

    void CloseThePanel() {
        ui.dialogs.Notify(globals->windows.controlPanel, commandCancel, Notification::Clicked);
    }
    bool HasNoPanel() const { return globals->windows.controlPanel == WindowHandle::None; }

    void OpenPortDialog() { Choose(command::xyStageConfiguration); }
    bool HasPortDialog() const { return globals->windows.portConfiguration != WindowHandle::None; }

    void ScanWithoutThePanel() {
        CloseThePanel();
        Scan();
    }

protected:
    Shutdown() {
        serialPorts = &port;
        cameraRuntime = &camera;
        camera.stripes = 30;
        port.present = GetParam().line != Line::IsMissing;
        globals->focusControl.focusSpeed = 200;
        ui.messages.onDispatch = [this](const Message& message) {
            if (message.kind == MessageKind::Other)
                Look();
        };
        LookAgain();
    }

    /// Watches the program from within its loops.
    void Look() {
        LookAgain();
        if (ui.clock.now < running || m_endedAt != never)
            return;
        if (m_begunAt == never)
            Begin();
        else if (const bool late = ui.clock.now > giveUp;
                 late || (this->*GetParam().occupation.isUnderWay)()) {
            EXPECT_FALSE(late) << "it was never under way";
            ChangeDevices();
            Close();
        }
    }
    void LookAgain() { ui.messages.PostAt(ui.clock.now + lookMs, {WindowHandle::None, MessageKind::Other}); }

    void Begin() {
        m_begunAt = ui.clock.now;
        m_ordersAtBegin = stage.Commands("mML").size();
        globals->scan.originX = static_cast<std::int32_t>(origin[0]);
        globals->scan.originY = static_cast<std::int32_t>(origin[1]);
        globals->settings.minimumFlakeArea = 42;
        (this->*GetParam().occupation.begin)();
    }

    virtual void Close() { ui.messages.Post({mainWindow, MessageKind::Close}); }

    /// From the loop of a dialog, unless it is one that opens after that.
    void EndNow() {
        if (m_endedAt != never)
            return;
        ChangeDevices();
        ui.messages.Dispatch({mainWindow, MessageKind::Close});
    }

    void ChangeDevices() {
        TypeRanges("10"); // as they were
        m_endedAt = ui.clock.now;
        m_ordersAtEnd = stage.Commands("mML").size();
        camera.gone = GetParam().camera == CameraThen::IsGone;
        stage.hungUp = GetParam().line == Line::IsDead;
        stage.silent = GetParam().line == Line::IsSilent;
    }

    int Run() { return RunProgram(*globals, ui.Adapters(), {*cameraRuntime, *serialPorts}); }

    void ExpectNothingOpen() {
        EXPECT_TRUE(ui.windows.windows.empty());
        EXPECT_TRUE(ui.windows.children.empty());
        EXPECT_TRUE(ui.dialogs.dialogs.empty());
        EXPECT_TRUE(ui.messages.timers.empty());
        EXPECT_EQ(ui.drawing.contextsHeld, 0);
        EXPECT_EQ(globals->windows.controlPanel, WindowHandle::None);
        EXPECT_EQ(globals->windows.portConfiguration, WindowHandle::None);
        EXPECT_EQ(ui.boxes.unexpected, 0);
    }

    void ExpectNothingRunning() {
        EXPECT_EQ(globals->scan.scanning, 0);
        EXPECT_EQ(globals->focusControl.focusBusy, 0);
        EXPECT_EQ(globals->mainWindow.keyBusy, 0);
        EXPECT_EQ(globals->grainTable, nullptr);
        EXPECT_EQ(globals->spareGrainTable, nullptr);
        EXPECT_EQ(globals->camera.camera, nullptr);
    }

    void ExpectSettingsWritten() {
        EXPECT_EQ(Config(), changedLine);
        EXPECT_EQ(std::count(ui.calls.begin(), ui.calls.end(), "write Config.txt"), 1);
    }

    /// It is sent to the origin and nowhere else: a scan that ends sends it there once more.
    void ExpectStageSentHome() {
        const Texts all = stage.Commands("mML");
        const Texts sent(all.begin() + static_cast<std::ptrdiff_t>(m_ordersAtEnd), all.end());
        if (GetParam().line == Line::IsDead) {
            EXPECT_EQ(sent, Texts());
            return;
        }
        if (GetParam().line == Line::IsMissing) {
            EXPECT_EQ(globals->stage.position[axisX], origin[0]) << "the stage in memory";
            EXPECT_EQ(globals->stage.position[axisY], origin[1]);
            return;
        }
        EXPECT_GE(sent.size(), wayToOrigin);
        EXPECT_EQ(sent.size() % wayToOrigin, 0U);
        EXPECT_EQ(std::count(sent.begin(), sent.end(), originX),
                  std::count(sent.begin(), sent.end(), originY));
        for (const std::string& order : sent)
            EXPECT_TRUE(order == originX || order == originY) << order;
        const std::uint64_t later = ui.clock.now + (GetParam().line == Line::IsSilent ? 10'000 : brakingMs);
        EXPECT_EQ(stage.Place(later), origin);
        EXPECT_FALSE(stage.MovesAt(later));
    }

    std::uint64_t EndTook() const { return ui.clock.now - m_endedAt; }
    bool WasEnded() const { return m_endedAt != never; }

private:
    static constexpr std::uint64_t never = ~std::uint64_t{0};

    void TypeRanges(const std::string& mm) {
        ui.dialogs.SetItemText(globals->windows.controlPanel, panel::xRange, mm);
        ui.dialogs.SetItemText(globals->windows.controlPanel, panel::yRange, mm);
    }
    void Choose(std::uint32_t command) { ui.messages.Post({mainWindow, MessageKind::Command, command}); }
    void PressPanel(int button) {
        ui.dialogs.Notify(globals->windows.controlPanel, button, Notification::Clicked);
    }
    std::ptrdiff_t OrdersSinceBegin(std::string_view letters) const {
        const Texts all = stage.Commands("mML");
        return std::count_if(
            all.begin() + static_cast<std::ptrdiff_t>(m_ordersAtBegin), all.end(),
            [&](const std::string& order) { return letters.find(order[0]) != std::string_view::npos; });
    }
    std::string PanelTextOf(int controlId) const {
        const Texts texts = ui.dialogs.TextsOf(controlId);
        return texts.empty() ? std::string() : texts.back();
    }
    bool Shows(std::string_view text) const { return PanelTextOf(panel::information).starts_with(text); }

    WatchedStage stage;
    VirtualSerialPorts port{ui.clock, stage};
    EvenCamera camera;
    std::uint64_t m_begunAt = never;
    std::uint64_t m_endedAt = never;
    std::size_t m_ordersAtBegin = 0;
    std::size_t m_ordersAtEnd = 0;
};

/// The operator has gone on while the program was busy.
class ShutdownBehindWhichInputWaits : public Shutdown {
protected:
    void Close() override {
        Shutdown::Close();
        ui.messages.Post({mainWindow, MessageKind::LeftButtonPress, 0, PackPosition(600, 500)});
        ui.messages.Post({mainWindow, MessageKind::KeyDown, key::right});
        ui.messages.Post({mainWindow, MessageKind::Close});
    }
};

const std::vector<Occupation> occupations = {
    {"Nothing", &Shutdown::DoNothing, &Shutdown::Always},
    {"ARow", &Shutdown::Scan, &Shutdown::IsInTheMiddleOfARow},
    {"TheWayBack", &Shutdown::ScanFourFields, &Shutdown::IsOnTheWayBack, true},
    {"ARowWithoutThePanel", &Shutdown::ScanWithoutThePanel, &Shutdown::IsInTheMiddleOfARow},
    {"TheWayToFarX", &Shutdown::MeasureTilt, &Shutdown::GoesToFarX, true},
    {"TheTiltMeasurement", &Shutdown::MeasureTilt, &Shutdown::FocusesAtFarX},
    {"AJog", &Shutdown::Jog, &Shutdown::IsJogging},
    {"AnArrowKey", &Shutdown::PressArrow, &Shutdown::IsInAKey},
    {"TheLift", &Shutdown::SweepCoarsely, &Shutdown::IsLifting, true},
    {"ACoarseSweep", &Shutdown::SweepCoarsely, &Shutdown::IsSweeping},
    {"AFineClimb", &Shutdown::Climb, &Shutdown::IsClimbing},
    {"AMoveOfThePanel", &Shutdown::MoveByThePanel, &Shutdown::IsTold, true},
    {"AChannelView", &Shutdown::ShowAChannel, &Shutdown::Always},
    {"TheAboutBox", &Shutdown::OpenAbout, &Shutdown::Never},
    {"TheContrastDialog", &Shutdown::OpenContrast, &Shutdown::Never},
    {"TheStageDialog", &Shutdown::OpenStageDialog, &Shutdown::Never},
    {"AMoveOfTheStageDialog", &Shutdown::MoveByTheStageDialog, &Shutdown::IsTold, true},
    {"TheStopQuestion", &Shutdown::AskAboutAStop, &Shutdown::Never},
    {"TheProbesQuestion", &Shutdown::ProbeAPixel, &Shutdown::Never},
    {"AWarning", &Shutdown::FocusOnNothing, &Shutdown::Never},
    {"TheFileChooser", &Shutdown::Import, &Shutdown::Never},
    {"ThePanelClosed", &Shutdown::CloseThePanel, &Shutdown::HasNoPanel},
    {"ThePortDialog", &Shutdown::OpenPortDialog, &Shutdown::HasPortDialog},
};

std::vector<Ending> Endings() {
    std::vector<Ending> endings;
    for (const Occupation& occupation : occupations) {
        endings.push_back({occupation, Line::Works, CameraThen::Answers});
        endings.push_back({occupation, Line::IsDead, CameraThen::IsGone});
        if (addressSanitizer) // which makes each of them take a second
            continue;
        endings.push_back({occupation, Line::Works, CameraThen::IsGone});
        endings.push_back({occupation, Line::IsDead, CameraThen::Answers});
        endings.push_back({occupation, Line::IsSilent, CameraThen::Answers});
        if (!occupation.needsTravel)
            endings.push_back({occupation, Line::IsMissing, CameraThen::Answers});
    }
    return endings;
}

std::string NameOf(const testing::TestParamInfo<Ending>& info) {
    constexpr std::array<const char*, 4> lines = {"", "LineDead", "LineSilent", "NoLine"};
    return std::string(info.param.occupation.name) + lines.at(static_cast<std::size_t>(info.param.line)) +
           (info.param.camera == CameraThen::IsGone ? "CameraGone" : "");
}

TEST_P(Shutdown, LeavesNothingBehindInTheMiddleOf) {
    EXPECT_EQ(Run(), 0);
    EXPECT_TRUE(WasEnded());
    EXPECT_FALSE(ui.messages.waitedForEver);
    ExpectNothingOpen();
    ExpectNothingRunning();
    ExpectSettingsWritten();
    ExpectStageSentHome();
    EXPECT_LT(EndTook(), GetParam().line == Line::Works ? longestWayMs : silenceMs);
}

TEST_P(ShutdownBehindWhichInputWaits, AsksAndMovesNothingMore) {
    EXPECT_EQ(Run(), 0);
    EXPECT_TRUE(WasEnded());
    EXPECT_TRUE(ui.boxes.questions.empty());
    ExpectNothingOpen();
    ExpectStageSentHome();
}

INSTANTIATE_TEST_SUITE_P(Program, Shutdown, testing::ValuesIn(Endings()), NameOf);
INSTANTIATE_TEST_SUITE_P(Program, ShutdownBehindWhichInputWaits,
                         testing::Values(Ending{occupations.at(0), Line::Works, CameraThen::Answers},
                                         Ending{occupations.at(1), Line::Works, CameraThen::Answers}),
                         NameOf);

} // namespace
} // namespace tessaro
