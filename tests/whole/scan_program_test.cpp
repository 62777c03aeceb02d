#include "scan_program_fixture.h"
#include "support/terminal.h"

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <csignal>

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
