#include "platform/picture.h"
#include "platform/qt/qt_picture_files.h"
#include "support/background_program.h"
#include "support/program.h"
#include "support/temporary_folder.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

namespace tessaro {
namespace {

const std::string truth = R"({"flakes":[
{"layers":1,"area":400.0,"centre":[1000.0,1000.0],"outline":[[990.0,990.0],[1010.0,990.0],[1010.0,1010.0],[990.0,1010.0]]}]}
)";

class CompareProgram : public testing::Test {
protected:
    std::string Write(const std::string& name, const std::string& text) const {
        return folder.Write(name, {text.begin(), text.end()});
    }

    /// One field with a single layer where the wafer has one, and this list of images.
    std::string WriteReport(const std::string& images, const std::string& behind = {}) const {
        return Write(
            "report.jsonl",
            R"({"scan":1,"field":1,"row":0,"column":0,"x":1000.0,"y":1000.0,"found":1,"images":)" + images +
                R"(,"grains":[{"pixels":2400,"left":590,"right":640,"minRow":490,"maxRow":540,"score":44.0,)"
                R"("single":true,"centre":[1000.0,1000.0]}]})"
                "\n" +
                behind);
    }

    static ProgramRun Run(const std::vector<std::string>& arguments) {
        return RunProgram(TESSARO_COMPARE, arguments);
    }

    TemporaryFolder folder;
};

TEST_F(CompareProgram, PrintsTheTableOfAScanThatBrokeOff) {
    const ProgramRun run = Run({WriteReport("[]", R"({"scan":1,"fie)"), Write("truth.json", truth)});
    EXPECT_EQ(run.exitStatus, 0);
    EXPECT_NE(run.output.find("  found                                            1  100.0 %\n"),
              std::string::npos)
        << run.output;
    EXPECT_NE(run.output.find("lines that break off, left out: 1\n"), std::string::npos) << run.output;
    EXPECT_EQ(run.errors, "");
}

TEST_F(CompareProgram, RefusesFilesThatItCannotCompare) {
    const std::string report = WriteReport("[]");
    const std::string list = Write("list.txt", "bread, milk\n");
    EXPECT_EQ(Run({list, Write("truth.json", truth)}).errors,
              "tessaro-compare: '" + list + "' is no report of a scan: line 1: no line of a report\n");
    EXPECT_EQ(Run({report, list}).errors,
              "tessaro-compare: '" + list + "' is no truth of a wafer: no JSON object\n");
    EXPECT_EQ(Run({report, "/nowhere/truth.json"}).errors,
              "tessaro-compare: cannot read '/nowhere/truth.json'\n");
    EXPECT_EQ(Run({report, list}).exitStatus, 2);
    EXPECT_EQ(Run({folder.Path().string(), list}).exitStatus, 2);
    EXPECT_EQ(Run({report}).exitStatus, 2);
}

TEST_F(CompareProgram, HasNothingToSayOfAReportWithoutAField) {
    const std::string truthFile = Write("truth.json", truth);
    const std::string report = Write("report.jsonl", R"({"scan":1,"end":"not begun","fields":0})"
                                                     "\n");
    EXPECT_EQ(Run({report, truthFile}).errors,
              "tessaro-compare: the report '" + report + "' has no field, the scan ended: not begun\n");
    EXPECT_EQ(Run({report, truthFile}).exitStatus, 2);
    Write("report.jsonl", "");
    EXPECT_EQ(Run({report, truthFile}).errors, "tessaro-compare: the report '" + report + "' has no field\n");
    EXPECT_EQ(Run({report, truthFile}).exitStatus, 2);
}

TEST_F(CompareProgram, IsContentWithTheImagesOfTheReportWhateverLiesBesideThem) {
    QtPictureFiles pictures;
    const auto jpeg = std::get<std::vector<std::uint8_t>>(pictures.Encode(Picture(8, 8), "image/jpeg"));
    const TemporaryFolder images;
    const std::string frame = images.Write("a.jpg", jpeg);
    const std::string detail = images.Write("adetail.jpg", jpeg);
    const std::string report = WriteReport("[\"" + frame + "\",\"" + detail + "\"]");
    const std::string truthFile = Write("truth.json", truth);
    const ProgramRun run = Run({"--images", report, truthFile});
    EXPECT_EQ(run.exitStatus, 0);
    EXPECT_EQ(run.errors, "");
    EXPECT_NE(run.output.find(" 2, all there and sound\n"), std::string::npos) << run.output;
    EXPECT_EQ(run.output.find("not in the report"), std::string::npos) << run.output;

    const std::string other = images.Write("by hand.jpg", jpeg);
    const ProgramRun beside = Run({"--images", report, truthFile});
    EXPECT_EQ(beside.exitStatus, 0);
    EXPECT_EQ(beside.errors, "");
    EXPECT_NE(beside.output.find("  not in the report: " + other + "\n"), std::string::npos) << beside.output;
}

TEST_F(CompareProgram, SaysThatItsFiguresCannotBeWritten) {
    const std::string errors = folder.Path() / "errors";
    BackgroundProgram program(TESSARO_COMPARE, {WriteReport("[]"), Write("truth.json", truth)}, {}, errors,
                              "/dev/full");
    ASSERT_TRUE(Eventually([&] { return !program.IsRunning(); }));
    EXPECT_EQ(program.ExitStatus(), 1);
    EXPECT_EQ(ReadText(errors), "tessaro-compare: standard output cannot be written\n");
}

TEST_F(CompareProgram, SaysWhenTheImagesAreNotThoseOfTheReport) {
    const std::string truthFile = Write("truth.json", truth);
    const ProgramRun run =
        Run({"--images", WriteReport(R"(["/nowhere/a.jpg","/nowhere/b.jpg"])"), truthFile});
    EXPECT_EQ(run.exitStatus, 1);
    EXPECT_EQ(run.errors, "tessaro-compare: '/nowhere/a.jpg' cannot be read\n"
                          "tessaro-compare: '/nowhere/b.jpg' cannot be read\n");
    EXPECT_NE(run.output.find("fields scanned"), std::string::npos);
}

TEST_F(CompareProgram, ExplainsItself) {
    const ProgramRun help = Run({"--help"});
    EXPECT_EQ(help.exitStatus, 0);
    for (const char* option : {"--min-area", "--tolerance", "--list", "--images", "--help", "--version"})
        EXPECT_NE(help.output.find(option), std::string::npos) << option;
    EXPECT_EQ(Run({"--version"}).output.substr(0, 16), "tessaro-compare ");
}

} // namespace
} // namespace tessaro
