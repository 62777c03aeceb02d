#include "app/settings_file.h"
#include "platform/fake/memory_folders.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>

namespace tessaro {
namespace {

constexpr const char* defaultLine = "3,-12.000000,-8.000000,-2.000000,6.000000,10,10,100,4,70.000000\n";

bool SameBits(float a, float b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}

void ExpectDefaults(const Settings& settings) {
    EXPECT_EQ(SettingsLine(settings), defaultLine);
}

class SettingsFile : public testing::Test {
protected:
    SettingsFile() { folders.folders.insert(folder); }

    Settings ReadBack() {
        Settings settings;
        ReadSettingsFile(folders, file, settings);
        return settings;
    }

    MemoryFolders folders;
    const std::filesystem::path folder = "/desktop/Image_Data";
    const std::filesystem::path file = folder / "Config.txt";
};

TEST_F(SettingsFile, HoldsTheDefaultsAsOneLineOfSixDecimals) {
    EXPECT_TRUE(WriteSettingsFile(folders, file, Settings()));
    EXPECT_EQ(folders.Text(file), defaultLine);
}

TEST_F(SettingsFile, KeepsTheOrderOfTheTenFields) {
    Settings settings;
    settings.portNumber = 1;
    settings.targetContrast = {2.0F, 3.5F, -4.25F};
    settings.contrastTolerance = 5.0F;
    settings.xRange = 6;
    settings.yRange = 7;
    settings.minimumFlakeArea = -8;
    settings.material = 9;
    settings.scoreThreshold = 10.125F;
    EXPECT_EQ(SettingsLine(settings), "1,2.000000,3.500000,-4.250000,5.000000,6,7,-8,9,10.125000\n");
}

TEST_F(SettingsFile, WritesTheLargestAndTheOddestNumbersAsPrintfWould) {
    Settings settings;
    settings.portNumber = std::numeric_limits<std::int32_t>::min();
    settings.targetContrast = {std::numeric_limits<float>::max(), -0.0F, 1e-7F};
    settings.contrastTolerance = std::numeric_limits<float>::infinity();
    settings.scoreThreshold = -std::numeric_limits<float>::infinity();
    EXPECT_EQ(SettingsLine(settings), "-2147483648,340282346638528859811704183484516925440.000000,-0.000000,"
                                      "0.000000,inf,10,10,100,4,-inf\n");
    EXPECT_TRUE(WriteSettingsFile(folders, file, settings));
    const Settings read = ReadBack();
    EXPECT_TRUE(SameBits(read.targetContrast[0], std::numeric_limits<float>::max()));
    EXPECT_TRUE(SameBits(read.targetContrast[1], -0.0F));
    EXPECT_EQ(read.contrastTolerance, std::numeric_limits<float>::infinity());
    EXPECT_EQ(read.scoreThreshold, -std::numeric_limits<float>::infinity());
    EXPECT_EQ(read.portNumber, std::numeric_limits<std::int32_t>::min());
}

TEST_F(SettingsFile, TakesAContrastThatIsNoNumberBack) {
    Settings settings;
    settings.targetContrast[1] = std::numeric_limits<float>::quiet_NaN();
    WriteSettingsFile(folders, file, settings);
    const Settings read = ReadBack();
    EXPECT_TRUE(std::isnan(read.targetContrast[1]));
    EXPECT_EQ(read.scoreThreshold, 70.0F) << "the fields behind it are read";
}

// Above 16 neighbouring floats lie further apart than six decimals.
TEST_F(SettingsFile, GivesEveryLargeFloatBackBitForBit) {
    std::mt19937 random(1);
    for (int i = 0; i < 2000; ++i) {
        const auto exponent = static_cast<std::uint32_t>(131 + random() % 124); // 16 up to the largest
        const auto bits = static_cast<std::uint32_t>((random() & 0x807FFFFFU) | exponent << 23U);
        Settings settings;
        std::memcpy(&settings.targetContrast[2], &bits, sizeof bits);
        ASSERT_TRUE(WriteSettingsFile(folders, file, settings));
        ASSERT_TRUE(SameBits(ReadBack().targetContrast[2], settings.targetContrast[2])) << std::hex << bits;
    }
}

TEST_F(SettingsFile, GivesEveryTypedNumberOfSixDecimalsBackBitForBit) {
    std::mt19937 random(2);
    for (int i = 0; i < 2000; ++i) {
        const auto millionths = static_cast<std::int32_t>(random() % 200'000'001U) - 100'000'000;
        Settings settings;
        settings.scoreThreshold = static_cast<float>(millionths / 1e6);
        ASSERT_TRUE(WriteSettingsFile(folders, file, settings));
        ASSERT_TRUE(SameBits(ReadBack().scoreThreshold, settings.scoreThreshold)) << millionths;
    }
}

TEST_F(SettingsFile, LeavesTheSettingsAloneWhenItIsMissingOrCannotBeRead) {
    ExpectDefaults(ReadBack());
    folders.Put(file, "5,-20.5\n");
    folders.unreadable.insert(file);
    ExpectDefaults(ReadBack());
}

TEST_F(SettingsFile, LeavesTheSettingsAloneWhenItIsEmptyOrBinary) {
    folders.Put(file, "");
    ExpectDefaults(ReadBack());
    folders.Put(file, std::string_view("\0\x01\xFF\xFE,3", 6));
    ExpectDefaults(ReadBack());
}

TEST_F(SettingsFile, CutShortGivesTheFieldsThatAreThere) {
    folders.Put(file, "5,-20.5\n");
    Settings expected;
    expected.portNumber = 5;
    expected.targetContrast[0] = -20.5F;
    EXPECT_EQ(SettingsLine(ReadBack()), SettingsLine(expected));
    folders.Put(file, "5,-20.5,");
    EXPECT_EQ(SettingsLine(ReadBack()), SettingsLine(expected));
}

TEST_F(SettingsFile, CutShortKeepsWhatTheSettingsWereAndNotTheDefaults) {
    folders.Put(file, "5");
    Settings settings;
    settings.scoreThreshold = 12.0F;
    ReadSettingsFile(folders, file, settings);
    EXPECT_EQ(settings.portNumber, 5);
    EXPECT_EQ(settings.scoreThreshold, 12.0F);
}

TEST_F(SettingsFile, OfAnySizeIsReadWithoutHarm) {
    folders.Put(file, "6," + std::string(8'000'000, '9'));
    EXPECT_EQ(ReadBack().portNumber, 6);
    EXPECT_EQ(ReadBack().targetContrast[0], -12.0F);
    folders.Put(file, std::string(8'000'000, ' ') + "6");
    EXPECT_EQ(ReadBack().portNumber, 3) << "nobody looks so far";
}

TEST_F(SettingsFile, IgnoresWhatFollowsTheTenFields) {
    std::string line = defaultLine;
    line.replace(0, 1, "9");
    folders.Put(file, line + "second line,1,2\n");
    EXPECT_EQ(SettingsLine(ReadBack()), line);
}

TEST_F(SettingsFile, ThatCannotBeWrittenStaysAsItWas) {
    folders.Put(file, "5,-20.5\n");
    folders.failWriting = true;
    EXPECT_FALSE(WriteSettingsFile(folders, file, Settings()));
    EXPECT_EQ(folders.Text(file), "5,-20.5\n");
}

TEST_F(SettingsFile, IsNotWrittenWithoutItsFolder) {
    folders.folders.clear();
    EXPECT_FALSE(WriteSettingsFile(folders, file, Settings()));
    EXPECT_TRUE(folders.files.empty());
}

TEST_F(SettingsFile, ReplacesALongerOne) {
    folders.Put(file, std::string(1000, 'x'));
    EXPECT_TRUE(WriteSettingsFile(folders, file, Settings()));
    EXPECT_EQ(folders.Text(file), defaultLine);
}

TEST_F(SettingsFile, HasPointsForDecimalsWhateverTheLocale) {
    const std::string before = std::setlocale(LC_ALL, nullptr);
    const bool commaLocale = std::setlocale(LC_ALL, "de_DE.UTF-8") != nullptr;
    EXPECT_EQ(SettingsLine(Settings()), defaultLine);
    std::setlocale(LC_ALL, before.c_str());
    if (!commaLocale)
        GTEST_SKIP() << "no decimal-comma locale on this machine";
}

} // namespace
} // namespace tessaro
