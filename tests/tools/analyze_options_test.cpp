#include "analyze/options.h"

#include <gtest/gtest.h>

namespace tessaro {
namespace {

/// Parses a command line; `wrong` is what the parser said.
struct Parsed {
    explicit Parsed(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), "tessaro-analyze");
        std::vector<char*> pointers;
        for (std::string& argument : arguments)
            pointers.push_back(argument.data());
        pointers.push_back(nullptr);
        wrong = ParseOptions(static_cast<int>(arguments.size()), pointers.data(), options);
    }

    AnalyzeOptions options;
    std::string wrong;
};

TEST(AnalyzeOptions, TakeEveryOption) {
    const Parsed parsed({"--target", "-13.5,-14,2e0", "--tolerance=7.5", "--min-area", "50", "--threshold",
                         "-3", "--settings", "Config.txt", "--balance", "--json", "-", "--save", "out",
                         "--jobs", "3", "a.jpg", "b.jpg"});
    EXPECT_EQ(parsed.wrong, "");
    EXPECT_EQ(parsed.options.target, (std::array<float, 3>{-13.5F, -14.0F, 2.0F}));
    EXPECT_EQ(parsed.options.tolerance, 7.5F);
    EXPECT_EQ(parsed.options.minimumArea, 50);
    EXPECT_EQ(parsed.options.threshold, -3.0F);
    EXPECT_EQ(parsed.options.settingsFile, "Config.txt");
    EXPECT_TRUE(parsed.options.balance);
    EXPECT_EQ(parsed.options.jsonFile, "-");
    EXPECT_EQ(parsed.options.saveFolder, "out");
    EXPECT_EQ(parsed.options.jobs, 3);
    EXPECT_EQ(parsed.options.pictures, (std::vector<std::string>{"a.jpg", "b.jpg"}));
}

TEST(AnalyzeOptions, MayFollowThePictures) {
    const Parsed parsed({"a.jpg", "--threshold", "30", "--", "--odd name.jpg"});
    EXPECT_EQ(parsed.wrong, "");
    EXPECT_EQ(parsed.options.threshold, 30.0F);
    EXPECT_EQ(parsed.options.pictures, (std::vector<std::string>{"a.jpg", "--odd name.jpg"}));
}

TEST(AnalyzeOptions, NeedAPicture) {
    EXPECT_EQ(Parsed({"--balance"}).wrong, "no picture given");
}

TEST(AnalyzeOptions, NeedNoPictureForHelpAndVersion) {
    EXPECT_EQ(Parsed({"--help"}).wrong, "");
    EXPECT_EQ(Parsed({"--version"}).wrong, "");
}

TEST(AnalyzeOptions, ReplaceOnlyTheSettingsThatAreGiven) {
    Settings settings;
    settings.contrastTolerance = 9.0F;
    ApplyOptions(Parsed({"--threshold", "30", "a"}).options, settings);
    EXPECT_EQ(settings.scoreThreshold, 30.0F);
    EXPECT_EQ(settings.contrastTolerance, 9.0F);
    EXPECT_EQ(settings.minimumFlakeArea, 100);
}

struct WrongUsage {
    std::vector<std::string> arguments;
    const char* text;
};

class WrongAnalyzeOptions : public testing::TestWithParam<WrongUsage> {};

TEST_P(WrongAnalyzeOptions, AreNamed) {
    std::vector<std::string> arguments = GetParam().arguments;
    EXPECT_EQ(Parsed(arguments).wrong, GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(
    Usages, WrongAnalyzeOptions,
    testing::Values(
        WrongUsage{{"--nonsense", "a"}, "unknown or unclear option '--nonsense'"},
        WrongUsage{{"a", "--json"}, "option '--json' needs a value"},
        WrongUsage{{"--target", "-12,-8", "a"},
                   "--target takes three contrasts in percent such as -12,-8,-2, not '-12,-8'"},
        WrongUsage{{"--target", "-12,-8,-2,1", "a"},
                   "--target takes three contrasts in percent such as -12,-8,-2, not '-12,-8,-2,1'"},
        WrongUsage{{"--target", "-12,,-2", "a"},
                   "--target takes three contrasts in percent such as -12,-8,-2, not '-12,,-2'"},
        WrongUsage{{"--target", "-12,nan,-2", "a"},
                   "--target takes three contrasts in percent such as -12,-8,-2, not '-12,nan,-2'"},
        WrongUsage{{"--tolerance", "-1", "a"},
                   "--tolerance takes a number of percentage points from 0 up, not '-1'"},
        WrongUsage{{"--tolerance", "6x", "a"},
                   "--tolerance takes a number of percentage points from 0 up, not '6x'"},
        WrongUsage{{"--min-area", "1.5", "a"},
                   "--min-area takes a whole number of square micrometres from 0 up, not '1.5'"},
        WrongUsage{{"--min-area", "99999999999", "a"},
                   "--min-area takes a whole number of square micrometres from 0 up, not '99999999999'"},
        WrongUsage{{"--threshold", "inf", "a"}, "--threshold takes a number of score points, not 'inf'"},
        WrongUsage{{"--threshold", "", "a"}, "--threshold takes a number of score points, not ''"},
        WrongUsage{{"--jobs", "0", "a"}, "--jobs takes a whole number from 1 to 256, not '0'"},
        WrongUsage{{"--jobs", "257", "a"}, "--jobs takes a whole number from 1 to 256, not '257'"},
        WrongUsage{{"-x", "a"}, "unknown or unclear option '-x'"},
        WrongUsage{{"--balance", "-xyz", "a"}, "unknown or unclear option '-x'"},
        WrongUsage{{"a", "-xyz"}, "unknown or unclear option '-x'"},
        WrongUsage{{"--balance", "-\xC3\xA9", "a"}, "unknown or unclear option '-\xC3'"},
        WrongUsage{{"--balance=3", "a"}, "unknown or unclear option '--balance=3'"}));

} // namespace
} // namespace tessaro
