#include "app/settings.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <string>

namespace tessaro {
namespace {

TEST(SettingsLine, FreshSettingsAreTheDefaults) {
    const Settings settings;
    EXPECT_EQ(settings.portNumber, 3);
    EXPECT_EQ(settings.targetContrast, (std::array<float, 3>{-12.0F, -8.0F, -2.0F}));
    EXPECT_EQ(settings.contrastTolerance, 6.0F);
    EXPECT_EQ(settings.xRange, 10);
    EXPECT_EQ(settings.yRange, 10);
    EXPECT_EQ(settings.minimumFlakeArea, 100);
    EXPECT_EQ(settings.material, 4);
    EXPECT_EQ(settings.scoreThreshold, 70.0F);
}

TEST(SettingsLine, IsReadWhole) {
    Settings settings;
    EXPECT_EQ(ReadSettingsLine("5,-13.500000,-9.250000,1.500000,7.000000,4,6,80,1,35.000000\n", settings),
              10);
    EXPECT_EQ(settings.portNumber, 5);
    EXPECT_EQ(settings.targetContrast, (std::array<float, 3>{-13.5F, -9.25F, 1.5F}));
    EXPECT_EQ(settings.contrastTolerance, 7.0F);
    EXPECT_EQ(settings.xRange, 4);
    EXPECT_EQ(settings.yRange, 6);
    EXPECT_EQ(settings.minimumFlakeArea, 80);
    EXPECT_EQ(settings.material, 1);
    EXPECT_EQ(settings.scoreThreshold, 35.0F);
}

TEST(SettingsLine, WithTwoFieldsLeavesTheOthersAtTheirDefaults) {
    Settings settings;
    EXPECT_EQ(ReadSettingsLine("5,-20.5\n", settings), 2);
    EXPECT_EQ(settings.portNumber, 5);
    EXPECT_EQ(settings.targetContrast, (std::array<float, 3>{-20.5F, -8.0F, -2.0F}));
    EXPECT_EQ(settings.scoreThreshold, 70.0F);
}

struct PartialLine {
    const char* text;
    int taken;
};

class PartialSettingsLine : public testing::TestWithParam<PartialLine> {};

TEST_P(PartialSettingsLine, IsReadUpToTheFirstFieldThatDoesNotParse) {
    Settings settings;
    EXPECT_EQ(ReadSettingsLine(GetParam().text, settings), GetParam().taken);
}

INSTANTIATE_TEST_SUITE_P(Lines, PartialSettingsLine,
                         testing::Values(PartialLine{"", 0}, PartialLine{"\n", 0}, PartialLine{"abc", 0},
                                         PartialLine{",1,2", 0}, PartialLine{"3", 1}, PartialLine{"3,", 1},
                                         PartialLine{"3.5,-12", 1}, PartialLine{"3 ,-12", 1},
                                         PartialLine{"3,x", 1}, PartialLine{" 3,\t-12,\n-8", 3},
                                         PartialLine{"+3,+1.5", 2}, PartialLine{"+-3", 0},
                                         PartialLine{"99999999999,1", 0}, PartialLine{"3,1e99,2", 1},
                                         PartialLine{"3;-12", 1}));

TEST(SettingsLine, ReadsBinaryAndHugeTextsWithoutHarm) {
    Settings settings;
    std::string binary("\0\xFF\x01,\0", 5);
    EXPECT_EQ(ReadSettingsLine(binary, settings), 0);
    EXPECT_EQ(ReadSettingsLine(std::string(1'000'000, '7'), settings), 0);
    EXPECT_EQ(ReadSettingsLine("4" + std::string(1'000'000, ' '), settings), 1);
    EXPECT_EQ(settings.portNumber, 4);
}

TEST(SettingsLine, TakesAPointAsTheDecimalSeparatorWhateverTheLocale) {
    const std::string before = std::setlocale(LC_ALL, nullptr);
    const bool commaLocale = std::setlocale(LC_ALL, "de_DE.UTF-8") != nullptr;
    Settings settings;
    EXPECT_EQ(ReadSettingsLine("5,-20.5,-8.25", settings), 3);
    EXPECT_EQ(settings.targetContrast[0], -20.5F);
    std::setlocale(LC_ALL, before.c_str());
    if (!commaLocale)
        GTEST_SKIP() << "no decimal-comma locale on this machine";
}

} // namespace
} // namespace tessaro
