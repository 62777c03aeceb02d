#include "imaging/frame_buffer.h"
#include "platform/qt/qt_picture_files.h"
#include "support/program.h"
#include "support/temporary_folder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <variant>
#include <vector>

namespace tessaro {
namespace {

ProgramRun RunTwin(const std::vector<std::string>& arguments) {
    return RunProgram(TESSARO_TWIN, arguments);
}

Picture PictureIn(const std::filesystem::path& path) {
    const std::string text = ReadText(path);
    const std::vector<std::uint8_t> bytes(text.begin(), text.end());
    auto picture = QtPictureFiles().Decode(bytes);
    return std::holds_alternative<Picture>(picture) ? std::get<Picture>(picture) : Picture();
}

class TwinPictures : public testing::Test {
protected:
    std::string File(const std::string& name) const { return (m_folder.Path() / name).string(); }

private:
    TemporaryFolder m_folder;
};

/// The centre of the first bulk flake of a truth, as the program writes it: "x,y".
std::string CentreOfBulk(const std::string& truth) {
    const std::string before = "\"centre\":[";
    const std::size_t flake = truth.find("{\"layers\":100,");
    const std::size_t start = truth.find(before, flake) + before.size();
    return truth.substr(start, truth.find(']', start) - start);
}

TEST_F(TwinPictures, RendersWhatTheTruthSaysIsThere) {
    ASSERT_EQ(RunTwin({"--seed", "3", "--wafer-mm", "1", "--truth", File("truth.json"), "--render",
                       File("any.png")})
                  .exitStatus,
              0);
    const std::string truth = ReadText(File("truth.json"));
    ASSERT_EQ(truth.substr(0, 12), "{\"flakes\":[\n");
    const ProgramRun run = RunTwin({"--seed", "3", "--wafer-mm", "1", "--at", CentreOfBulk(truth) + ",0",
                                    "--render", File("field.png")});
    EXPECT_EQ(run.exitStatus, 0) << run.errors;
    const Picture picture = PictureIn(File("field.png"));
    ASSERT_EQ(picture.width, frameWidth);
    ASSERT_EQ(picture.height, frameHeight);
    EXPECT_LT(picture.Pixel(frameWidth / 2, frameHeight / 2)[2], 10) << "the middle of the bulk flake";
}

TEST_F(TwinPictures, TheSameCommandWritesTheSameFilesAndTheTruthDoesNotDependOnThePosition) {
    const std::vector<std::string> wafer = {"--wafer-mm", "1", "--at", "300,400,2", "--quiet"};
    const auto with = [&](const std::vector<std::string>& particular) {
        std::vector<std::string> more = wafer;
        more.insert(more.end(), particular.begin(), particular.end());
        const ProgramRun run = RunTwin(more);
        EXPECT_EQ(run.exitStatus, 0) << run.errors;
        EXPECT_EQ(run.output, "");
    };
    with({"--render", File("a.png"), "--truth", File("a.json")});
    with({"--render", File("b.png")});
    with({"--truth", File("b.json"), "--at", "1,2,3", "--render", File("c.png")});
    EXPECT_EQ(ReadText(File("a.png")), ReadText(File("b.png")));
    EXPECT_EQ(ReadText(File("a.json")), ReadText(File("b.json")));
    EXPECT_GT(ReadText(File("a.png")).size(), 100'000U);
}

TEST_F(TwinPictures, SaysWhatItRendered) {
    const ProgramRun run =
        RunTwin({"--wafer-mm", "1", "--density", "0", "--at", "1,2,3", "--render", File("bare.jpg")});
    EXPECT_EQ(run.output,
              File("bare.jpg") +
                  ": the field at 1.0, 2.0, 3.0 of a wafer with 0 flakes, 0 of them single layers\n");
    EXPECT_EQ(PictureIn(File("bare.jpg")).width, frameWidth);
}

TEST_F(TwinPictures, AnswersHelpAndVersion) {
    const ProgramRun help = RunTwin({"--help"});
    EXPECT_EQ(help.exitStatus, 0);
    EXPECT_EQ(help.output.substr(0, 19), "Usage: tessaro-twin");
    EXPECT_EQ(RunTwin({"--version"}).output.substr(0, 13), "tessaro-twin ");
}

TEST_F(TwinPictures, RefusesWrongUsageOnStandardErrorWithStatus2) {
    const ProgramRun run = RunTwin({"--material", "gold", "--render", File("a.png")});
    EXPECT_EQ(run.exitStatus, 2);
    EXPECT_EQ(run.output, "");
    EXPECT_EQ(run.errors, "tessaro-twin: 'gold' is no value for --material\nTry 'tessaro-twin --help'.\n");
    EXPECT_FALSE(std::filesystem::exists(File("a.png")));
}

TEST_F(TwinPictures, EndsWithStatus1WhenItCannotWrite) {
    for (const std::string option : {"--render", "--truth"}) {
        const std::string file = File("none/there.png");
        const ProgramRun run = RunTwin({"--wafer-mm", "1", "--render", File("any.png"), option, file});
        EXPECT_EQ(run.exitStatus, 1);
        EXPECT_EQ(run.errors, "tessaro-twin: could not write '" + file + "'\n");
    }
}

} // namespace
} // namespace tessaro
