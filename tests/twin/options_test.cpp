#include "twin/options.h"

#include <gtest/gtest.h>

#include <array>
#include <initializer_list>

namespace tessaro {
namespace {

std::variant<TwinOptions, TwinOptionError> Parsed(std::initializer_list<std::string_view> arguments) {
    const std::vector<std::string_view> words(arguments);
    return ParseTwinOptions(words);
}

TwinOptions Accepted(std::initializer_list<std::string_view> arguments) {
    const auto parsed = Parsed(arguments);
    if (const TwinOptionError* const error = std::get_if<TwinOptionError>(&parsed))
        ADD_FAILURE() << error->reason;
    return std::holds_alternative<TwinOptions>(parsed) ? std::get<TwinOptions>(parsed) : TwinOptions();
}

std::string Reason(std::initializer_list<std::string_view> arguments) {
    const auto parsed = Parsed(arguments);
    const TwinOptionError* const error = std::get_if<TwinOptionError>(&parsed);
    return error != nullptr ? error->reason : "accepted";
}

TEST(TwinOptions, AreOfASmallWaferOfGrapheneUnlessToldOtherwise) {
    const TwinOptions options = Accepted({});
    EXPECT_EQ(options.wafer.seed, 1U);
    EXPECT_EQ(options.wafer.sideMm, 4.0);
    EXPECT_EQ(options.wafer.material, Material::graphene);
    EXPECT_EQ(options.wafer.substrate, Substrate::sio2);
    EXPECT_FALSE(options.at.has_value());
    EXPECT_EQ(options.cameraAddress, "127.0.0.1");
    EXPECT_EQ(options.serialNumber, "TWIN01");
    EXPECT_TRUE(options.faults.empty());
    EXPECT_FALSE(options.quiet);
    EXPECT_EQ(options.stageLink, "");
    EXPECT_EQ(options.stageLog, "");
    EXPECT_FALSE(options.limits.has_value());
    EXPECT_EQ(options.timeFactor, 1.0);
    EXPECT_EQ(options.progressAxes, (ProgressAxes{true, true, false}));
}

TEST(TwinOptions, AllAreTaken) {
    const TwinOptions options = Accepted({"--seed",
                                          "18446744073709551615",
                                          "--wafer-mm=2.5",
                                          "--density",
                                          "100",
                                          "--material",
                                          "hbn",
                                          "--substrate",
                                          "glass",
                                          "--tilt",
                                          "-0.001,0.002",
                                          "--focus-z",
                                          "-30.5",
                                          "--at",
                                          "-1,2.5,3",
                                          "--truth",
                                          "t.json",
                                          "--render",
                                          "r.PNG",
                                          "--camera-address",
                                          "127.0.0.2",
                                          "--serial-number",
                                          "A B",
                                          "--fault",
                                          "camera-gone",
                                          "--fault=lost-packets=0.5",
                                          "--control",
                                          "/c",
                                          "--stage-link",
                                          "/l",
                                          "--stage-log=/s",
                                          "--limits",
                                          "-1:2,-3:4.5,-5:6",
                                          "--time-factor",
                                          "2.5",
                                          "--progress",
                                          "ZX",
                                          "--quiet"});
    EXPECT_EQ(options.wafer.seed, 18446744073709551615U);
    EXPECT_EQ(options.wafer.sideMm, 2.5);
    EXPECT_EQ(options.wafer.flakesPerMm2, 100.0);
    EXPECT_EQ(options.wafer.material, Material::hbn);
    EXPECT_EQ(options.wafer.substrate, Substrate::glass);
    EXPECT_EQ(options.wafer.tiltUmPerUm, (Vertex{-0.001, 0.002}));
    EXPECT_EQ(options.wafer.focusZUm, -30.5);
    EXPECT_EQ(options.at, (StagePosition{-1.0, 2.5, 3.0}));
    EXPECT_EQ(options.truthFile, "t.json");
    EXPECT_EQ(options.renderFile, "r.PNG");
    EXPECT_EQ(options.cameraAddress, "127.0.0.2");
    EXPECT_EQ(options.serialNumber, "A B");
    ASSERT_EQ(options.faults.size(), 2U);
    EXPECT_EQ(options.faults[0].kind, FaultKind::CameraGone);
    EXPECT_EQ(options.faults[1].kind, FaultKind::LostPackets);
    EXPECT_EQ(options.faults[1].share, 0.5);
    EXPECT_EQ(options.controlSocket, "/c");
    EXPECT_EQ(options.stageLink, "/l");
    EXPECT_EQ(options.stageLog, "/s");
    ASSERT_TRUE(options.limits.has_value());
    EXPECT_EQ(options.limits->low, (StagePosition{-1.0, -3.0, -5.0}));
    EXPECT_EQ(options.limits->high, (StagePosition{2.0, 4.5, 6.0}));
    EXPECT_EQ(options.timeFactor, 2.5);
    EXPECT_EQ(options.progressAxes, (ProgressAxes{true, false, true}));
    EXPECT_TRUE(options.quiet);
    EXPECT_EQ(Accepted({"--material", "tmdc"}).wafer.material, Material::tmdc);
    EXPECT_EQ(Accepted({"--progress=none"}).progressAxes, ProgressAxes());
    EXPECT_EQ(Accepted({"--substrate", "sapphire"}).wafer.substrate, Substrate::sapphire);
    EXPECT_TRUE(Accepted({"--help"}).help);
    EXPECT_TRUE(Accepted({"--version"}).version);
}

TEST(TwinOptions, RefuseWhatIsNoValue) {
    EXPECT_EQ(Reason({"--seed", "-1"}), "'-1' is no value for --seed");
    EXPECT_EQ(Reason({"--seed", "1x"}), "'1x' is no value for --seed");
    EXPECT_EQ(Reason({"--wafer-mm", "0.01"}), "'0.01' is no value for --wafer-mm");
    EXPECT_EQ(Reason({"--wafer-mm", "nan"}), "'nan' is no value for --wafer-mm");
    EXPECT_EQ(Reason({"--density", "1001"}), "'1001' is no value for --density");
    EXPECT_EQ(Reason({"--camera-address="}), "'' is no value for --camera-address");
    EXPECT_EQ(Reason({"--material", "gold"}), "'gold' is no value for --material");
    EXPECT_EQ(Reason({"--substrate", ""}), "'' is no value for --substrate");
    EXPECT_EQ(Reason({"--tilt", "0.1"}), "'0.1' is no value for --tilt");
    EXPECT_EQ(Reason({"--tilt", "0.1,2"}), "'0.1,2' is no value for --tilt");
    EXPECT_EQ(Reason({"--focus-z", "inf"}), "'inf' is no value for --focus-z");
    EXPECT_EQ(Reason({"--at", "1,2"}), "'1,2' is no value for --at");
    EXPECT_EQ(Reason({"--at", "1,2,3,4"}), "'1,2,3,4' is no value for --at");
    EXPECT_EQ(Reason({"--at", "1,,3"}), "'1,,3' is no value for --at");
    EXPECT_EQ(Reason({"--fault", "=3"}),
              "there is no fault '', only camera-gone, lost-packets, frame-size, endless-automatic, "
              "stage-silent, stage-no-arrival, stage-garbled, stage-pieces, stage-late, stage-other-axis, "
              "stage-junk, stage-impossible, stage-gone");
    EXPECT_EQ(Reason({"--render", "a.png", "--fault", "lost-packets=2"}), "'2' is no value for this fault");
    EXPECT_EQ(Accepted({"--serial-number", "123456789012345"}).serialNumber, "123456789012345");
    EXPECT_EQ(Reason({"--serial-number", "1234567890123456"}),
              "'1234567890123456' is no value for --serial-number");
    for (const char* limits : {"0:1", "0:1,0:1", "0:1,0:1,0:1,0:1", "1:0,0:1,0:1", "0:0.6,0:1,0:1", "0,1,2",
                               "a:1,0:1,0:1", "::,,", ",,", "0:2000000,0:1,0:1", "0:1,0:1,nan:1"})
        EXPECT_EQ(Reason({"--limits", limits}), "'" + std::string(limits) + "' is no value for --limits");
    for (const char* factor : {"0", "0.009", "1001", "-1", "fast", "nan"})
        EXPECT_EQ(Reason({"--time-factor", factor}),
                  "'" + std::string(factor) + "' is no value for --time-factor");
    for (const char* axes : {"", "XX", "XYZX", "xy", "X,Y", "Xnone", "noneZ", "None", "1", " X"})
        EXPECT_EQ(Reason({"--progress", axes}), "'" + std::string(axes) + "' is no value for --progress");
    EXPECT_EQ(Reason({"--stage-link="}), "'' is no value for --stage-link");
    EXPECT_EQ(Reason({"--stage-log="}), "'' is no value for --stage-log");
    EXPECT_EQ(Reason({"--truth="}), "'' is no value for --truth");
}

TEST(TwinOptions, RefuseWhatTheyDoNotKnow) {
    EXPECT_EQ(Reason({"--colour", "red"}), "there is no option '--colour'");
    EXPECT_EQ(Reason({"picture.png"}), "there is no option 'picture.png'");
    EXPECT_EQ(Reason({"--quiet=1"}), "there is no option '--quiet=1'");
    EXPECT_EQ(Reason({""}), "there is no option ''");
    EXPECT_EQ(Reason({"--seed"}), "--seed needs a value");
}

TEST(TwinOptions, RefuseWhatDoesNotGoTogether) {
    EXPECT_EQ(Reason({"--wafer-mm", "100", "--density", "101"}),
              "a wafer of this size and density has more than 1000000 flakes");
    EXPECT_EQ(Accepted({"--camera-address", "none", "--fault", "stage-silent"}).cameraAddress, "");
    EXPECT_EQ(Reason({"--render", "a.bmp"}), "'a.bmp' is no name of a .png or .jpg picture");
    EXPECT_EQ(Reason({"--render", "a.png", "--truth", "a.png"}), "--render and --truth need different files");
    EXPECT_EQ(Reason({"--camera-address", "none", "--fault", "endless-automatic"}),
              "--fault: there is no camera");
    EXPECT_EQ(Reason({"--at", "0,0,31", "--limits", "-9:9,-9:9,-30:30"}), "--at lies beyond --limits");
}

TEST(TwinOptions, HelpNamesEveryOption) {
    for (const std::string_view name : {"--seed",
                                        "--wafer-mm",
                                        "--density",
                                        "--material",
                                        "--substrate",
                                        "--tilt",
                                        "--focus-z",
                                        "--at",
                                        "--truth",
                                        "--render",
                                        "--camera-address",
                                        "--serial-number",
                                        "--fault",
                                        "--control",
                                        "--quiet",
                                        "--help",
                                        "--version",
                                        "camera-gone",
                                        "--stage-link",
                                        "--stage-log",
                                        "--limits",
                                        "--time-factor",
                                        "--progress",
                                        "stage-silent",
                                        "stage-no-arrival",
                                        "stage-garbled",
                                        "stage-pieces[",
                                        "stage-late[",
                                        "stage-other-axis",
                                        "stage-junk",
                                        "stage-impossible",
                                        "stage-gone",
                                        "where",
                                        "lost-packets[",
                                        "frame-size[",
                                        "endless-automatic",
                                        "move X,Y,Z",
                                        "clear NAME",
                                        "quit"})
        EXPECT_NE(TwinHelp().find(name), std::string_view::npos) << name;
}

TEST(TwinOptions, TheStageStandsInTheMiddleAndInFocusUnlessToldOtherwise) {
    TwinOptions options =
        Accepted({"--wafer-mm", "2", "--tilt", "0.01,0", "--focus-z", "5", "--density", "0"});
    const Wafer wafer(options.wafer);
    EXPECT_EQ(StartPosition(options, wafer), (StagePosition{1000.0, 1000.0, 15.0}));
    options.at = StagePosition{1.0, 2.0, 3.0};
    EXPECT_EQ(StartPosition(options, wafer), (StagePosition{1.0, 2.0, 3.0}));
    options.at.reset();
    options.limits = StageLimits{{0.0, 1200.0, -10.0}, {900.0, 2000.0, 10.0}};
    EXPECT_EQ(StartPosition(options, wafer), (StagePosition{900.0, 1200.0, 10.0})) << "as near as it can";
}

TEST(TwinOptions, PicturesAreToldApartByTheirSuffix) {
    EXPECT_EQ(PictureType("a.b.png"), "image/png");
    EXPECT_EQ(PictureType("a.JPG"), "image/jpeg");
    EXPECT_EQ(PictureType("a.jpeg"), "image/jpeg");
    EXPECT_FALSE(PictureType("png").has_value());
    EXPECT_FALSE(PictureType("a.").has_value());
    EXPECT_FALSE(PictureType("").has_value());
}

} // namespace
} // namespace tessaro
