#include "scan_program_fixture.h"
#include "support/terminal.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <string>

namespace tessaro {
namespace {

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

/// What stands in the row of the table that begins so; -1 where there is none.
int Figure(const std::string& table, const std::string& row) {
    const std::size_t at = table.find("\n" + row);
    return at == std::string::npos ? -1 : std::atoi(table.c_str() + at + 1 + row.size());
}

TEST_F(ScanProgram, FindsEverySingleLayerAndReportsIt) {
    LowerTheThreshold();
    StartTwin({"--truth", Path("wafer.json")});
    Options options = smallArea;
    options.insert(options.end(), {"--report", Path("report.jsonl")});
    Start(options);
    ASSERT_EQ(ExitStatus(), 0) << Errors();
    const ProgramRun run = Compare();
    EXPECT_EQ(run.exitStatus, 0) << run.errors;
    EXPECT_EQ(run.errors, "");
    const int wanted = Figure(run.output, "single layers of 150 um^2 or more in the area");
    EXPECT_GT(wanted, 0) << run.output;
    EXPECT_EQ(Figure(run.output, "  found"), wanted) << run.output;
    EXPECT_EQ(Figure(run.output, "  anything else"), 0) << run.output;
    EXPECT_NE(run.output.find(", all there and sound\n"), std::string::npos) << run.output;

    const std::string report = ReadText(Path("report.jsonl"));
    const std::size_t begin = report.find("\"images\":[\"") + 11;
    const std::filesystem::path image = report.substr(begin, report.find('"', begin) - begin);
    const std::filesystem::path other = image.parent_path() / "by hand.jpg";
    std::filesystem::copy_file(image, other);
    const ProgramRun beside = Compare();
    EXPECT_EQ(beside.exitStatus, 0) << beside.errors;
    EXPECT_NE(beside.output.find("  not in the report: " + other.string() + "\n"), std::string::npos)
        << beside.output;
}

TEST_F(ScanProgram, KilledLeavesAReportOfWholeLines) {
    StartTwin({"--truth", Path("wafer.json")});
    Start({"--x-range", "3", "--y-range", "3", "--origin", "400,600", "--no-tilt", "--report",
           Path("report.jsonl")});
    const auto report = [this] { return ReadText(Path("report.jsonl")); };
    const auto lines = [&] {
        const std::string text = report();
        return std::count(text.begin(), text.end(), '\n');
    };
    ASSERT_TRUE(Eventually([&] { return lines() >= 3; }, std::chrono::seconds(60))) << Errors();
    kill(program->Process(), SIGKILL);
    EXPECT_EQ(ExitStatus(), 128 + SIGKILL);
    EXPECT_TRUE(report().ends_with("]}\n")) << report().substr(report().size() - 100);
    const ProgramRun run = Compare();
    EXPECT_EQ(run.exitStatus, 0) << run.errors;
    EXPECT_NE(run.output.find("no scan has come to an end\n"), std::string::npos) << run.output;
    EXPECT_EQ(run.output.find("lines that break off"), std::string::npos) << run.output;
}

TEST_F(ScanProgram, ReportsWhyItScannedNothing) {
    Start({"--camera", "none", "--stage-port", "none", "--report", Path("report.jsonl")});
    EXPECT_EQ(ExitStatus(), 4);
    EXPECT_EQ(ReadText(Path("report.jsonl")),
              R"({"scan":1,"end":"not begun","fields":0,"found":0,"images":0,)"
              R"("problems":["no camera gives images","no stage answers"]})"
              "\n");
}

TEST_F(ScanProgram, GivesStandardOutputToTheReportHoweverItIsNamed) {
    for (const std::string& name : {std::string("-"), std::string("/dev/stdout"), Path("output")}) {
        std::filesystem::remove(Path("output"));
        Start({"--camera", "none", "--stage-port", "none", "--report", name});
        EXPECT_EQ(ExitStatus(), 4);
        EXPECT_TRUE(Output().starts_with(R"({"scan":1,"end":"not begun",)")) << name << ": " << Output();
        EXPECT_EQ(std::ranges::count(Output(), '\n'), 1) << name << ": " << Output();
    }
    EXPECT_NE(Errors().find("No camera detected\n"), std::string::npos) << "the rest goes there";
}

TEST_F(ScanProgram, SaysHowManyLinesOfItsReportAreMissing) {
    Start({"--camera", "none", "--stage-port", "none", "--report", "/dev/full"});
    EXPECT_EQ(ExitStatus(), 4);
    EXPECT_TRUE(Errors().ends_with("tessaro: 1 lines of the report could not be written\n")) << Errors();
}

TEST_F(ScanProgram, DoesWithoutADisplayThatDoesNotAnswer) {
    display = ":987";
    waylandDisplay = "nowhere";
    Start({"--camera", "none", "--stage-port", "none"});
    EXPECT_EQ(ExitStatus(), 4) << "it came as far as to look for them: " << Errors();
    EXPECT_NE(Errors().find("no camera gives images"), std::string::npos) << Errors();
}

TEST_F(ScanProgram, SendsNoEscapeSequencesToADumbTerminal) {
    const Terminal terminal;
    ASSERT_TRUE(terminal.Works());
    terminalKind = "dumb";
    StartWithOutputTo(terminal.Name(), {"--camera", "none", "--stage-port", "none"});
    EXPECT_EQ(ExitStatus(), 4);
    const std::string written = terminal.Read();
    EXPECT_EQ(written.find('\x1b'), std::string::npos) << written;
    EXPECT_TRUE(written.starts_with("No camera detected\r\n")) << written;
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
