#include "compare/comparison_table.h"
#include "compare/scan_comparison.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace tessaro {
namespace {

// A frame is 1232 x 1028 pixels, 2.464 of them a um, without the 100 columns on either side and the 4 rows
// below and above: 209.416 um to either side of where the stage stood, and 206.981 um down and up.

TrueFlake Square(Vertex centre, double sideUm, int layers = 1) {
    const double half = sideUm / 2.0;
    return {layers,
            sideUm * sideUm,
            centre,
            {{centre.x - half, centre.y - half},
             {centre.x + half, centre.y - half},
             {centre.x + half, centre.y + half},
             {centre.x - half, centre.y + half}}};
}

/// A grain as wide and high as that, in the middle of its box; the field puts it into the frame.
ReportedGrain Grain(Vertex centre, double widthUm, double heightUm, double score = 45.0, bool single = true) {
    const int width = static_cast<int>(std::lround(widthUm * 2.464));
    const int height = static_cast<int>(std::lround(heightUm * 2.464));
    return {centre, {0, width - 1, 0, height - 1}, width * height, score, single};
}

/// The box as wide and high as it is, its middle at a place on the wafer.
void PutBox(ReportedGrain& grain, Vertex middle, Vertex fieldPosition) {
    const auto move = [](int& first, int& last, double to) {
        const int size = last - first + 1;
        first = static_cast<int>(std::lround(to - size / 2.0));
        last = first + size - 1;
    };
    move(grain.box.left, grain.box.right, 616.0 + (middle.x - fieldPosition.x) * 2.464);
    move(grain.box.minRow, grain.box.maxRow, 514.0 + (middle.y - fieldPosition.y) * 2.464);
}

ReportedField Field(Vertex position, const std::vector<ReportedGrain>& grains = {}) {
    ReportedField field;
    field.position = position;
    field.grains = grains;
    for (ReportedGrain& grain : field.grains)
        PutBox(grain, grain.centre, position);
    return field;
}

TEST(WhollyAnalysed, IsWhatLiesWithinTheMarginsOfTheFrame) {
    const auto reaches = [](double x, double y) {
        return IsWhollyAnalysed({{1000.0, 2000.0}, {1000.0 + x, 2000.0 + y}, {1001.0, 2000.0}},
                                {1000.0, 2000.0});
    };
    EXPECT_TRUE(reaches(209.41, 0.0));
    EXPECT_FALSE(reaches(209.42, 0.0));
    EXPECT_TRUE(reaches(-209.41, 0.0));
    EXPECT_FALSE(reaches(-209.42, 0.0));
    EXPECT_TRUE(reaches(0.0, 206.98));
    EXPECT_FALSE(reaches(0.0, 206.99));
    EXPECT_TRUE(reaches(0.0, -206.98));
    EXPECT_FALSE(reaches(0.0, -206.99));
}

TEST(ScanComparison, FindsASingleLayerWhereAGrainOfOneIsReported) {
    const ScanComparison comparison =
        CompareScan({Field({1000, 1000}, {Grain({1051, 1000}, 20, 20)})}, {Square({1050, 1000}, 20)});
    EXPECT_EQ(comparison.fields, 1);
    ASSERT_EQ(comparison.wanted.size(), 1U);
    EXPECT_EQ(comparison.Found(), 1);
    ASSERT_EQ(comparison.reported.size(), 1U);
    EXPECT_TRUE(comparison.reported[0].IsRight());
    EXPECT_EQ(comparison.Wrong(), 0);
}

TEST(ScanComparison, CountsAFlakeOnceThatTwoFieldsShow) {
    // Both fields show it wholly: one ends at 1209.4, the other begins at 1190.6.
    const std::vector<ReportedField> fields = {Field({1000, 1000}, {Grain({1200, 1000}, 16, 16, 40.0)}),
                                               Field({1400, 1000}, {Grain({1200.6, 999.5}, 16, 16, 44.0)})};
    const ScanComparison comparison = CompareScan(fields, {Square({1200, 1000}, 16)});
    ASSERT_EQ(comparison.wanted.size(), 1U);
    EXPECT_EQ(comparison.wanted[0].fields, 2);
    EXPECT_EQ(comparison.wanted[0].bestScore, 44.0);
    EXPECT_EQ(comparison.Found(), 1);
    ASSERT_EQ(comparison.reported.size(), 1U);
    EXPECT_EQ(comparison.reported[0].grains, 2);
    EXPECT_EQ(comparison.reported[0].bestScore, 44.0);
    EXPECT_EQ(comparison.reported[0].centre, (Vertex{1200.6, 999.5}));
    EXPECT_EQ(comparison.Again(), 0);
}

TEST(ScanComparison, CountsAFlakeOnceThatAFieldCuts) {
    // 1185 to 1205: the second field begins at 1190.6 and shows the right part, 14.4 um of it.
    const std::vector<ReportedField> fields = {Field({1000, 1000}, {Grain({1195, 1000}, 20, 20)}),
                                               Field({1400, 1000}, {Grain({1197.8, 1000}, 14.4, 20)})};
    const ScanComparison comparison = CompareScan(fields, {Square({1195, 1000}, 20)});
    ASSERT_EQ(comparison.wanted.size(), 1U);
    EXPECT_EQ(comparison.wanted[0].fields, 1);
    EXPECT_EQ(comparison.reported.size(), 1U);
}

TEST(ScanComparison, CountsAFlakeOnceWhoseMeanIsNotTheMiddleOfItsBox) {
    // A wedge from 1180 to 1210, thick on the left: the mean of its pixels is 1190. The other field shows its
    // tip, 1200 to 1210, which lies in the box, but more than half of its width and 3 um from the mean.
    std::vector<ReportedField> fields = {Field({1000, 1000}, {Grain({1190, 1000}, 30, 20)}),
                                         Field({1410, 1000}, {Grain({1209, 1000}, 2, 4)})};
    PutBox(fields[0].grains[0], {1195, 1000}, {1000, 1000});
    EXPECT_EQ(CompareScan(fields, {}).reported.size(), 1U);
    fields[1].grains[0].centre = {1213.5, 1000}; // the box ends at 1210
    EXPECT_EQ(CompareScan(fields, {}).reported.size(), 2U);
}

TEST(ScanComparison, KeepsGrainsOfOneFieldApartUnlessTheyLieOnOneFlake) {
    // A small grain in the box of a large one, as between the arms of a flake.
    const std::vector<ReportedField> fields = {
        Field({1000, 1000}, {Grain({1000, 1000}, 40, 40), Grain({1015, 1015}, 6, 6)})};
    EXPECT_EQ(CompareScan(fields, {}).reported.size(), 2U);
    EXPECT_EQ(CompareScan(fields, {Square({1000, 1000}, 20), Square({1016, 1016}, 4)}).reported.size(), 2U);
    EXPECT_EQ(CompareScan(fields, {Square({1000, 1000}, 40)}).reported.size(), 1U);
}

TEST(ScanComparison, KeepsFlakesApartThatLieSideBySide) {
    const std::vector<ReportedField> fields = {
        Field({1000, 1000}, {Grain({1000, 1000}, 20, 20), Grain({1027, 1000}, 20, 20)})};
    const ScanComparison comparison =
        CompareScan(fields, {Square({1000, 1000}, 20), Square({1027, 1000}, 20)});
    EXPECT_EQ(comparison.Found(), 2);
    EXPECT_EQ(comparison.reported.size(), 2U);
    EXPECT_EQ(comparison.Again(), 0);
}

TEST(ScanComparison, TellsWhenOneFlakeIsReportedAsTwo) {
    // Two parts of one flake, 12 um apart.
    const std::vector<ReportedField> fields = {
        Field({1000, 1000}, {Grain({990, 1000}, 8, 20), Grain({1010, 1000}, 8, 20)})};
    const ScanComparison comparison = CompareScan(fields, {Square({1000, 1000}, 30)});
    EXPECT_EQ(comparison.Found(), 1);
    EXPECT_EQ(comparison.reported.size(), 2U);
    EXPECT_EQ(comparison.Again(), 1);
    EXPECT_EQ(comparison.Wrong(), 0);
}

TEST(ScanComparison, MissesAFlakeWhoseGrainScoresTooLittle) {
    const ScanComparison comparison = CompareScan(
        {Field({1000, 1000}, {Grain({1000, 1000}, 20, 20, 31.5, false)})}, {Square({1000, 1000}, 20)});
    ASSERT_EQ(comparison.wanted.size(), 1U);
    EXPECT_EQ(comparison.Found(), 0);
    EXPECT_EQ(comparison.wanted[0].grains, 1);
    EXPECT_EQ(comparison.wanted[0].bestScore, 31.5);
    EXPECT_TRUE(comparison.reported.empty());
}

TEST(ScanComparison, TakesAnythingButASingleLayerForWrong) {
    const std::vector<ReportedField> fields = {
        Field({1000, 1000}, {Grain({1000, 1000}, 20, 20), Grain({1100, 1000}, 20, 20)})};
    const ScanComparison comparison = CompareScan(fields, {Square({1000, 1000}, 20, 2)});
    EXPECT_TRUE(comparison.wanted.empty());
    ASSERT_EQ(comparison.reported.size(), 2U);
    EXPECT_EQ(comparison.Wrong(), 2);
    EXPECT_EQ(comparison.reported[0].truth, std::size_t{0});
    EXPECT_EQ(comparison.reported[0].layers, 2);
    EXPECT_EQ(comparison.reported[1].truth, std::nullopt);
}

TEST(ScanComparison, TakesASmallSingleLayerForRightAndDoesNotAskForIt) {
    const std::vector<TrueFlake> flakes = {Square({1000, 1000}, 12)}; // 144 um^2
    const ScanComparison comparison =
        CompareScan({Field({1000, 1000}, {Grain({1000, 1000}, 12, 12)})}, flakes);
    EXPECT_TRUE(comparison.wanted.empty());
    EXPECT_EQ(comparison.reported.size(), 1U);
    EXPECT_EQ(comparison.Wrong(), 0);
    EXPECT_EQ(CompareScan({Field({1000, 1000})}, flakes, {.minimumAreaUm2 = 144.0}).wanted.size(), 1U);
}

TEST(ScanComparison, AsksForNoFlakeThatEveryFieldCuts) {
    // 1199.6 to 1219.6: the first field ends at 1209.4.
    const ScanComparison comparison =
        CompareScan({Field({1000, 1000}, {Grain({1204.5, 1000}, 9.8, 20)})}, {Square({1209.6, 1000}, 20)});
    EXPECT_TRUE(comparison.wanted.empty());
    EXPECT_EQ(comparison.Wrong(), 0);
}

TEST(ScanComparison, AllowsAGrainToLieBesideItsFlakeByTheTolerance) {
    const auto wrongAt = [](double x, double toleranceUm) {
        return CompareScan({Field({1000, 1000}, {Grain({x, 1000}, 20, 20)})}, {Square({1000, 1000}, 20)},
                           {.toleranceUm = toleranceUm})
            .Wrong();
    };
    EXPECT_EQ(wrongAt(1012.9, 3.0), 0);
    EXPECT_EQ(wrongAt(1013.1, 3.0), 1);
    EXPECT_EQ(wrongAt(1012.9, 2.0), 1);
}

TEST(ScanComparison, OfNothingIsNothing) {
    const ScanComparison comparison = CompareScan({}, {});
    EXPECT_EQ(comparison.fields, 0);
    EXPECT_EQ(comparison.Found(), 0);
    EXPECT_EQ(comparison.Wrong(), 0);
}

TEST(ComparisonTable, GivesTheFiguresAndTheirShares) {
    const std::vector<TrueFlake> flakes = {Square({950, 1000}, 20), Square({1050, 1000}, 20),
                                           Square({1000, 900}, 20, 3), Square({900, 900}, 10)};
    ReportFile report;
    report.fields = {
        Field({1000, 1000}, {Grain({950, 1000}, 20, 20), Grain({1050, 1000}, 20, 20, 30.0, false),
                             Grain({1000, 900}, 20, 20), Grain({1000, 1100}, 20, 20),
                             Grain({900, 1100}, 20, 20), Grain({900, 900}, 10, 10)})};
    report.ends = {{1, "completed"}};
    const ScanComparison comparison = CompareScan(report.fields, flakes);
    EXPECT_EQ(ComparisonTable(report, comparison, {}),
              "fields scanned                                     1\n"
              "single layers of 150 um^2 or more in the area      2\n"
              "  found                                            1   50.0 %\n"
              "  missed                                           1   50.0 %\n"
              "reported as single layers, each counted once       5\n"
              "  right, of 150 um^2 or more                       1   20.0 %\n"
              "  right, smaller or cut by the border              1   20.0 %\n"
              "  anything else                                    3   60.0 %\n"
              "  one flake reported as several                    0\n"
              "scan 1 ended: completed\n");
    const std::string list = ComparisonList(comparison);
    EXPECT_NE(list.find("missed    1050.0   1000.0     400 um^2  in 1 fields: best score there 30.00\n"),
              std::string::npos)
        << list;
    EXPECT_NE(list.find("score 45.00: 3 layers there\n"), std::string::npos) << list;
    EXPECT_NE(list.find("score 45.00: no flake there\n"), std::string::npos) << list;
}

TEST(ComparisonTable, TellsOfAScanThatBrokeOff) {
    ReportFile report;
    report.tornLines = 1;
    const std::string table = ComparisonTable(report, {}, {});
    EXPECT_NE(table.find("no scan has come to an end\n"), std::string::npos);
    EXPECT_NE(table.find("lines that break off, left out: 1\n"), std::string::npos);
    EXPECT_EQ(table.find('%'), std::string::npos) << "shares of nothing";
    EXPECT_EQ(ComparisonList({}), "");
}

} // namespace
} // namespace tessaro
