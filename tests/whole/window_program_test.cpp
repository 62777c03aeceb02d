#include "analysis/candidates.h"
#include "analysis/decision.h"
#include "analysis/field_analysis.h"
#include "analysis/frame_statistics.h"
#include "analysis/grouping.h"
#include "app/settings.h"
#include "imaging/picture_to_frame.h"
#include "platform/qt/qt_drawing_surface.h"
#include "platform/qt/qt_picture_files.h"
#include "scan/control_panel_ids.h"
#include "support/sanitizer.h"
#include "whole/window_driver.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <map>
#include <memory>
#include <sstream>

namespace tessaro {
namespace {

constexpr const char* demoSettings = "3,-12.000000,-8.000000,-2.000000,6.000000,10,10,100,4,35.000000\n";

/// The analysis of one frame beside the program's, drawing on what the window should show.
class Expected {
public:
    explicit Expected(const Picture& picture) {
        PictureToFrame(picture, m_frame);
        m_memory->frame.pixels = m_frame.Data();
        shown = FrameToPicture(m_frame);
        m_surface = std::make_unique<QtDrawingSurface>(shown);
        m_settings.scoreThreshold = 35.0F;
        ComputeFrameStatistics(m_memory->frame, m_memory->frame, m_memory->measured);
    }

    FieldAnalysis Field() {
        FieldAnalysis field = m_memory->Bind(m_settings);
        field.surface = m_surface.get();
        return field;
    }

    Picture shown;

private:
    Settings m_settings;
    std::unique_ptr<AnalysisMemory> m_memory = std::make_unique<AnalysisMemory>();
    FrameBuffer m_frame;
    std::unique_ptr<QtDrawingSurface> m_surface;
};

class WindowProgram : public WindowDriver {
protected:
    void SetUp() override {
        WindowDriver::SetUp();
        ASSERT_EQ(RunProgram(TESSARO_SIMULATE_FIELD, {"--seed", "3", PicturePath()}).exitStatus, 0);
    }

    void Import(const std::string& path) {
        Menu("Import Image");
        ASSERT_TRUE(Eventually([this] { return display.Shows("Import Image"); }));
        display.Type(path);
        display.Keys({"Return"});
        ASSERT_TRUE(Eventually([this] { return !display.Shows("Import Image"); }));
    }

    Picture ImportedPicture() const {
        QtPictureFiles pictures;
        const std::string bytes = ReadText(PicturePath());
        return std::get<Picture>(
            pictures.Decode({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()}));
    }

    std::string PicturePath() const { return (home.Path() / "field.png").string(); }
};

TEST_F(WindowProgram, ShowsTheMovingTestPatternWithoutACamera) {
    Start();
    const auto first = display.Screenshot(screenshots / "test-pattern.png");
    ASSERT_TRUE(first.has_value());
    EXPECT_TRUE(Eventually([&] {
        const auto next = display.Screenshot(screenshots / "test-pattern.png");
        return next.has_value() &&
               !std::equal(first->Pixel(0, 500), first->Pixel(800, 500), next->Pixel(0, 500));
    }));
    Exit();
}

TEST_F(WindowProgram, AnalysesAnImportedPictureFromTheMenuAndSavesIt) {
    std::ofstream(ConfigFile()) << demoSettings;
    Start();
    Expected expected(ImportedPicture());
    Import(PicturePath());
    ASSERT_TRUE(Eventually([&] { return ShowsPicture(expected.shown, "imported"); }));

    FieldAnalysis field = expected.Field();
    FindCandidates(field, true);
    Menu("Find Single Layers");
    ASSERT_TRUE(Eventually([&] { return ShowsPicture(expected.shown, "candidates"); }));

    RejectNoise(field.analyzer);
    Menu("Noise Rejection");
    GroupGrains(field);
    Menu("Grouping");
    ASSERT_GT(DecideSingleLayers(field), 0);
    Menu("Discern Contrast");
    ASSERT_TRUE(Eventually([&] { return ShowsPicture(expected.shown, "single-layers"); }));
    EXPECT_TRUE(Eventually([&] { return SavedImages().size() == 2; }));

    const std::string progress = PanelText(panel::progress);
    display.Keys({"Return"});
    EXPECT_TRUE(Eventually([&] { return SavedImages().size() == 4; }));
    EXPECT_TRUE(Eventually([&] { return PanelText(panel::progress) != progress; }))
        << "noise and focus, when the key is done";
    Menu("Save Image");
    EXPECT_TRUE(Eventually([&] { return SavedImages().size() == 6; }));
    Exit();

    std::vector<std::string> names;
    for (const auto& file : SavedImages())
        names.push_back(file.filename().string());
    EXPECT_EQ(names, (std::vector<std::string>{"(0,0).jpg", "(0,0)_0.jpg", "(0,0)_1.jpg", "(0,0)detail.jpg",
                                               "(0,0)detail_0.jpg", "(0,0)detail_1.jpg"}));
    EXPECT_EQ(ReadText(ConfigFile()), demoSettings);
}

TEST_F(WindowProgram, ProbesAClickedPixelAndKeepsItsContrastForTheNextRun) {
    Start();
    Expected expected(ImportedPicture());
    Import(PicturePath());
    ASSERT_TRUE(Eventually([&] { return ShowsPicture(expected.shown, "imported"); }));
    display.Click(imageLeft + 100, imageTop + 200);
    ASSERT_TRUE(Eventually([this] { return display.Shows("Pixel Analysis at Position: .100,828."); }));
    display.Screenshot(screenshots / "probe.png");
    display.Keys({"Return"});
    ASSERT_TRUE(Eventually([this] { return !display.Shows("Pixel Analysis"); }));
    Exit();
    Settings settings;
    ASSERT_EQ(ReadSettingsLine(ReadText(ConfigFile()), settings), settingsFieldCount);
    EXPECT_NE(settings.contrastTolerance, 6.0F);
    EXPECT_LT(settings.contrastTolerance, 3.0F) << "the pixel is bare substrate";
}

TEST_F(WindowProgram, TellsWhatItIs) {
    Start();
    Menu("Information");
    ASSERT_TRUE(Eventually([this] { return display.Shows("About Tessaro"); }));
    display.Screenshot(screenshots / "about.png");
    display.Keys({"Return"});
    EXPECT_TRUE(Eventually([this] { return !display.Shows("About Tessaro"); }));
    Exit();
}

TEST_F(WindowProgram, OpensTheControlPanelAgainAfterItWasClosed) {
    Start();
    display.Close("Control Panel");
    ASSERT_TRUE(Eventually([this] { return !display.Shows("Control Panel"); }));
    Menu("Control Panel");
    EXPECT_TRUE(Eventually([this] { return display.Shows("Control Panel"); }));
    Menu("Control Panel");
    Menu("Information");
    ASSERT_TRUE(Eventually([this] { return display.Shows("About Tessaro"); }));
    EXPECT_EQ(display.Windows("Control Panel").size(), 1U);
    display.Keys({"Escape"});
    Exit();
}

TEST_F(WindowProgram, KeepsTheControlPanelAboveItsWindowOnADesktopTooLargeForBoth) {
    Start({{"QT_SCALE_FACTOR", "1.5"}});
    const std::string window = display.WindowAt(600, 500);
    const std::string panel = display.WindowAt(1600, 500);
    EXPECT_NE(window, panel);
    constexpr int columnOfBoth = 1200;
    EXPECT_EQ(display.WindowAt(columnOfBoth, 500), panel);
    display.Close(panelTitle);
    EXPECT_TRUE(Eventually([&] { return display.WindowAt(columnOfBoth, 500) == window; }));
}

TEST_F(WindowProgram, ContinuesTheFileOfTheFocusCurve) {
    const std::string file = (home.Path() / "curve.csv").string();
    arguments.insert(arguments.end(), {"--focus-curve", file});
    const std::string header = "started,number,search,pass,step,ms,z_um,score,focus_value,outcome\n";
    const auto occurrences = [&file](const std::string& part) {
        const std::string text = ReadText(file);
        int count = 0;
        for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
            ++count;
        return count;
    };
    for (int searches = 1; searches <= 2; ++searches) {
        Start();
        EXPECT_EQ(occurrences(",fine,1,0,"), searches - 1) << "what was there has stayed";
        Menu("Auto focusing");
        ASSERT_TRUE(Eventually([&] { return occurrences(",best of the second pass\n") == searches; }))
            << ReadText(file);
        Exit();
    }
    EXPECT_TRUE(ReadText(file).starts_with(header));
    EXPECT_EQ(occurrences(header), 1);
    EXPECT_EQ(occurrences(",fine,0,0,"), 2) << "the frames before the first steps";
    EXPECT_EQ(occurrences(",fine,1,0,"), 2);
}

TEST_F(WindowProgram, BeginsTheFileOfTheReportAnewAndReportsAScanThatIsClosed) {
    const std::string file = (home.Path() / "scan.jsonl").string();
    std::ofstream(file) << "of another run\n";
    arguments.insert(arguments.end(), {"--report", file});
    Start();
    EXPECT_EQ(ReadText(file), "");
    Menu("Start"); // measures the tilt first
    ASSERT_TRUE(Eventually([this] { return exists(home.Path() / "Desktop" / "Image_Detail"); }));
    Exit();
    const std::string text = ReadText(file);
    EXPECT_TRUE(text.starts_with(R"({"scan":1,"end":"stopped","fields":0,"found":0,"images":0,"problems":[)"))
        << text;
    EXPECT_TRUE(text.ends_with("]}\n")) << text;
}

TEST_F(WindowProgram, LeavesTheKeyboardToOtherProgramsWhenThePointerMovesOverIt) {
    Start();
    const BackgroundProgram other("display",
                                  {"-title", "Elsewhere", "-geometry", "300x200+1400+300", "xc:gray"},
                                  {{"DISPLAY", display.Name()}});
    ASSERT_TRUE(Eventually([this] { return display.Shows("Elsewhere"); }));
    display.Activate("Elsewhere");
    ASSERT_TRUE(Eventually([this] { return display.ActiveTitle() == "Elsewhere\n"; }));
    for (int column = 400; column < 420; ++column)
        display.MoveTo(column, 400);
    display.Close("Control Panel"); // the program comes to this after the moves
    ASSERT_TRUE(Eventually([this] { return !display.Shows("Control Panel"); }));
    EXPECT_EQ(display.ActiveTitle(), "Elsewhere\n");
    display.Activate(mainTitle);
    Exit();
}

TEST_F(WindowProgram, WritesTheTenSettingsWhenItsWindowIsClosedInAnyLocale) {
    Start({{"LANG", "de_DE.UTF-8"}, {"LC_ALL", "de_DE.UTF-8"}});
    display.Close(mainTitle);
    ASSERT_TRUE(Eventually([this] { return program->ExitStatus().has_value(); }));
    EXPECT_EQ(program->ExitStatus(), 0);
    EXPECT_EQ(ReadText(ConfigFile()), "3,-12.000000,-8.000000,-2.000000,6.000000,10,10,100,4,70.000000\n");
}

TEST_F(WindowProgram, KeepsWithinTwoHundredMegabytes) {
    if (addressSanitizer)
        GTEST_SKIP() << "a sanitizer keeps a shadow of the memory in memory";
    Start();
    Import(PicturePath());
    Menu("Show BackGround");
    Menu("Information");
    ASSERT_TRUE(Eventually([this] { return display.Shows("About Tessaro"); }));
    std::istringstream status(ReadText("/proc/" + std::to_string(program->Process()) + "/status"));
    std::string line;
    while (std::getline(status, line) && line.rfind("VmHWM:", 0) != 0)
        continue;
    const int kilobytes = std::atoi(line.c_str() + std::string("VmHWM:").size());
    EXPECT_GT(kilobytes, 0);
    EXPECT_LT(kilobytes, 200 * 1024);
    display.Keys({"Return"});
    Exit();
}

TEST_F(WindowProgram, SaysWhyAFileIsNoPicture) {
    std::ofstream(home.Path() / "notes.txt") << "not a picture";
    Start();
    Import((home.Path() / "notes.txt").string());
    Picture white(1232, 1028);
    std::fill(white.pixels.begin(), white.pixels.end(), std::uint8_t{255});
    EXPECT_TRUE(Eventually([&] { return ShowsPicture(white, "no-picture"); }));
    EXPECT_EQ(ReadText(Errors()),
              (home.Path() / "notes.txt").string() + ": not a JPEG, PNG, TIFF, BMP or PPM picture\n");
    Exit();
    std::filesystem::resize_file(Errors(), 0);
}

/// The program with a home of its own: its working folder is made before it looks at its arguments.
class TessaroCommandLine : public testing::Test {
protected:
    ProgramRun Run(const std::vector<std::string>& arguments, const std::string& environment = {}) const {
        return RunProgram(TESSARO_PROGRAM, arguments,
                          environment + "XDG_CONFIG_HOME= HOME=" + ShellQuoted(home.Path().string()) + " ");
    }

    TemporaryFolder home;
};

TEST_F(TessaroCommandLine, ExplainsItself) {
    const ProgramRun help = Run({"--help"});
    EXPECT_EQ(help.exitStatus, 0);
    for (const char* option :
         {"--camera CAMERA", "--camera-runtime", "--stage-port PATH", "--help", "--version"})
        EXPECT_NE(help.output.find(option), std::string::npos) << option;
    const ProgramRun version = Run({"--version"});
    EXPECT_EQ(version.exitStatus, 0);
    EXPECT_EQ(version.output.substr(0, 8), "tessaro ");
}

TEST_F(TessaroCommandLine, RefusesWhatItDoesNotKnowWithStatusTwo) {
    const ProgramRun run = Run({"--zoom"});
    EXPECT_EQ(run.exitStatus, 2);
    EXPECT_EQ(run.errors, "tessaro: unknown argument '--zoom'\nTry 'tessaro --help'.\n");
}

TEST_F(TessaroCommandLine, RefusesAFocusCurveThatCannotBeWrittenBeforeItLooksForADisplay) {
    const ProgramRun run = Run({"--camera", "none", "--focus-curve", "/no/such/folder/x.csv"},
                               "DISPLAY=:4711 QT_QPA_PLATFORM=xcb ");
    EXPECT_EQ(run.exitStatus, 2);
    EXPECT_EQ(run.errors, "tessaro: --focus-curve: '/no/such/folder/x.csv' cannot be written\n"
                          "Try 'tessaro --help'.\n");
}

TEST_F(TessaroCommandLine, RefusesAReportThatCannotBeWrittenBeforeItLooksForADisplay) {
    const ProgramRun run = Run({"--camera", "none", "--report", "/no/such/folder/x.jsonl"},
                               "DISPLAY=:4711 QT_QPA_PLATFORM=xcb ");
    EXPECT_EQ(run.exitStatus, 2);
    EXPECT_EQ(run.errors, "tessaro: --report: '/no/such/folder/x.jsonl' cannot be written\n"
                          "Try 'tessaro --help'.\n");
}

TEST_F(TessaroCommandLine, EndsWithAReasonWhereThereIsNoDisplay) {
    const ProgramRun run = Run({}, "DISPLAY=:4711 QT_QPA_PLATFORM=xcb ");
    EXPECT_EQ(run.exitStatus, 1);
    EXPECT_NE(run.errors.find("could not connect to display :4711"), std::string::npos) << run.errors;
}

} // namespace
} // namespace tessaro
