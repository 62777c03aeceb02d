#include "imaging/picture_to_frame.h"
#include "platform/qt/qt_picture_files.h"
#include "support/drawn_frames.h"
#include "support/program.h"
#include "support/sanitizer.h"
#include "support/temporary_folder.h"
#include "support/terminal.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <unistd.h>

namespace tessaro {
namespace {

class AnalyzeProgram : public testing::Test {
protected:
    static std::vector<std::uint8_t> Encoded(const FramePainter& painter, const char* mimeType) {
        QtPictureFiles files;
        return std::get<std::vector<std::uint8_t>>(files.Encode(FrameToPicture(painter.frame), mimeType));
    }

    static FramePainter PaintedFlake() {
        FramePainter painter;
        painter.Fill(substrate100);
        painter.Rectangle(200, 200, 40, 40, singleLayer100);
        return painter;
    }

    std::string WriteFlake(const std::string& name, const char* mimeType = "image/png") const {
        return folder.Write(name, Encoded(PaintedFlake(), mimeType));
    }

    static ProgramRun Run(const std::vector<std::string>& arguments, const std::string& before = {}) {
        return RunProgram(TESSARO_ANALYZE, arguments, before);
    }

    /// Runs the program with some of its standard streams led elsewhere or closed ("2>&-").
    static ProgramRun RunRedirected(const std::string& redirection, std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), {"-c", "exec \"$0\" \"$@\" " + redirection, TESSARO_ANALYZE});
        return RunProgram("/bin/sh", arguments);
    }

    std::string InFolder(const std::string& name) const { return (folder.Path() / name).string(); }

    TemporaryFolder folder;
};

TEST_F(AnalyzeProgram, ExplainsItself) {
    const ProgramRun help = Run({"--help"});
    EXPECT_EQ(help.exitStatus, 0);
    EXPECT_NE(help.output.find("Usage: tessaro-analyze [options] PICTURE..."), std::string::npos);
    for (const char* option : {"--target", "--tolerance", "--min-area", "--threshold", "--settings",
                               "--balance", "--json", "--save", "--jobs", "--help", "--version"})
        EXPECT_NE(help.output.find(option), std::string::npos) << option;
    const ProgramRun version = Run({"--version"});
    EXPECT_EQ(version.exitStatus, 0);
    EXPECT_EQ(version.output.substr(0, 16), "tessaro-analyze ");
}

TEST_F(AnalyzeProgram, RefusesWrongUsageWithStatusTwo) {
    for (const auto& arguments : std::vector<std::vector<std::string>>{
             {}, {"--nonsense"}, {"--jobs", "0", "a.png"}, {"--settings", InFolder("absent"), "a.png"}}) {
        const ProgramRun run = Run(arguments);
        EXPECT_EQ(run.exitStatus, 2);
        EXPECT_EQ(run.output, "");
        EXPECT_EQ(run.errors.substr(0, 17), "tessaro-analyze: ");
    }
}

TEST_F(AnalyzeProgram, NamesTheSettingsThatCannotBeRead) {
    EXPECT_EQ(Run({"--settings", InFolder("absent"), "a.png"}).errors,
              "tessaro-analyze: cannot read the settings '" + InFolder("absent") +
                  "': No such file or directory\nTry 'tessaro-analyze --help'.\n");
}

TEST_F(AnalyzeProgram, TellsAPersonWhatItFound) {
    const ProgramRun run = Run({"--threshold", "50", WriteFlake("field.png")});
    EXPECT_EQ(run.exitStatus, 0);
    EXPECT_NE(run.output.find("field.png: 1 single layer among 1 grain, best score 61."), std::string::npos);
    EXPECT_NE(run.output.find("single layer at x 220, y 808: score 61."), std::string::npos);
    EXPECT_EQ(run.errors, "");
}

TEST_F(AnalyzeProgram, WritesOneJsonLineAPictureInTheOrderGiven) {
    const std::string first = WriteFlake("b.png");
    const std::string second = WriteFlake("a.png");
    const std::string json = InFolder("result.json");
    EXPECT_EQ(Run({"--json", json, "--jobs", "2", first, second}).exitStatus, 0);
    const std::string text = ReadText(json);
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 2);
    EXPECT_LT(text.find("/b.png"), text.find("/a.png"));
    EXPECT_EQ(Run({"--json", "-", first, second}).output, text);
}

TEST_F(AnalyzeProgram, TakesSettingsFromAFileAndLetsOptionsWin) {
    const std::string picture = WriteFlake("field.png");
    const std::string line = "3,-12.0,-8.0,-2.0,6.0,10,10,100,4,50.0\n";
    const std::string settings = folder.Write("Config.txt", {line.begin(), line.end()});
    EXPECT_NE(Run({"--settings", settings, "--json", "-", picture}).output.find("\"found\":1"),
              std::string::npos);
    EXPECT_NE(
        Run({"--threshold", "70", "--settings", settings, "--json", "-", picture}).output.find("\"found\":0"),
        std::string::npos);
}

TEST_F(AnalyzeProgram, SaysWhenASettingsFileIsCutShort) {
    const std::string settings = folder.Write("Config.txt", {'5', ',', '-', '2', '0'});
    const ProgramRun run = Run({"--settings", settings, WriteFlake("field.png")});
    EXPECT_EQ(run.exitStatus, 0);
    EXPECT_NE(run.errors.find("gives 2 of 10 settings; the others keep their defaults"), std::string::npos);
}

TEST_F(AnalyzeProgram, SavesAnnotatedPicturesWithoutOverwritingAnything) {
    const std::string picture = WriteFlake("field.png");
    const std::string out = InFolder("out/of/it");
    for (int run = 0; run < 2; ++run)
        EXPECT_EQ(Run({"--threshold", "50", "--save", out, picture}).exitStatus, 0);
    QtPictureFiles files;
    for (const char* name : {"/field.jpg", "/field_0.jpg"}) {
        const std::string bytes = ReadText(out + name);
        const auto decoded =
            files.Decode({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()});
        ASSERT_TRUE(std::holds_alternative<Picture>(decoded)) << name;
        const std::uint8_t* frameCorner = std::get<Picture>(decoded).Pixel(199, 787);
        EXPECT_GT(frameCorner[2], 200) << "a red frame";
        EXPECT_LT(frameCorner[1], 80);
    }
}

TEST_F(AnalyzeProgram, NamesEachPictureThatCannotBeReadAndDoesTheOthers) {
    std::vector<std::uint8_t> jpeg = Encoded(PaintedFlake(), "image/jpeg");
    jpeg.resize(jpeg.size() * 2 / 3);
    const std::string truncated = folder.Write("truncated.jpg", jpeg);
    const std::string text = folder.Write("notes.txt", {'n', 'o', 't', 'e', 's'});
    const std::string good = WriteFlake("good.png");
    const ProgramRun run = Run({"--json", "-", truncated, InFolder("absent.jpg"), text, good});
    EXPECT_EQ(run.exitStatus, 1);
    EXPECT_EQ(std::count(run.errors.begin(), run.errors.end(), '\n'), 3);
    for (const char* name : {"truncated.jpg: ", "absent.jpg: No such file or directory", "notes.txt: "})
        EXPECT_NE(run.errors.find(name), std::string::npos) << name << " in " << run.errors;
    EXPECT_EQ(std::count(run.output.begin(), run.output.end(), '\n'), 1);
    EXPECT_NE(run.output.find("good.png"), std::string::npos);
}

TEST_F(AnalyzeProgram, RefusesAbsurdDimensionsWithoutTheMemoryForThem) {
    // A BMP that claims 65,500 x 65,500 pixels of 32 bits.
    std::vector<std::uint8_t> bmp(54 + 4'000);
    const auto put32 = [&](std::size_t at, std::uint32_t value) {
        for (std::size_t byte = 0; byte < 4; ++byte)
            bmp[at + byte] = static_cast<std::uint8_t>(value >> (8 * byte));
    };
    bmp[0] = 'B';
    bmp[1] = 'M';
    put32(10, 54);
    put32(14, 40);
    put32(18, 65'500);
    put32(22, 65'500);
    bmp[26] = 1;
    bmp[28] = 32;
    const std::string picture = folder.Write("absurd.bmp", bmp);
    const std::string limit = addressSanitizer ? "" : "ulimit -v 2000000; ";
    const ProgramRun run = Run({picture}, limit);
    EXPECT_EQ(run.exitStatus, 1);
    EXPECT_NE(run.errors.find("absurd.bmp: "), std::string::npos);
}

TEST_F(AnalyzeProgram, ReportsResultsThatCannotBeWritten) {
    const std::string picture = WriteFlake("field.png");
    const ProgramRun run = Run({"--json", "/dev/full", picture});
    EXPECT_EQ(run.exitStatus, 1);
    EXPECT_NE(run.errors.find("the results could not be written whole"), std::string::npos);
    EXPECT_EQ(Run({"--json", InFolder("absent/result.json"), picture}).exitStatus, 2);
    EXPECT_EQ(Run({"--save", picture + "/folder", picture}).exitStatus, 2);
}

TEST_F(AnalyzeProgram, KeepsErrorsOutOfTheResultsWhenStreamsAreClosed) {
    const std::string good = WriteFlake("good.png");
    const std::string json = InFolder("result.json");
    EXPECT_EQ(Run({"--json", json, good}).exitStatus, 0);
    const std::string expected = ReadText(json);
    for (const char* closed : {"2>&-", ">&- 2>&-", "<&- >&- 2>&-"}) {
        EXPECT_EQ(RunRedirected(closed, {"--json", json, InFolder("absent"), good}).exitStatus, 1);
        EXPECT_EQ(ReadText(json), expected) << closed;
    }
}

TEST_F(AnalyzeProgram, RefusesToWriteItsResultsOverAPicture) {
    const std::string picture = WriteFlake("field.png");
    const std::string before = ReadText(picture);
    const ProgramRun run = Run({"--json", InFolder("./field.png"), picture});
    EXPECT_EQ(run.exitStatus, 2);
    EXPECT_NE(run.errors.find("./field.png' is one of the files to read"), std::string::npos);
    EXPECT_EQ(ReadText(picture), before);
}

TEST_F(AnalyzeProgram, FailsWhenItsOutputIsClosed) {
    const ProgramRun run = RunRedirected(">&-", {WriteFlake("field.png")});
    EXPECT_EQ(run.exitStatus, 1);
    EXPECT_NE(run.errors.find("the results could not be written whole"), std::string::npos);
}

TEST_F(AnalyzeProgram, FailsWhenWhatItExplainsCannotBeWritten) {
    for (const char* option : {"--help", "--version"}) {
        const ProgramRun run = RunRedirected(">/dev/full", {option});
        EXPECT_EQ(run.exitStatus, 1) << option;
        EXPECT_EQ(run.errors, "tessaro-analyze: cannot write: No space left on device\n");
    }
}

TEST_F(AnalyzeProgram, FailsWhenTheReaderOfItsOutputGoesAway) {
    int ends[2] = {};
    ASSERT_EQ(pipe(ends), 0);
    close(ends[0]);
    ASSERT_LT(ends[1], 10) << "the shell knows descriptors of one digit";
    const ProgramRun run = RunRedirected(">&" + std::to_string(ends[1]), {WriteFlake("field.png")});
    close(ends[1]);
    EXPECT_EQ(run.exitStatus, 1);
    EXPECT_EQ(run.errors, "tessaro-analyze: the results could not be written whole: Broken pipe\n");
}

TEST_F(AnalyzeProgram, ShowsOnATerminalHowFarManyPicturesAre) {
    const Terminal terminal;
    if (!terminal.Works())
        GTEST_SKIP() << "no terminal to be had";
    const std::string absent = InFolder("absent");
    RunRedirected("2>" + terminal.Name(), {absent, absent, absent, absent});
    const std::string clear = "\r\033[K";
    const std::string complaint = "tessaro-analyze: " + absent + ": No such file or directory\r\n";
    std::string expected = "\r0 of 4 pictures";
    for (const char* done : {"1", "2", "3", "4"})
        expected += clear + complaint + "\r" + done + " of 4 pictures";
    EXPECT_EQ(terminal.Read(), expected + clear);
}

TEST_F(AnalyzeProgram, ShowsNoProgressOfAFewPicturesNorBesideATerminal) {
    const Terminal terminal;
    if (!terminal.Works())
        GTEST_SKIP() << "no terminal to be had";
    const std::string picture = WriteFlake("field.png");
    RunRedirected("2>" + terminal.Name(), {picture, picture, picture});
    EXPECT_EQ(terminal.Read(), "");
    EXPECT_EQ(Run({picture, picture, picture, picture}).errors, "");
}

TEST_F(AnalyzeProgram, SavesPicturesOfTheSameNameFromTwoFoldersApart) {
    std::filesystem::create_directory(folder.Path() / "a");
    std::filesystem::create_directory(folder.Path() / "b");
    const std::string out = InFolder("out");
    const ProgramRun run =
        Run({"--json", "-", "--save", out, WriteFlake("a/field.png"), WriteFlake("b/field.png")});
    EXPECT_EQ(run.exitStatus, 0);
    EXPECT_EQ(run.errors, "tessaro-analyze: " + InFolder("a/field.png") + ": saved as " + out +
                              "/field.jpg\ntessaro-analyze: " + InFolder("b/field.png") + ": saved as " +
                              out + "/field_0.jpg\n");
    EXPECT_EQ(ReadText(out + "/field.jpg"), ReadText(out + "/field_0.jpg"));
}

TEST_F(AnalyzeProgram, LeavesNoTruncatedPictureOnAFullDisk) {
    const std::string picture = WriteFlake("field.png");
    const std::string out = InFolder("out");
    const ProgramRun run = Run({"--save", out, picture}, "ulimit -f 1; ");
    EXPECT_EQ(run.exitStatus, 1);
    EXPECT_NE(run.errors.find("the annotated picture could not be saved"), std::string::npos);
    EXPECT_TRUE(std::filesystem::is_empty(out));
}

} // namespace
} // namespace tessaro
