#pragma once

#include "leaks.h"
#include "support/program.h"
#include "support/running_twin.h"
#include "support/twin_stage.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

namespace tessaro {

using Options = std::vector<std::string>;

/// The operator's program on its own, without a display, on the simulated microscope.
class ScanProgram : public testing::Test {
protected:
    void StartTwin(const Options& more = {}) {
        Options options = stage.Options();
        options.insert(options.end(),
                       {"--wafer-mm", "2", "--at", "500,500,0", "--time-factor", "10", "--quiet"});
        options.insert(options.end(), more.begin(), more.end());
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
                                                             {"DISPLAY", display},
                                                             {"WAYLAND_DISPLAY", waylandDisplay},
                                                             {"QT_QPA_PLATFORM", ""},
                                                             {"TERM", terminalKind},
                                                             LeaksToKnow()},
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
        for (const auto& entry : std::filesystem::recursive_directory_iterator(Desktop(), error))
            count += entry.path().extension() == ".jpg" ? 1 : 0;
        return count;
    }

    std::filesystem::path Desktop() const { return home.Path() / "Desktop"; }
    std::filesystem::path ConfigFile() const { return Desktop() / "Image_Data" / "Config.txt"; }
    std::string Config() const { return ReadText(ConfigFile()); }

    std::string Path(const char* name) const { return (home.Path() / name).string(); }

    /// Scores of flakes reach 30 to 50.
    void LowerTheThreshold() const {
        std::filesystem::create_directories(ConfigFile().parent_path());
        std::ofstream(ConfigFile()) << "3,-12.000000,-8.000000,-2.000000,6.000000,10,10,100,4,35.000000\n";
    }

    ProgramRun Compare() const {
        return RunProgram(TESSARO_COMPARE, {"--images", "--list", Path("report.jsonl"), Path("wafer.json")});
    }

    std::string display;
    std::string waylandDisplay;
    std::string terminalKind = "xterm";
    TemporaryFolder home;
    TwinStage stage{home.Path().string()};
    std::unique_ptr<RunningTwin> twin;
    std::unique_ptr<BackgroundProgram> program;
};

inline const Options smallArea = {"--x-range", "1", "--y-range", "1", "--origin", "400,600", "--no-tilt"};

} // namespace tessaro
