#include "support/program.h"
#include "support/temporary_folder.h"

#include <gtest/gtest.h>

#include <string>
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
