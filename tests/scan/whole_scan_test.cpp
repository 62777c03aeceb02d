#include "support/scan_fixture.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

namespace tessaro {
namespace {

constexpr int columns = 25;
constexpr int rows = 26; // one more than fit into the area
constexpr int fields = 650;
constexpr int counted = 625; // columns times the rows that fit

/// What a scan of 10 mm by 10 mm from (1000, -3000) has to do, written down step by step in whole numbers.
/// The plane is 25 um + dx / 128 - dy / 256, and Z stands at 10 um before.
struct PlainScan {
    PlainScan() {
        for (int row = 0; row < rows; ++row)
            AddRow(row);
        commands.insert(commands.end(), {"m1600", "M-4800"});
        information.emplace_back("Scanning has completed.");
    }

    std::vector<std::string> commands = {"s3200", "S3200", "L56", "m1600", "M-4800"};
    std::vector<ScannedField> scanned;
    std::vector<std::string> information = {"scanning..."};

private:
    void AddRow(int row) {
        const bool there = row % 2 == 0;
        for (int i = 0; i < columns; ++i) {
            const int column = there ? i : columns - 1 - i;
            AddField(row, column);
            if (i < columns - 1)
                AddStep(row, there ? column + 1 : column - 1);
        }
        if (!there)
            commands.emplace_back("m1600");
        commands.push_back("M" + std::to_string(-4800 + 640 * (row + 1)));
    }

    void AddField(int row, int column) {
        scanned.push_back({row, column, {1000.0 + 400 * column, -3000.0 + 400 * row, zSteps * 5 / 8.0}});
        const float minutes = static_cast<float>(counted - steps) / 80.0F;
        information.push_back(Formatted("%d%% finished, %.1f minute left", steps * 100 / counted,
                                        static_cast<double>(minutes)));
    }

    void AddStep(int row, int column) {
        commands.push_back("m" + std::to_string(1600 + 640 * column));
        const int z = (25 * 256 + 800 * column - 400 * row) / 256;
        if (z * 8 != zSteps * 5) {
            zSteps = z * 8 / 5;
            commands.push_back("L" + std::to_string(zSteps));
        }
        ++steps;
    }

    int steps = 0;
    int zSteps = 56; // 35 um
};

class WholeScan : public ScanFixture {
protected:
    WholeScan() {
        arriving.tellsXY = true;
        settings.xRange = 10;
        settings.yRange = 10;
        scan.originX = 1000;
        scan.originY = -3000;
        scan.zOrigin = 25;
        focus.xTilt = 1.0F / 128.0F;
        focus.yTilt = -1.0F / 256.0F;
        focus.tiltMeasured = 1;
        StandAt(0.0, 0.0, 10.0);
    }

    const PlainScan plain;
};

TEST_F(WholeScan, SendsEveryMoveAsTheRasterAndThePlaneDemand) {
    scanRun.RunScan();
    const Texts sent = arriving.Commands();
    ASSERT_EQ(sent.size(), plain.commands.size());
    for (std::size_t i = 0; i < sent.size(); ++i)
        ASSERT_EQ(sent[i], plain.commands[i]) << "command " << i;
    EXPECT_EQ(Progress().back().substr(0, 10), "arrived : ") << "back at the origin";
}

TEST_F(WholeScan, SendsTheFirstMovesThatWereWorkedOutByHand) {
    scanRun.RunScan();
    const Texts sent = arriving.Commands();
    EXPECT_EQ(Texts(sent.begin(), sent.begin() + 11),
              (Texts{"s3200", "S3200", "L56", "m1600", "M-4800", // 10 um + 25 um; the origin
                     "m2240", "L44",                             // 28.125 um: 28
                     "m2880", "L49",                             // 31.25 um: 31
                     "m3520", "L54"}));                          // 34.375 um: 34
    EXPECT_EQ(Texts(sent.end() - 6, sent.end()),
              (Texts{"m1600", "L-22", // 25 um - 39.0625 um: -14, toward zero
                     "m1600", "M11840", "m1600", "M-4800"}));
}

TEST_F(WholeScan, TakesAllFieldsInTheirPlacesThereAndBack) {
    scanRun.RunScan();
    ASSERT_EQ(told.fields.size(), fields);
    for (std::size_t i = 0; i < told.fields.size(); ++i) {
        ASSERT_EQ(told.fields[i].row, plain.scanned[i].row) << "field " << i;
        ASSERT_EQ(told.fields[i].column, plain.scanned[i].column) << "field " << i;
        ASSERT_EQ(told.fields[i].position, plain.scanned[i].position) << "field " << i;
    }
    EXPECT_EQ(told.fields.back().position[0], 1000.0);
    EXPECT_EQ(told.fields.back().position[1], 7000.0);
    EXPECT_EQ(told.begun, 1);
    EXPECT_EQ(told.ends, std::vector{ScanEnd::Completed});
}

TEST_F(WholeScan, CountsStepsAndNotFields) {
    scanRun.RunScan();
    EXPECT_EQ(Information(), plain.information);
    ASSERT_EQ(Information().size(), fields + 2);
    EXPECT_EQ(Information()[1], "0% finished, 7.8 minute left");
    EXPECT_EQ(Information()[fields], "99% finished, 0.0 minute left");
}

TEST_F(WholeScan, WorksTheMinutesOutInSinglePrecision) {
    scanRun.RunScan();
    // 613 steps are done at the 14th field of the 26th row. 12 / 80 is just below 0.15 in double precision.
    EXPECT_EQ(Information()[1 + 25 * 25 + 13], "98% finished, 0.2 minute left");
}

TEST_F(WholeScan, WaitsTenMillisecondsAndAFifthOfASecondBehindEachStep) {
    stage.hComm = SerialHandle::Invalid; // simulated: its ways take no time
    stage.offline = 1;
    const std::uint64_t start = ui.clock.now;
    scanRun.RunScan();
    EXPECT_EQ(told.fields.size(), fields);
    EXPECT_EQ(ui.clock.now - start, 130'010U) << "24 steps and one to the next row, 26 times";
}

TEST_F(WholeScan, DoesTheSameWithEachField) {
    scanRun.RunScan();
    const Texts each = {"grab 4", "statistics", "show", "find", "reject noise", "group", "decide"};
    ASSERT_EQ(field.calls.size(), fields * each.size());
    for (std::size_t i = 0; i < field.calls.size(); ++i)
        ASSERT_EQ(field.calls[i], each[i % each.size()]) << "call " << i;
    EXPECT_TRUE(view.calls.empty()) << "nobody focuses";
}

} // namespace
} // namespace tessaro
