#include "app/resource_ids.h"
#include "app/unattended_program.h"
#include "app/unattended_scan.h"
#include "support/even_camera.h"
#include "support/virtual_serial_ports.h"
#include "support/watched_stage.h"
#include "tests/app/program_fixture.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace tessaro {
namespace {

/// Hears what a report would.
class Heard : public ScanListener {
public:
    void ScanBegins() override {
        ++begun;
        if (onBegin)
            onBegin();
    }
    void FieldFinished(const ScannedField& field) override {
        fields.push_back(field);
        if (onField)
            onField();
    }
    void ScanEnds(ScanEnd why) override { ends.push_back(why); }
    void ScanNotBegun(const std::vector<std::string>& reasons) override { notBegun = reasons; }

    int begun = 0;
    std::vector<ScannedField> fields;
    std::vector<ScanEnd> ends;
    std::vector<std::string> notBegun; // why
    std::function<void()> onBegin;
    std::function<void()> onField;
};

/// The program on its own with a stage that travels and a camera that sees an even field: four fields at two
/// places along either way.
class UnattendedProgram : public ProgramTest {
protected:
    UnattendedProgram() {
        serialPorts = &port;
        cameraRuntime = &camera;
        scan.xRange = 1;
        scan.yRange = 1;
        scan.noTilt = true;
    }

    int Run() {
        const UnattendedConsole console = {[this](std::string_view text) { output += text; },
                                           {},
                                           [this](std::string_view text) { errors += text; },
                                           [this] { return interrupted(); }};
        Listeners listeners;
        listeners.scan = &heard;
        const int result = RunUnattendedProgram(*globals, ui.Adapters(), {*cameraRuntime, *serialPorts},
                                                listeners, scan, console);
        EXPECT_FALSE(ui.messages.waitedForEver);
        EXPECT_TRUE(ui.boxes.questions.empty() && ui.boxes.warnings.empty()) << "nobody is asked anything";
        return result;
    }

    bool Said(const std::string& line) const { return ("\n" + output).find("\n" + line + "\n") != Npos; }

    bool WasScanned() const { return !stage.Commands("s").empty(); }

    static constexpr std::size_t Npos = std::string::npos;
    WatchedStage stage;
    VirtualSerialPorts port{ui.clock, stage};
    EvenCamera camera;
    UnattendedScan scan;
    std::function<bool()> interrupted = [] { return false; };
    Heard heard;
    std::string output;
    std::string errors;
};

TEST_F(UnattendedProgram, ScansOnceGoesToTheOriginAndEndsWithZero) {
    EXPECT_EQ(Run(), 0);
    EXPECT_EQ(stage.Commands("mM"), (Texts{"m0", "M0",                                      // before it
                                           "m0", "M0", "m640", "M640", "m0", "m0", "M1280", // the scan
                                           "m0", "M0",                                      // its end
                                           "m0", "M0"}))                                    // the window's
        << "400 um are 640 steps";
    EXPECT_TRUE(stage.Commands("L").empty()) << "Z stays";
    EXPECT_EQ(heard.fields.size(), 4U);
    EXPECT_EQ(heard.ends, std::vector<ScanEnd>{ScanEnd::Completed});
    EXPECT_EQ(errors, "");
    EXPECT_FALSE(stage.MovesAt(ui.clock.now));
    EXPECT_TRUE(ui.windows.windows.empty());
    EXPECT_TRUE(ui.dialogs.dialogs.empty());
    EXPECT_EQ(Images().size(), 2U) << "of the field at the origin: the image, and its detail";
}

TEST_F(UnattendedProgram, SaysHowFarItIs) {
    Run();
    for (const char* line :
         {"Camera Opening", "scanning...", "0% finished, 0.1 minute left", "25% finished, 0.0 minute left",
          "50% finished, 0.0 minute left", "Scanning has completed.",
          "4 fields scanned, 0 single layers marked; one that lies in two fields "
          "counts twice."})
        EXPECT_TRUE(Said(line)) << line << " in:\n" << output;
    EXPECT_FALSE(Said("Done")) << "progress is for terminals";
}

TEST_F(UnattendedProgram, StartsAtItsOrigin) {
    scan.originX = 400;
    scan.originY = -800; // the longer way: X is not asked where it is
    EXPECT_EQ(Run(), 0);
    EXPECT_EQ(stage.Commands("mM"),
              (Texts{"m640", "M-1280", "m640", "M-1280", "m1280", "M-640", "m640", "m640", "M0", //
                     "m640", "M-1280", "m640", "M-1280"}));
    EXPECT_EQ(heard.fields.at(0).position, (std::array<double, 3>{400.0, -800.0, 0.0}));
}

TEST_F(UnattendedProgram, WritesTheSettingsBackAsTheyWere) {
    constexpr const char* line = "5,-20.500000,1.250000,2.000000,7.500000,12,14,80,1,35.000000\n";
    ui.folders.Put(globals->folders.settings, line);
    heard.onField = [this] {
        EXPECT_EQ(PanelText(panel::xRange), "1");
        EXPECT_EQ(PanelText(panel::yRange), "1");
        EXPECT_FALSE(ui.dialogs.IsChecked(globals->windows.controlPanel, panel::tiltCorrection));
        ui.dialogs.Notify(globals->windows.controlPanel, panel::stop, Notification::Clicked);
        EXPECT_EQ(globals->settings.xRange, 1) << "nothing that happens in the panel changes it";
        EXPECT_EQ(globals->settings.scoreThreshold, 35.0F);
    };
    EXPECT_EQ(Run(), 0);
    EXPECT_EQ(heard.fields.size(), 4U);
    EXPECT_EQ(Config(), line);
}

TEST_F(UnattendedProgram, ScansTheAreaOfTheSettingsWhereNoOtherIsGiven) {
    ui.folders.Put(globals->folders.settings,
                   "3,-12.000000,-8.000000,-2.000000,6.000000,2,1,100,4,70.000000\n");
    scan.xRange.reset();
    EXPECT_EQ(Run(), 0);
    EXPECT_EQ(heard.fields.size(), 10U) << "five columns and two rows";
}

TEST_F(UnattendedProgram, KeepsARangeThatWasTypedMeanwhile) {
    heard.onField = [this] {
        ui.dialogs.SetItemText(globals->windows.controlPanel, panel::xRange, "7");
        ui.dialogs.Notify(globals->windows.controlPanel, panel::stop, Notification::Clicked);
    };
    Run();
    EXPECT_EQ(Config(), "3,-12.000000,-8.000000,-2.000000,6.000000,7,10,100,4,70.000000\n");
}

TEST_F(UnattendedProgram, BeginsWhenTheImageIsAsBrightAsBefore) {
    camera.levelOf = [](int image) { return static_cast<std::uint8_t>(std::min(40 + 10 * image, 90)); };
    int before = 0;
    heard.onBegin = [&] { before = camera.images; };
    EXPECT_EQ(Run(), 0);
    EXPECT_EQ(before, 5 + 1 + 5 + 1) << "rising, the first of 90, five like it, and one to see that it works";
}

TEST_F(UnattendedProgram, WaitsTenSecondsForTheCameraAtMost) {
    camera.levelOf = [](int image) { return static_cast<std::uint8_t>(80 + image % 2); };
    std::uint64_t begun = 0;
    heard.onBegin = [&] { begun = ui.clock.now; };
    EXPECT_EQ(Run(), 0);
    EXPECT_GE(begun, 10'000U);
    EXPECT_LT(begun, 11'500U);
}

TEST_F(UnattendedProgram, EndsWithFourWithoutACamera) {
    cameraRuntime = &cameras;
    EXPECT_EQ(Run(), 4);
    EXPECT_EQ(errors, "tessaro: no camera gives images, nothing was scanned\n");
    EXPECT_FALSE(WasScanned());
    EXPECT_EQ(heard.begun, 0);
    EXPECT_TRUE(Images().empty());
    EXPECT_EQ(Config(), defaultLine);
}

TEST_F(UnattendedProgram, EndsWithFourWhenTheCameraStopsAnsweringAtTheStart) {
    At(500, [this] { camera.gone = true; });
    EXPECT_EQ(Run(), 4);
    EXPECT_EQ(errors, "tessaro: no camera gives images, nothing was scanned\n");
    EXPECT_FALSE(WasScanned());
}

TEST_F(UnattendedProgram, EndsWithFourWithoutAStage) {
    serialPorts = &serial;
    EXPECT_EQ(Run(), 4);
    EXPECT_EQ(errors, "tessaro: no stage answers, nothing was scanned\n");
    EXPECT_EQ(heard.begun, 0);
}

TEST_F(UnattendedProgram, SaysThatTheLineCannotBeOpened) {
    port.present = false;
    EXPECT_EQ(Run(), 4);
    EXPECT_TRUE(Said("Warning: Error in  opening serial port [OK]")) << output;
}

TEST_F(UnattendedProgram, EndsWithFourWhereNobodyIsAtTheOtherEndOfTheLine) {
    stage.silent = true;
    EXPECT_EQ(Run(), 4);
    EXPECT_EQ(errors, "tessaro: no stage answers, nothing was scanned\n");
    EXPECT_FALSE(WasScanned());
}

TEST_F(UnattendedProgram, NamesAllThatIsMissing) {
    cameraRuntime = &cameras;
    serialPorts = &serial;
    EXPECT_EQ(Run(), 4);
    EXPECT_EQ(errors, "tessaro: no camera gives images, nothing was scanned\n"
                      "tessaro: no stage answers, nothing was scanned\n");
    EXPECT_EQ(heard.notBegun, (Texts{"no camera gives images", "no stage answers"}));
}

TEST_F(UnattendedProgram, EndsWithThreeWhenItCannotFocusAndSaysSo) {
    scan.noTilt = false;
    EXPECT_EQ(Run(), 3);
    EXPECT_EQ(heard.ends, std::vector<ScanEnd>{ScanEnd::FocusFailed});
    EXPECT_TRUE(Said("Error in focusing: Please, adjust the sample position [OK]")) << output;
    EXPECT_EQ(heard.notBegun, Texts()) << "it was begun";
    EXPECT_TRUE(Said("0 fields scanned, 0 single layers marked; one that lies in two fields counts twice."))
        << output;
    EXPECT_EQ(errors, "tessaro: focusing failed, no field was scanned\n");
    EXPECT_FALSE(stage.MovesAt(ui.clock.now));
    EXPECT_EQ(Config(), defaultLine);
}

TEST_F(UnattendedProgram, InterruptedGoesToTheOriginAndEndsWithThree) {
    bool latched = false;
    interrupted = [&] { return latched = latched || heard.fields.size() == 2; };
    EXPECT_EQ(Run(), 3);
    EXPECT_EQ(heard.fields.size(), 2U);
    EXPECT_EQ(heard.ends, std::vector<ScanEnd>{ScanEnd::Stopped});
    const Texts moves = stage.Commands("mM");
    EXPECT_EQ(Texts(moves.end() - 4, moves.end()), (Texts{"M0", "m0", "m0", "M0"}))
        << "X is farther off than Y";
    EXPECT_EQ(stage.Place(ui.clock.now), (std::array<double, 2>{0.0, 0.0}));
    EXPECT_FALSE(stage.MovesAt(ui.clock.now));
    EXPECT_TRUE(Said("Warning: Do you want to stop, now ? [Yes]")) << output;
    EXPECT_EQ(errors, "tessaro: the scan was stopped\n");
    EXPECT_EQ(Images().size(), 2U) << "what was saved stays";
    EXPECT_EQ(Config(), defaultLine);
}

TEST_F(UnattendedProgram, InterruptedWhileItFocusesEndsSoon) {
    scan.noTilt = false;
    bool latched = false;
    interrupted = [&] { return latched = latched || globals->focusControl.focusBusy == 1; };
    EXPECT_EQ(Run(), 3);
    EXPECT_EQ(heard.ends, std::vector<ScanEnd>{ScanEnd::Stopped});
    EXPECT_FALSE(stage.MovesAt(ui.clock.now));
}

TEST_F(UnattendedProgram, InterruptedBeforeTheScanDoesNotBeginIt) {
    interrupted = [] { return true; };
    EXPECT_EQ(Run(), 3);
    EXPECT_FALSE(WasScanned());
    EXPECT_EQ(heard.begun, 0);
    EXPECT_EQ(heard.notBegun, Texts{"it was stopped before"});
    EXPECT_EQ(errors, "tessaro: the scan was stopped\n");
}

TEST_F(UnattendedProgram, InterruptedAfterTheScanHasScannedToTheEnd) {
    interrupted = [this] { return !heard.ends.empty(); };
    EXPECT_EQ(Run(), 0);
    EXPECT_EQ(errors, "");
}

TEST_F(UnattendedProgram, GoesOnAfterAClick) {
    heard.onField = [this] {
        if (heard.fields.size() == 1)
            ui.messages.Post({mainWindow, MessageKind::LeftButtonPress});
    };
    EXPECT_EQ(Run(), 0);
    EXPECT_EQ(heard.fields.size(), 4U);
    EXPECT_TRUE(Said("Warning: Do you want to stop, now ? [No]")) << output;
}

TEST_F(UnattendedProgram, ChangesNoSettingsByAClick) {
    heard.onField = [this] {
        if (heard.fields.size() == 1)
            ui.messages.Post({mainWindow, MessageKind::LeftButtonPress, 0, PackPosition(600, 500)});
    };
    Run();
    EXPECT_EQ(Config(), defaultLine) << "the colour there does not become the target";
}

TEST_F(UnattendedProgram, StopsByTheMenu) {
    heard.onField = [this] {
        if (heard.fields.size() == 1)
            ui.messages.Post({mainWindow, MessageKind::Command, command::stop});
    };
    EXPECT_EQ(Run(), 3);
    EXPECT_EQ(heard.fields.size(), 1U);
    EXPECT_TRUE(Said("Warning: Do you want to stop, now ? [Yes]")) << output;
}

TEST_F(UnattendedProgram, StopsWhenItsWindowIsClosed) {
    heard.onField = [this] {
        if (heard.fields.size() == 1)
            ui.messages.Post({mainWindow, MessageKind::Close});
    };
    EXPECT_EQ(Run(), 3);
    EXPECT_EQ(heard.fields.size(), 1U);
    EXPECT_EQ(Config(), defaultLine);
}

TEST_F(UnattendedProgram, DoesNotBeginWhenItsWindowIsClosedBefore) {
    ui.messages.PostAt(500, {mainWindow, MessageKind::Close});
    EXPECT_EQ(Run(), 3);
    EXPECT_EQ(heard.begun, 0);
}

TEST_F(UnattendedProgram, SaysThatTheStageWasLost) {
    heard.onField = [this] {
        if (heard.fields.size() == 2)
            stage.hungUp = true;
    };
    EXPECT_EQ(Run(), 0) << "it ran to its end";
    EXPECT_EQ(heard.fields.size(), 4U);
    EXPECT_EQ(errors,
              "tessaro: the line to the stage was lost during the scan: later fields are not where they "
              "were meant to be\n");
}

/// Each wait gives up after 2 s, and a step goes from the place that was told last: the one along X out of
/// the silence goes as far back as if the one into it had never been.
TEST_F(UnattendedProgram, GoesOnFromWhatItKnowsWhenTheControllerIsSilentForFiveSeconds) {
    std::vector<std::uint64_t> times;
    heard.onField = [&] {
        times.push_back(ui.clock.now);
        if (heard.fields.size() > 1)
            return;
        stage.silent = true;
        At(ui.clock.now + 5000, [this] { stage.silent = false; });
    };
    EXPECT_EQ(Run(), 0) << "it ran to its end";
    ASSERT_EQ(heard.fields.size(), 4U);
    using Place = std::array<double, 3>;
    EXPECT_EQ(heard.fields[1].position, (Place{0.0, 0.0, 0.0})) << "truly at 400";
    EXPECT_EQ(heard.fields[2].position, (Place{0.0, 0.0, 0.0})) << "truly at (400, 400)";
    EXPECT_EQ(heard.fields[3].position, (Place{-400.0, 0.0, 0.0})) << "it is asked for X alone";
    for (const std::size_t silent : {1U, 2U}) {
        EXPECT_GE(times[silent] - times[silent - 1], 2200U) << "the wait and the pump";
        EXPECT_LT(times[silent] - times[silent - 1], 2600U) << "and three reads, of 150 ms each";
    }
    const Texts moves = stage.Commands("mM");
    EXPECT_EQ(Texts(moves.begin() + 2, moves.end() - 2),
              (Texts{"m0", "M0", "m640", "M640", "m-640", "m0", "M640", "m0", "M0"}));
    EXPECT_EQ(stage.Place(ui.clock.now), (std::array<double, 2>{0.0, 0.0}));
    EXPECT_EQ(errors, "");
}

TEST_F(UnattendedProgram, SaysHowManyFieldsShowNoImage) {
    heard.onField = [this] { camera.gone = heard.fields.size() == 2; };
    EXPECT_EQ(Run(), 0) << "it ran to its end";
    EXPECT_EQ(errors, "tessaro: the camera was lost during the scan: 1 of 4 fields show a test pattern\n");
}

TEST_F(UnattendedProgram, SaysHowManyImagesCouldNotBeSaved) {
    ui.folders.failWriting = true;
    testing::internal::CaptureStderr();
    EXPECT_EQ(Run(), 0);
    testing::internal::GetCapturedStderr();
    EXPECT_EQ(errors, "tessaro: 2 images could not be saved\n") << "those of the field at the origin";
}

TEST_F(UnattendedProgram, WithoutAWindowDoesNotClaimToHaveScanned) {
    ui.windows.failMaking = {"Tessaro"};
    EXPECT_EQ(Run(), unattended_exit::notStarted);
    EXPECT_EQ(heard.notBegun, Texts{"there is no window to begin with"});
    EXPECT_EQ(errors, "tessaro: there is no window to begin with\n");
}

} // namespace
} // namespace tessaro
