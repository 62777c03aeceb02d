#include "support/running_twin.h"
#include "support/terminal.h"
#include "support/twin_stage.h"

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <memory>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

namespace tessaro {
namespace {

using Options = std::vector<std::string>;

/// The operator's program on its own, without a display, on the simulated microscope.
class ScanProgram : public testing::Test {
protected:
    void StartTwin() {
        Options options = stage.Options();
        options.insert(options.end(),
                       {"--wafer-mm", "2", "--at", "500,500,0", "--time-factor", "10", "--quiet"});
        twin = std::make_unique<RunningTwin>(TESSARO_TWIN, options);
        ASSERT_TRUE(twin->IsReady()) << twin->Errors();
    }

    void Start(Options arguments) { StartWithOutputTo(Path("output"), std::move(arguments)); }

    void StartWithOutputTo(const std::string& output, Options arguments) {
        arguments.insert(arguments.begin(),
                         {"--scan", "--camera", "127.0.0.1", "--stage-port", stage.LinkPath()});
        // An empty variable is as good as none.
        program = std::make_unique<BackgroundProgram>(
            TESSARO_PROGRAM, arguments,
            std::vector<std::pair<std::string, std::string>>{{"HOME", home.Path().string()},
                                                             {"XDG_CONFIG_HOME", ""},
                                                             {"DISPLAY", ""},
                                                             {"WAYLAND_DISPLAY", ""},
                                                             {"QT_QPA_PLATFORM", ""},
                                                             {"ASAN_OPTIONS", "detect_leaks=0"}},
            Path("errors"), output);
    }

    /// -1 when it does not end.
    int ExitStatus() {
        Eventually([this] { return !program->IsRunning(); }, std::chrono::seconds(90));
        return program->ExitStatus().value_or(-1);
    }

    std::string Output() const { return ReadText(Path("output")); }
    std::string Errors() const { return ReadText(Path("errors")); }
    bool Says(const std::string& text) const { return Output().find(text) != std::string::npos; }

    std::size_t SavedImages() const {
        std::size_t count = 0;
        std::error_code error;
        for (const auto& entry :
             std::filesystem::recursive_directory_iterator(home.Path() / "Desktop", error))
            count += entry.path().extension() == ".jpg" ? 1 : 0;
        return count;
    }
    std::string Config() const { return ReadText(home.Path() / "Desktop" / "Image_Data" / "Config.txt"); }

    std::string Path(const char* name) const { return (home.Path() / name).string(); }

    TemporaryFolder home;
    TwinStage stage{home.Path().string()};
    std::unique_ptr<RunningTwin> twin;
    std::unique_ptr<BackgroundProgram> program;
};

const Options smallArea = {"--x-range", "1", "--y-range", "1", "--origin", "400,600", "--no-tilt"};

TEST_F(ScanProgram, ScansASmallAreaWithoutADisplay) {
    StartTwin();
    Start(smallArea);
    EXPECT_EQ(ExitStatus(), 0) << Errors();
    EXPECT_EQ(Errors(), "");
    for (const char* text : {"\nscanning...\n", "\n0% finished, 0.1 minute left\n",
                             "\nScanning has completed.\n", "\n4 fields scanned, "})
        EXPECT_TRUE(Says(text)) << text << " in:\n" << Output();
    EXPECT_FALSE(Says("was sent")) << "what the controller is told is left out:\n" << Output();
    EXPECT_GE(SavedImages(), 2U) << "the field at the origin is saved in any case";
    EXPECT_EQ(Config(), "3,-12.000000,-8.000000,-2.000000,6.000000,10,10,100,4,70.000000\n");
    const std::array<double, 3> place = TwinStage::Place(*twin);
    EXPECT_EQ(place, (std::array<double, 3>{400.0, 600.0, 0.0}));
}

TEST_F(ScanProgram, EndsWithFourWithoutMicroscope) {
    Start(smallArea);
    EXPECT_EQ(ExitStatus(), 4) << Errors();
    EXPECT_NE(Errors().find("no camera gives images"), std::string::npos) << Errors();
    EXPECT_NE(Errors().find("no stage answers"), std::string::npos) << Errors();
    EXPECT_TRUE(Says("Warning: Error in  opening serial port [OK]")) << Output();
    EXPECT_EQ(SavedImages(), 0U);
}

TEST_F(ScanProgram, WritesOverASingleLineOfATerminal) {
    const Terminal terminal;
    ASSERT_TRUE(terminal.Works());
    StartWithOutputTo(terminal.Name(), {"--camera", "none", "--stage-port", "none"});
    EXPECT_EQ(ExitStatus(), 4);
    const std::string written = terminal.Read();
    EXPECT_EQ(written.find("\rNo camera detected\x1b[K"), 0U) << written;
    EXPECT_TRUE(written.ends_with("\n")) << "an error begins a line";
}

TEST_F(ScanProgram, EndsWithFourWithoutStage) {
    StartTwin();
    Start({"--stage-port", "none", "--no-tilt"});
    EXPECT_EQ(ExitStatus(), 4) << Errors();
    EXPECT_EQ(Errors(), "tessaro: no stage answers, nothing was scanned\n");
    EXPECT_EQ(SavedImages(), 0U);
}

class InterruptedScanProgram : public ScanProgram, public testing::WithParamInterface<int> {};

TEST_P(InterruptedScanProgram, BringsTheStageBackAndEndsWithThree) {
    StartTwin();
    Start({"--x-range", "3", "--y-range", "3", "--origin", "400,600", "--no-tilt"});
    ASSERT_TRUE(Eventually([this] { return Says("\n4% finished"); }, std::chrono::seconds(60))) << Output();
    kill(program->Process(), GetParam());
    EXPECT_EQ(ExitStatus(), 3);
    EXPECT_TRUE(Says("\nWarning: Do you want to stop, now ? [Yes]\n")) << Output();
    EXPECT_EQ(Errors(), "tessaro: the scan was stopped\n");
    EXPECT_GE(SavedImages(), 2U);
    EXPECT_FALSE(TwinStage::Moves(*twin));
    EXPECT_EQ(TwinStage::Place(*twin), (std::array<double, 3>{400.0, 600.0, 0.0}));
}

INSTANTIATE_TEST_SUITE_P(Signals, InterruptedScanProgram, testing::Values(SIGINT, SIGTERM));

} // namespace
} // namespace tessaro
