#include "compare/report_file.h"
#include "compare/wafer_truth.h"

#include <gtest/gtest.h>

#include <string>
#include <variant>

namespace tessaro {
namespace {

const std::string fieldLine =
    R"({"scan":1,"field":2,"row":0,"column":1,"x":1000.000000,"y":600.625000,"z":3.125000,"noise":1.500000,)"
    R"("focus":9.000000,"bgPeak":[140.000000,141.000000,139.000000],"camera":true,"stage":true,"found":1,)"
    R"("images":["/there/a.jpg","/there/b.jpg"],"grains":[{"grain":4,"reducedPixels":60,"pixels":900,"left":200,)"
    R"("right":240,"minRow":300,"maxRow":330,"score":44.500000,"BG":20.000000,"single":true,)"
    R"("centre":[838.500000,520.250000]}],"problems":["the stage is offline"]})"
    "\n";
const std::string endLine = R"({"scan":1,"end":"completed","fields":2,"found":1,"images":2,"problems":[]})"
                            "\n";

ReportFile Read(const std::string& text) {
    auto read = ReadReportFile(text);
    EXPECT_TRUE(std::holds_alternative<ReportFile>(read)) << std::get<ReadingError>(read).reason;
    return std::get<ReportFile>(read);
}

std::string Refusal(const std::string& text) {
    const auto read = ReadReportFile(text);
    return std::holds_alternative<ReadingError>(read) ? std::get<ReadingError>(read).reason : "taken";
}

TEST(ReportFile, GivesFieldsAndEnds) {
    const ReportFile report = Read(fieldLine + endLine);
    ASSERT_EQ(report.fields.size(), 1U);
    const ReportedField& field = report.fields[0];
    EXPECT_EQ(field.scan, 1);
    EXPECT_EQ(field.field, 2);
    EXPECT_EQ(field.row, 0);
    EXPECT_EQ(field.column, 1);
    EXPECT_EQ(field.position, (Vertex{1000.0, 600.625}));
    EXPECT_EQ(field.found, 1);
    EXPECT_EQ(field.images, (std::vector<std::string>{"/there/a.jpg", "/there/b.jpg"}));
    EXPECT_EQ(field.problems, std::vector<std::string>{"the stage is offline"});
    ASSERT_EQ(field.grains.size(), 1U);
    EXPECT_EQ(field.grains[0].centre, (Vertex{838.5, 520.25}));
    EXPECT_EQ(field.grains[0].box, (PixelBox{200, 240, 300, 330}));
    EXPECT_EQ(field.grains[0].pixels, 900);
    EXPECT_EQ(field.grains[0].score, 44.5);
    EXPECT_TRUE(field.grains[0].single);
    ASSERT_EQ(report.ends.size(), 1U);
    EXPECT_EQ(report.ends[0].why, "completed");
    EXPECT_EQ(report.tornLines, 0);
}

TEST(ReportFile, LeavesOutALineThatBreaksOff) {
    for (const std::size_t length : {1U, 5U, 8U, 60U, 300U}) {
        const ReportFile report = Read(fieldLine + fieldLine.substr(0, length));
        EXPECT_EQ(report.fields.size(), 1U) << length;
        EXPECT_EQ(report.tornLines, 1) << length;
    }
    EXPECT_EQ(Read(fieldLine.substr(0, 100) + "\n" + endLine).tornLines, 1)
        << "a full disk that has room again";
}

TEST(ReportFile, TakesALastLineThatLacksNothingButItsEnd) {
    const ReportFile report = Read(fieldLine.substr(0, fieldLine.size() - 1));
    EXPECT_EQ(report.fields.size(), 1U);
    EXPECT_EQ(report.tornLines, 0);
}

TEST(ReportFile, IsEmptyWhereNothingWasWritten) {
    EXPECT_TRUE(Read("").fields.empty());
}

TEST(ReportFile, OfSomethingElseIsRefused) {
    EXPECT_EQ(Refusal("a shopping list\n"), "line 1: no line of a report");
    EXPECT_EQ(Refusal(endLine + "\n" + endLine), "line 2: no line of a report");
    EXPECT_EQ(Refusal("[1,2]\n"), "line 1: no line of a report");
    EXPECT_EQ(Refusal("{}\n"), "line 1: \"field\" is no number");
}

std::string Replaced(std::string text, const std::string& what, const std::string& with) {
    return text.replace(text.find(what), what.size(), with);
}

TEST(ReportFile, WithMembersOfAnotherKindIsRefused) {
    EXPECT_EQ(Refusal(Replaced(fieldLine, "\"row\":0", "\"row\":0.5")), "line 1: \"row\" is no whole number");
    EXPECT_EQ(Refusal(Replaced(fieldLine, "[838.500000,520.250000]", "[838.5]")),
              "line 1: \"centre\" is no place [x, y]");
    EXPECT_EQ(Refusal(endLine + Replaced(fieldLine, "\"single\":true", "\"single\":1")),
              "line 2: \"single\" is no true or false");
    EXPECT_EQ(Refusal(Replaced(fieldLine, "\"grains\":[{", "\"grain\":[{")), "line 1: \"grains\" is no list");
}

TEST(ReportFile, TakesAScoreThatIsNoNumberForNone) {
    EXPECT_EQ(Read(Replaced(fieldLine, "44.500000", "null")).fields[0].grains[0].score, 0.0);
}

TEST(WaferTruth, GivesTheFlakes) {
    const auto read = ReadWaferTruth(R"({"flakes":[
{"layers":1,"area":150.500,"centre":[10.000,20.000],"outline":[[0.000,0.000],[20.000,0.000],[10.000,60.000]]},
{"layers":100,"area":5.000,"centre":[1.000,2.000],"outline":[]}]}
)");
    ASSERT_TRUE(std::holds_alternative<std::vector<TrueFlake>>(read));
    const auto& flakes = std::get<std::vector<TrueFlake>>(read);
    ASSERT_EQ(flakes.size(), 2U);
    EXPECT_EQ(flakes[0].layers, 1);
    EXPECT_EQ(flakes[0].areaUm2, 150.5);
    EXPECT_EQ(flakes[0].centre, (Vertex{10.0, 20.0}));
    EXPECT_EQ(flakes[0].outline, (Outline{{0.0, 0.0}, {20.0, 0.0}, {10.0, 60.0}}));
    EXPECT_EQ(flakes[1].layers, 100);
}

TEST(WaferTruth, OfSomethingElseIsRefused) {
    const auto refusal = [](const std::string& text) {
        const auto read = ReadWaferTruth(text);
        return std::holds_alternative<ReadingError>(read) ? std::get<ReadingError>(read).reason : "taken";
    };
    EXPECT_EQ(refusal(""), "no JSON object");
    EXPECT_EQ(refusal("{}"), "\"flakes\" is no list");
    EXPECT_EQ(refusal(R"({"flakes":[{"layers":1,"area":"large"}]})"), "flake 1: \"area\" is no number");
}

} // namespace
} // namespace tessaro
