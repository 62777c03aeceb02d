#include "app/program_options.h"

#include <gtest/gtest.h>

#include <vector>

namespace tessaro {
namespace {

using Arguments = std::vector<std::string_view>;

ProgramOptions Options(const Arguments& arguments) {
    const auto parsed = ParseProgramOptions(arguments);
    EXPECT_TRUE(std::holds_alternative<ProgramOptions>(parsed));
    return std::holds_alternative<ProgramOptions>(parsed) ? std::get<ProgramOptions>(parsed)
                                                          : ProgramOptions();
}

std::string Error(const Arguments& arguments) {
    const auto parsed = ParseProgramOptions(arguments);
    return std::holds_alternative<OptionError>(parsed) ? std::get<OptionError>(parsed).reason : "";
}

TEST(ProgramOptions, WithoutArgumentsAskForNothing) {
    const ProgramOptions options = Options({});
    EXPECT_FALSE(options.help);
    EXPECT_FALSE(options.version);
    EXPECT_EQ(options.camera, "");
    EXPECT_EQ(options.stagePort, "");
}

TEST(ProgramOptions, AskForHelpAndVersion) {
    EXPECT_TRUE(Options({"--help"}).help);
    EXPECT_TRUE(Options({"-h"}).help);
    EXPECT_TRUE(Options({"--version"}).version);
    EXPECT_FALSE(Options({"--version"}).help);
}

TEST(ProgramOptions, TakeAValueBehindTheOptionOrItsEqualsSign) {
    EXPECT_EQ(Options({"--camera", "none"}).camera, "none");
    EXPECT_EQ(Options({"--camera=none"}).camera, "none");
    EXPECT_EQ(Options({"--stage-port", "none"}).stagePort, "none");
    const ProgramOptions both = Options({"--stage-port=none", "--camera", "none", "--help"});
    EXPECT_EQ(both.camera, "none");
    EXPECT_EQ(both.stagePort, "none");
    EXPECT_TRUE(both.help);
}

TEST(ProgramOptions, TakeAnyIdentityOrAddressOfACamera) {
    EXPECT_EQ(Options({}).camera, "") << "the first one found";
    EXPECT_EQ(Options({"--camera", "127.0.0.1"}).camera, "127.0.0.1");
    EXPECT_EQ(Options({"--camera=Vendor-Model-123"}).camera, "Vendor-Model-123");
}

TEST(ProgramOptions, TakeAnyPathOfTheStage) {
    EXPECT_EQ(Options({}).stagePort, "") << "that of the number in the settings";
    EXPECT_EQ(Options({"--stage-port", "/dev/ttyUSB0"}).stagePort, "/dev/ttyUSB0");
    EXPECT_EQ(Options({"--stage-port=/dev/serial/by-id/a=b"}).stagePort, "/dev/serial/by-id/a=b");
}

TEST(ProgramOptions, ChooseTheCamerasRuntime) {
    EXPECT_EQ(Options({}).cameraRuntime, "");
    EXPECT_EQ(Options({"--camera-runtime", "pylon"}).cameraRuntime, "pylon");
    EXPECT_EQ(Options({"--camera-runtime=aravis"}).cameraRuntime, "aravis");
}

TEST(ProgramOptions, TakeAnyFileForTheFocusCurve) {
    EXPECT_EQ(Options({}).focusCurve, "") << "not wanted";
    EXPECT_EQ(Options({"--focus-curve", "curve.csv"}).focusCurve, "curve.csv");
    EXPECT_EQ(Options({"--focus-curve=/data/a=b.csv"}).focusCurve, "/data/a=b.csv");
    EXPECT_EQ(Error({"--focus-curve"}), "--focus-curve needs a value");
    EXPECT_EQ(Error({"--focus-curve="}), "--focus-curve needs a value");
}

TEST(ProgramOptions, TakeAnyFileForTheReport) {
    EXPECT_EQ(Options({}).report, "") << "not wanted";
    EXPECT_EQ(Options({"--report", "scan.jsonl"}).report, "scan.jsonl");
    EXPECT_EQ(Options({"--report=/data/a=b.jsonl"}).report, "/data/a=b.jsonl");
    EXPECT_EQ(Error({"--report"}), "--report needs a value");
    EXPECT_EQ(Error({"--report="}), "--report needs a value");
}

TEST(ProgramOptions, TakeAFocusSpeedThatTheStageHas) {
    EXPECT_EQ(Options({}).focusSpeed, std::nullopt) << "the usual one";
    EXPECT_EQ(Options({"--focus-speed", "1"}).focusSpeed, 1);
    EXPECT_EQ(Options({"--focus-speed=5000"}).focusSpeed, 5000);
}

TEST(ProgramOptions, RefuseAFocusSpeedThatTheStageDoesNotHave) {
    EXPECT_EQ(Error({"--focus-speed"}), "--focus-speed needs a value");
    for (const std::string_view value :
         {"0", "5001", "-100", "99999999999", "100.5", "100um", "fast", "", "1e3", " ", " 100"})
        EXPECT_EQ(Error({"--focus-speed", value}),
                  "--focus-speed: a whole number of um/s from 1 to 5000 is needed, not '" +
                      std::string(value) + "'");
}

TEST(ProgramOptions, AskForAScanWithTheSettingsAsTheyAre) {
    EXPECT_FALSE(Options({}).scan.has_value());
    const ProgramOptions options = Options({"--scan"});
    ASSERT_TRUE(options.scan.has_value());
    EXPECT_EQ(options.scan->xRange, std::nullopt);
    EXPECT_EQ(options.scan->yRange, std::nullopt);
    EXPECT_EQ(options.scan->originX, 0);
    EXPECT_EQ(options.scan->originY, 0);
    EXPECT_FALSE(options.scan->noTilt);
}

TEST(ProgramOptions, SayWhatToScanBeforeOrBehindTheScanItself) {
    const ProgramOptions before =
        Options({"--x-range", "2", "--y-range=0", "--origin", "-100,2147483647", "--no-tilt", "--scan"});
    const ProgramOptions behind =
        Options({"--scan", "--x-range=2", "--y-range", "0", "--origin=-100,2147483647", "--no-tilt"});
    for (const ProgramOptions& options : {before, behind}) {
        ASSERT_TRUE(options.scan.has_value());
        EXPECT_EQ(options.scan->xRange, 2);
        EXPECT_EQ(options.scan->yRange, 0);
        EXPECT_EQ(options.scan->originX, -100);
        EXPECT_EQ(options.scan->originY, 2147483647);
        EXPECT_TRUE(options.scan->noTilt);
    }
}

TEST(ProgramOptions, RefuseWhatToScanWithoutAScan) {
    EXPECT_EQ(Error({"--x-range", "2"}), "--x-range needs --scan");
    EXPECT_EQ(Error({"--y-range=2"}), "--y-range needs --scan");
    EXPECT_EQ(Error({"--origin", "0,0"}), "--origin needs --scan");
    EXPECT_EQ(Error({"--no-tilt"}), "--no-tilt needs --scan");
    EXPECT_EQ(Error({"--scan=yes"}), "unknown argument '--scan=yes'");
    EXPECT_EQ(Error({"--scan", "--no-tilt=1"}), "unknown argument '--no-tilt=1'");
}

TEST(ProgramOptions, RefuseRangesThatNoWaferHas) {
    EXPECT_EQ(Options({"--scan", "--x-range", "1000"}).scan->xRange, 1000);
    for (const std::string_view value : {"-1", "1001", "2.5", "2mm", "", "99999999999", " 2"}) {
        const std::string needed =
            ": a whole number of mm from 0 to 1000 is needed, not '" + std::string(value) + "'";
        EXPECT_EQ(Error({"--scan", "--x-range", value}), "--x-range" + needed);
        EXPECT_EQ(Error({"--scan", "--y-range", value}), "--y-range" + needed);
    }
}

TEST(ProgramOptions, RefuseOriginsThatAreNoPlace) {
    for (const std::string_view value : {"", "100", "100,", ",100", "1,2,3", "1.5,2", "1;2", "a,b",
                                         "1,2147483648", "1,2um", "1, 2", " 1,2", "1 ,2", "1,2 ", "1,\t2"})
        EXPECT_EQ(Error({"--scan", "--origin", value}),
                  "--origin: X,Y in whole um is needed, not '" + std::string(value) + "'");
}

TEST(ProgramOptions, SayWhichOptionNeedsAValue) {
    EXPECT_EQ(Error({"--camera"}), "--camera needs a value");
    EXPECT_EQ(Error({"--help", "--stage-port"}), "--stage-port needs a value");
}

TEST(ProgramOptions, RefuseValuesThatNobodyKnows) {
    EXPECT_EQ(Error({"--camera="}), "--camera needs a value");
    EXPECT_EQ(Error({"--camera-runtime", "usb"}),
              "--camera-runtime: only 'pylon' and 'aravis' are known, not 'usb'");
    EXPECT_EQ(Error({"--stage-port="}), "--stage-port needs a value");
}

TEST(ProgramOptions, RefuseArgumentsThatNobodyKnows) {
    EXPECT_EQ(Error({"image.png"}), "unknown argument 'image.png'");
    EXPECT_EQ(Error({"--cam", "none"}), "unknown argument '--cam'");
    EXPECT_EQ(Error({"--help=yes"}), "unknown argument '--help=yes'");
    EXPECT_EQ(Error({""}), "unknown argument ''");
    EXPECT_EQ(Error({"--help", "-x"}), "unknown argument '-x'");
}

TEST(ProgramHelp, NamesEveryOption) {
    for (const std::string_view option :
         {"--camera ", "--camera-runtime", "--stage-port", "--focus-curve FILE", "--focus-speed UM_PER_S",
          "--scan ", "--x-range MM", "--y-range MM", "--origin X,Y", "--no-tilt", "--help", "--version"})
        EXPECT_NE(ProgramHelp().find(option), std::string_view::npos) << option;
}

} // namespace
} // namespace tessaro
