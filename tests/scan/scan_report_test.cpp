#include "scan/scan_report.h"

#include <gtest/gtest.h>

#include <clocale>
#include <locale>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace tessaro {
namespace {

using Texts = std::vector<std::string>;

class ScanReportTest : public testing::Test {
protected:
    ScanReportTest() {
        stage.offline = 0;
        Answer(6);
        grains = std::make_unique<GrainTable>();
    }

    Texts Lines() const {
        Texts all;
        std::istringstream text(out.str());
        for (std::string line; std::getline(text, line);)
            all.push_back(line);
        return all;
    }
    std::string LastLine() const { return Lines().empty() ? "" : Lines().back(); }
    bool Says(const std::string& part) const { return LastLine().find(part) != std::string::npos; }

    void Field(std::int32_t row = 0, std::int32_t column = 0) {
        report.FieldBegins();
        report.FieldFinished({row, column, {1000.0, 2000.0, -30.5}});
    }

    /// With so many bytes, to the last question where it is.
    void Answer(std::uint32_t bytes) {
        stage.lastResult = 1;
        stage.bytesTransferred = bytes;
    }

    /// Ten pixels of which nine have x 862 and one has 861, seven have y 390 and three 391: the middle of
    /// them all is (861.9 + 0.5, 390.3 + 0.5) = (616 + 246.4, 514 - 123.2).
    void PutGrain(std::size_t g, bool single) {
        Grain& grain = grains->grains[g];
        grain.count = 10;
        for (std::size_t i = 0; i < 10; ++i)
            grain.pixels[i] = {static_cast<std::int16_t>(i == 4 ? 861 : 862),
                               static_cast<std::int16_t>(i < 7 ? 390 : 391)};
        findings->groupCount = static_cast<std::int32_t>(g) + 1;
        findings->reducedPixels[g] = 50;
        findings->edges.EdgeLeft[g] = {861, 390};
        findings->edges.EdgeRight[g] = {862, 390};
        findings->edges.EdgeMinRow[g] = {862, 390};
        findings->edges.EdgeMaxRow[g] = {862, 391};
        findings->scores[g] = 45.5F;
        findings->subScores[g] = {
            .BG = 20, .EgSp = 30, .HST = 6.5F, .Cont = 1, .Size = 8, .PR = -20, .DfNx = 9};
        findings->singleLayer[g] = single ? 1 : 0;
    }

    /// Dark on the left half and 100 on the right one: the deviation is 50. Of the cells, those within five
    /// columns of the edge differ from a neighbour at five cells, by 100: the score is 100 / 100, and the
    /// focus value 1 x 300 / 50.
    void ShowAnEdge() {
        for (int channel = 0; channel < channelCount; ++channel)
            for (int column = reducedWidth / 2; column < reducedWidth; ++column)
                for (int row = 0; row < reducedHeight; ++row)
                    measured->reduced.Set(channel, column, row, 100.0F);
    }

    StageLink stage;
    std::unique_ptr<CameraSession> camera = std::make_unique<CameraSession>();
    FrameRecord frame;
    std::unique_ptr<FrameMeasurements> measured = std::make_unique<FrameMeasurements>();
    std::unique_ptr<GrainFindings> findings = std::make_unique<GrainFindings>();
    std::unique_ptr<GrainTable> grains;
    std::ostringstream out;
    ReportLines lines{out};
    ScanReport report{{stage, *camera, frame, *measured, *findings, grains}, lines};
};

TEST_F(ScanReportTest, HasALineForEachFieldWithEveryKeyInOrder) {
    measured->noiseLevel = 1.25F;
    ShowAnEdge();
    frame.bgPeak = {100, 101, 102};
    PutGrain(1, true);
    report.ScanBegins();
    report.FieldBegins();
    report.ImageSaved("/d/(100,200).jpg");
    report.ImageSaved("/e/(100,200)detail.jpg");
    report.FieldFinished({3, 7, {1000.0, 2000.0, -30.5}});
    EXPECT_EQ(
        out.str(),
        R"({"scan":1,"field":1,"row":3,"column":7,"x":1000.000000,"y":2000.000000,"z":-30.500000,)"
        R"("noise":1.250000,"focus":6.000000,"bgPeak":[100.000000,101.000000,102.000000],"camera":true,)"
        R"("stage":true,"found":1,"images":["/d/(100,200).jpg","/e/(100,200)detail.jpg"],)"
        R"("grains":[{"grain":1,"reducedPixels":50,"pixels":10,)"
        R"("left":861,"right":862,"minRow":390,"maxRow":391,"score":45.500000,"BG":20.000000,"Cont":1.000000,)"
        R"("Size":8.000000,"EgSp":30.000000,"PR":-20.000000,"HST":6.500000,"DfNx":9.000000,"single":true,)"
        R"("centre":[1100.000000,1950.000000]}],"problems":[]})"
        "\n")
        << "right of the middle is +X and below it -Y: 246.4 and 123.2 pixels are 100 um and 50 um";
}

TEST_F(ScanReportTest, EndsAScanWithItsTotals) {
    report.ScanBegins();
    PutGrain(0, true);
    PutGrain(1, true);
    report.FieldBegins();
    report.ImageSaved("/d/a.jpg");
    report.FieldFinished({0, 0, {}});
    EXPECT_TRUE(Says(R"("found":2,)"));
    PutGrain(1, false);
    Field(0, 1);
    EXPECT_TRUE(Says(R"("field":2,)"));
    EXPECT_TRUE(Says(R"("found":1,"images":[],)")) << "of this field alone";
    report.ScanEnds(ScanEnd::Completed);
    EXPECT_EQ(LastLine(), R"({"scan":1,"end":"completed","fields":2,"found":3,"images":1,"problems":[]})");
}

struct EndCase {
    ScanEnd why;
    const char* text;
};

class EndOfAScan : public ScanReportTest, public testing::WithParamInterface<EndCase> {};

TEST_P(EndOfAScan, IsTold) {
    report.ScanBegins();
    report.ScanEnds(GetParam().why);
    EXPECT_EQ(out.str(), std::string(R"({"scan":1,"end":")") + GetParam().text +
                             R"(","fields":0,"found":0,"images":0,"problems":[]})" + "\n");
}

INSTANTIATE_TEST_SUITE_P(Each, EndOfAScan,
                         testing::Values(EndCase{ScanEnd::Completed, "completed"},
                                         EndCase{ScanEnd::Stopped, "stopped"},
                                         EndCase{ScanEnd::FocusFailed, "focusing failed"},
                                         EndCase{ScanEnd::Interrupted, "interrupted"}));

TEST_F(ScanReportTest, TellsAScanThatDidNotBeginAndWhy) {
    report.WarningComes("Error in  opening serial port");
    report.ScanNotBegun({"no camera gives images", "no stage answers"});
    EXPECT_EQ(out.str(), R"({"scan":1,"end":"not begun","fields":0,"found":0,"images":0,)"
                         R"("problems":["Error in  opening serial port","no camera gives images",)"
                         R"("no stage answers"]})"
                         "\n");
}

TEST_F(ScanReportTest, CountsScansAndBeginsEachWithFieldOne) {
    report.ScanBegins();
    Field();
    Field(0, 1);
    report.ScanEnds(ScanEnd::Completed);
    report.ScanBegins();
    Field();
    EXPECT_TRUE(Says(R"({"scan":2,"field":1,)"));
    report.ScanEnds(ScanEnd::Stopped);
    EXPECT_TRUE(Says(R"({"scan":2,"end":"stopped","fields":1,)"));
}

TEST_F(ScanReportTest, TellsAScanInsideAnotherFromIt) {
    report.ScanBegins();
    Field();
    report.ScanBegins();
    Field();
    Field(0, 1);
    EXPECT_TRUE(Says(R"({"scan":2,"field":2,)"));
    report.ScanEnds(ScanEnd::Completed);
    EXPECT_TRUE(Says(R"({"scan":2,"end":"completed","fields":2,)"));
    report.ScanEnds(ScanEnd::Interrupted);
    EXPECT_TRUE(Says(R"({"scan":1,"end":"interrupted","fields":1,)"));
}

TEST_F(ScanReportTest, KeepsToTheImagesOfTheField) {
    report.ImageSaved("/d/before any scan.jpg");
    report.ScanBegins();
    Field();
    report.ImageSaved("/d/by hand on the way.jpg");
    report.FieldBegins();
    report.ImageSaved("/d/of the field.jpg");
    report.FieldFinished({0, 1, {}});
    EXPECT_TRUE(Says(R"("images":["/d/of the field.jpg"])"));
    report.ScanEnds(ScanEnd::Completed);
    EXPECT_TRUE(Says(R"("images":1,)"));
}

TEST_F(ScanReportTest, TellsWhatWentWrongSinceTheLineBefore) {
    report.WarningComes("Error in  opening serial port");
    report.ScanBegins();
    report.FieldBegins();
    report.ImageSaved("/d/a.jpg");
    report.ImageNotSaved("/e/adetail.jpg", "No space left on device");
    report.FieldFinished({0, 0, {}});
    EXPECT_TRUE(Says(R"("images":["/d/a.jpg"])"));
    EXPECT_TRUE(
        Says(R"("problems":["Error in  opening serial port","/e/adetail.jpg: No space left on device"]})"));
    Field();
    EXPECT_TRUE(Says(R"("problems":[]})"));
    report.QuestionAnswered("Do you want to stop, now ?", false);
    report.QuestionAnswered("Do you want to stop, now ?", true);
    report.ScanEnds(ScanEnd::Stopped);
    EXPECT_TRUE(Says(R"("problems":["Do you want to stop, now ? No","Do you want to stop, now ? Yes"]})"));
}

TEST_F(ScanReportTest, TellsACameraThatGoesOnceEachTimeItGoes) {
    const char* lost = R"("problems":["no image from the camera: a test pattern stands in"]})";
    report.ScanBegins();
    camera->patternStandsIn = 1;
    Field();
    EXPECT_TRUE(Says(R"("camera":false,"stage":true,)"));
    EXPECT_TRUE(Says(lost));
    Field();
    EXPECT_TRUE(Says(R"("camera":false,)"));
    EXPECT_TRUE(Says(R"("problems":[]})"));
    camera->patternStandsIn = 0;
    Field();
    EXPECT_TRUE(Says(R"("camera":true,)"));
    camera->patternStandsIn = 1;
    Field();
    EXPECT_TRUE(Says(lost));
}

TEST_F(ScanReportTest, TellsAStageThatGoesOfflineAlsoOnTheWayBack) {
    report.ScanBegins();
    Field();
    EXPECT_TRUE(Says(R"("stage":true,)"));
    stage.offline = 1;
    report.ScanEnds(ScanEnd::Completed);
    EXPECT_TRUE(Says(R"("problems":["the stage is offline: its moves are simulated"]})"));
    report.ScanBegins();
    Field();
    EXPECT_TRUE(Says(R"("camera":true,"stage":false,)"));
    EXPECT_TRUE(Says(R"("problems":[]})"));
}

TEST_F(ScanReportTest, TellsAStageThatDoesNotAnswerOnceEachTimeItFallsSilent) {
    const std::string problem = R"("problems":["the stage does not answer: it may stand elsewhere"]})";
    report.ScanBegins();
    Field();
    EXPECT_TRUE(Says(R"("problems":[]})")) << LastLine();
    Answer(0);
    Field();
    EXPECT_TRUE(Says(problem)) << LastLine();
    EXPECT_TRUE(Says(R"("stage":true)")) << "its line is there";
    Field();
    EXPECT_TRUE(Says(R"("problems":[]})")) << LastLine();
    Answer(2);
    Field();
    stage.lastResult = 0; // the read failed
    report.ScanEnds(ScanEnd::Completed);
    EXPECT_TRUE(Says(problem)) << LastLine();
}

TEST_F(ScanReportTest, DoesNotExpectAnswersOfAStageThatIsOffline) {
    Answer(0);
    stage.offline = 1;
    report.ScanBegins();
    Field();
    EXPECT_TRUE(Says(R"("problems":["the stage is offline: its moves are simulated"]})")) << LastLine();
}

TEST_F(ScanReportTest, LeavesOutProblemsBeyondAHundredAndSaysHowMany) {
    report.ScanBegins();
    for (int i = 1; i <= 103; ++i)
        report.WarningComes("w" + std::to_string(i));
    Field();
    EXPECT_TRUE(Says(R"("w99","w100","and 3 more"]})"));
    Field();
    EXPECT_TRUE(Says(R"("problems":[]})"));
}

TEST_F(ScanReportTest, TellsTheProblemsOfALineThatWasLostInTheNextThatIsNot) {
    std::streambuf* const whole = static_cast<std::ostream&>(out).rdbuf();
    class Refusing : public std::streambuf {
    } refusing;
    report.ScanBegins();
    static_cast<std::ostream&>(out).rdbuf(&refusing);
    testing::internal::CaptureStderr();
    report.WarningComes("first");
    Field();
    Field();
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "tessaro: a line of the report cannot be written\n");
    static_cast<std::ostream&>(out).rdbuf(whole);
    report.WarningComes("second");
    Field();
    EXPECT_EQ(Lines().size(), 1U);
    EXPECT_TRUE(Says(R"({"scan":1,"field":3,)"));
    EXPECT_TRUE(
        Says(R"("problems":["first","the line of field 1 of scan 1 could not be written","second"]})"));
    report.ScanEnds(ScanEnd::Completed);
    EXPECT_TRUE(Says(R"("fields":3,)"));
    EXPECT_TRUE(Says(R"("problems":[]})"));
    EXPECT_EQ(lines.Missing(), 2);
}

TEST_F(ScanReportTest, GivesAFieldThatCouldNotBeAnalysedNoGrains) {
    findings->groupCount = 2;
    grains.reset(); // there was no memory for it
    report.ScanBegins();
    Field();
    EXPECT_TRUE(Says(R"("found":0,"images":[],"grains":[],)"));
}

TEST_F(ScanReportTest, GivesAFrameInWhichNothingDiffersAFocusThatIsANumber) {
    report.ScanBegins();
    Field(); // 0.0001 x 10
    EXPECT_TRUE(Says(R"("focus":0.001000,)"));
}

TEST_F(ScanReportTest, MakesAPathAbsoluteAndItsTextValid) {
    report.ScanBegins();
    report.FieldBegins();
    report.ImageSaved("caf\xE9 \"1\".jpg");
    report.FieldFinished({});
    EXPECT_TRUE(Says(R"("images":["/)")) << LastLine();
    EXPECT_TRUE(Says(R"(/caf\ufffd \"1\".jpg"],)"));
}

TEST_F(ScanReportTest, WritesNumbersWithPointsWhateverTheLocale) {
    class Commas : public std::numpunct<char> {
        char do_decimal_point() const override { return ','; }
        char do_thousands_sep() const override { return '.'; }
        std::string do_grouping() const override { return "\3"; }
    };
    const std::locale before = std::locale::global(std::locale(std::locale(), new Commas));
    out.imbue(std::locale());
    report.ScanBegins();
    Field();
    std::locale::global(before);
    EXPECT_TRUE(Says(R"("x":1000.000000,"y":2000.000000,"z":-30.500000,)"));
}

} // namespace
} // namespace tessaro
