#include "analyze/report_json.h"
#include "analyze/report_table.h"

#include <gtest/gtest.h>

#include <limits>

namespace tessaro {
namespace {

PictureReport SampleReport() {
    PictureReport report;
    report.file = "field.jpg";
    report.pictureWidth = 2464;
    report.pictureHeight = 2056;
    report.noise = 1.25F;
    report.bgPeak = {100, 101, 102};
    report.candidates = 60;
    report.live = 55;
    report.groups = 3;
    report.kept = 2;
    report.grains = {
        {.grain = 1,
         .reducedPixels = 50,
         .pixels = 800,
         .left = 199,
         .right = 241,
         .minRow = 199,
         .maxRow = 241,
         .score = 45.5F,
         .subScores = {.BG = 20, .EgSp = 30, .HST = 6.5F, .Cont = 1, .Size = 8, .PR = -20, .DfNx = 9},
         .single = true}};
    report.found = 1;
    return report;
}

TEST(ReportJson, HoldsEveryKeyInOrderOnOneLine) {
    EXPECT_EQ(
        ReportJson(SampleReport()),
        R"({"file":"field.jpg","noise":1.250000,"bgPeak":[100.000000,101.000000,102.000000],)"
        R"("candidates":60,"live":55,"groups":3,"kept":2,"grains":[{"grain":1,"reducedPixels":50,"pixels":800,)"
        R"("left":199,"right":241,"minRow":199,"maxRow":241,"score":45.500000,"BG":20.000000,"Cont":1.000000,)"
        R"("Size":8.000000,"EgSp":30.000000,"PR":-20.000000,"HST":6.500000,"DfNx":9.000000,"single":true}],)"
        R"("found":1,"overflow":false})");
}

TEST(ReportJson, OfAPictureWithoutGrainsHasAnEmptyList) {
    PictureReport report = SampleReport();
    report.grains.clear();
    report.overflow = true;
    const std::string json = ReportJson(report);
    EXPECT_NE(json.find(R"("grains":[],)"), std::string::npos);
    EXPECT_NE(json.find(R"("overflow":true})"), std::string::npos);
}

TEST(ReportJson, WritesNumbersThatAreNotFiniteAsNull) {
    PictureReport report = SampleReport();
    report.grains[0].score = std::numeric_limits<float>::quiet_NaN();
    report.grains[0].subScores.BG = -std::numeric_limits<float>::infinity();
    const std::string json = ReportJson(report);
    EXPECT_NE(json.find(R"("score":null,"BG":null,)"), std::string::npos);
}

struct FileName {
    const char* file;
    const char* json;
};

class JsonFileName : public testing::TestWithParam<FileName> {};

TEST_P(JsonFileName, IsValidJsonText) {
    PictureReport report;
    report.file = GetParam().file;
    const std::string start = std::string(R"({"file":")") + GetParam().json + R"(",)";
    EXPECT_EQ(ReportJson(report).substr(0, start.size()), start);
}

INSTANTIATE_TEST_SUITE_P(Names, JsonFileName,
                         testing::Values(FileName{"a\"b\\c.jpg", R"(a\"b\\c.jpg)"},
                                         FileName{"line\nfeed\t\x01", R"(line\u000afeed\u0009\u0001)"},
                                         FileName{"한글.jpg", "한글.jpg"},
                                         FileName{"\xF0\x9F\x94\xAC", "\xF0\x9F\x94\xAC"},
                                         FileName{"caf\xE9.jpg", R"(caf\ufffd.jpg)"},
                                         FileName{"\xC0\xAF", R"(\ufffd\ufffd)"},
                                         FileName{"\xED\xA0\x80", R"(\ufffd\ufffd\ufffd)"},
                                         FileName{"\xE2\x82", R"(\ufffd\ufffd)"}));

TEST(ReportText, SaysWhatWasFoundAndWhereInThePicture) {
    // The middle of 199 .. 241 is 220, of a picture of twice the size 440; rows count from the top there.
    EXPECT_EQ(ReportText(SampleReport()), "field.jpg: 1 single layer among 1 grain, best score 45.5; 60 "
                                          "candidate pixels, noise 1.2, background "
                                          "R 100 G 101 B 102\n"
                                          "    single layer at x 440, y 1616: score 45.5\n");
}

TEST(ReportText, TellsTheAreaInAPictureOfTheFramesSizeOnly) {
    PictureReport report = SampleReport();
    report.pictureWidth = 1232;
    report.pictureHeight = 1028;
    // 800 frame pixels are 50 reduced ones of 2.56 um2.
    EXPECT_NE(ReportText(report).find(" at x 220, y 808: score 45.5, about 128 um2\n"), std::string::npos);
    report.pictureHeight = 1029;
    EXPECT_EQ(ReportText(report).find("um2"), std::string::npos);
    report.pictureHeight = 1028;
    report.pictureWidth = 1231;
    EXPECT_EQ(ReportText(report).find("um2"), std::string::npos);
}

TEST(ReportText, HasALineForEachGrainBelowTheThresholdToo) {
    PictureReport report = SampleReport();
    GrainReport grain = report.grains[0];
    grain.left = 399;
    grain.right = 441;
    grain.score = 12;
    grain.single = false;
    report.grains.push_back(grain);
    grain.score = std::numeric_limits<float>::quiet_NaN();
    report.grains.push_back(grain);
    EXPECT_NE(ReportText(report).find("    single layer at x 440, y 1616: score 45.5\n"
                                      "    grain at x 840, y 1616: score 12.0\n"
                                      "    grain at x 840, y 1616: no score\n"),
              std::string::npos);
}

TEST(ReportText, SaysWhenGrainsWereLeftOut) {
    PictureReport report;
    report.overflow = true;
    EXPECT_NE(ReportText(report).find("too many grains"), std::string::npos);
}

TEST(SummaryText, CountsPicturesFailuresAndFlakes) {
    EXPECT_EQ(SummaryText({.analysed = 3, .found = 2}), "2 single layers in 3 pictures\n");
    EXPECT_EQ(SummaryText({.analysed = 1, .failed = 1, .found = 1}),
              "1 single layer in 1 picture; 1 picture could not be analysed\n");
    EXPECT_EQ(SummaryText({.analysed = 5, .failed = 2, .unsaved = 1}),
              "0 single layers in 5 pictures; 2 pictures could not be analysed; 1 annotated picture could "
              "not be saved\n");
    EXPECT_EQ(SummaryText({.analysed = 5, .unsaved = 2}),
              "0 single layers in 5 pictures; 2 annotated pictures could not be saved\n");
}

} // namespace
} // namespace tessaro
