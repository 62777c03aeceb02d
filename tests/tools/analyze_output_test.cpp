#include "analyze/batch_output.h"
#include "support/program.h"
#include "support/temporary_folder.h"

#include <gtest/gtest.h>

namespace tessaro {
namespace {

class AnalyzeOutput : public testing::Test {
protected:
    /// A result without grains.
    static BatchResult Analysed(const std::string& file) {
        BatchResult result;
        result.report.file = file;
        result.annotatedJpeg = {1, 2, 3};
        return result;
    }

    static BatchResult Failed(const std::string& file, const std::string& reason) {
        BatchResult result;
        result.report.file = file;
        result.error = reason;
        return result;
    }

    static BatchResult Unsaved(const std::string& file, const std::string& reason) {
        BatchResult result;
        result.report.file = file;
        result.saveError = reason;
        return result;
    }

    /// Sends the results through an output with the options; returns whether it was content.
    bool Put(const std::vector<BatchResult>& results) {
        const OpenFile out(std::fopen(InFolder("out").c_str(), "w"));
        const OpenFile err(std::fopen(InFolder("err").c_str(), "w"));
        BatchOutput output(out.get(), err.get());
        EXPECT_EQ(output.Open(options), "");
        for (const BatchResult& result : results)
            output.Take(result);
        return output.Close();
    }

    std::string InFolder(const std::string& name) const { return (folder.Path() / name).string(); }
    std::string Output() const { return ReadText(InFolder("out")); }
    std::string Errors() const { return ReadText(InFolder("err")); }

    TemporaryFolder folder;
    AnalyzeOptions options;
};

TEST_F(AnalyzeOutput, ReportsAPictureThatCouldNotBeSavedAndNamesTheFailure) {
    options.saveFolder = InFolder("save");
    EXPECT_FALSE(Put({Unsaved("a.png", "no encoder"), Analysed("b.png")}));
    EXPECT_EQ(Output().substr(0, 30), "a.png: 0 single layers among 0");
    EXPECT_NE(Output().find("\n0 single layers in 2 pictures; 1 annotated picture could not be saved\n"),
              std::string::npos)
        << Output();
    EXPECT_EQ(Errors(), "tessaro-analyze: a.png: the annotated picture could not be saved: no encoder\n");
}

TEST_F(AnalyzeOutput, CountsPicturesThatCouldNotBeAnalysed) {
    EXPECT_FALSE(Put({Failed("a.png", "not enough memory"), Analysed("b.png")}));
    EXPECT_NE(Output().find("0 single layers in 1 picture; 1 picture could not be analysed\n"),
              std::string::npos);
    EXPECT_EQ(Errors(), "tessaro-analyze: a.png: not enough memory\n");
}

TEST_F(AnalyzeOutput, AddsUpTheSingleLayersOfAllPictures) {
    BatchResult two = Analysed("a.png");
    two.report.found = 2;
    BatchResult three = Analysed("b.png");
    three.report.found = 3;
    EXPECT_TRUE(Put({two, three}));
    EXPECT_NE(Output().find("\n5 single layers in 2 pictures\n"), std::string::npos) << Output();
}

TEST_F(AnalyzeOutput, GivesNoSummaryOfASinglePicture) {
    EXPECT_TRUE(Put({Analysed("a.png")}));
    EXPECT_EQ(Output().find("in 1 picture"), std::string::npos);
}

TEST_F(AnalyzeOutput, NamesTheFolderThatCannotBeMade) {
    options.saveFolder = folder.Write("file", {1}) + "/folder";
    EXPECT_EQ(BatchOutput(stdout, stderr).Open(options),
              "cannot make the folder '" + InFolder("file/folder") + "': Not a directory");
}

TEST_F(AnalyzeOutput, NamesTheFileThatCannotBeWritten) {
    options.jsonFile = InFolder("absent/result.json");
    EXPECT_EQ(BatchOutput(stdout, stderr).Open(options),
              "cannot write '" + InFolder("absent/result.json") + "': No such file or directory");
}

TEST_F(AnalyzeOutput, SavesPicturesOfTheSameNameFromTwoFoldersApart) {
    options.saveFolder = InFolder("save");
    BatchResult second = Analysed("b/field.png");
    second.annotatedJpeg = {4, 5};
    EXPECT_TRUE(Put({Analysed("a/field.png"), second}));
    EXPECT_EQ(ReadText(InFolder("save/field.jpg")), "\1\2\3");
    EXPECT_EQ(ReadText(InFolder("save/field_0.jpg")), "\4\5");
    EXPECT_LT(Output().find("saved as " + InFolder("save/field.jpg")),
              Output().find("saved as " + InFolder("save/field_0.jpg")));
}

TEST_F(AnalyzeOutput, TellsTheNameOfASavedPictureUnderItsReport) {
    options.saveFolder = InFolder("save");
    EXPECT_TRUE(Put({Analysed("a.png")}));
    EXPECT_NE(Output().find("\n    saved as " + InFolder("save/a.jpg") + "\n"), std::string::npos);
    EXPECT_EQ(Errors(), "");
}

TEST_F(AnalyzeOutput, TellsTheNameOfASavedPictureBesideJson) {
    options.jsonFile = "-";
    options.saveFolder = InFolder("save");
    EXPECT_TRUE(Put({Analysed("x/a.png")}));
    EXPECT_EQ(Output().find("saved as"), std::string::npos);
    EXPECT_EQ(Errors(), "tessaro-analyze: x/a.png: saved as " + InFolder("save/a.jpg") + "\n");
}

TEST_F(AnalyzeOutput, IsNeverWrittenOverAPictureOrTheSettings) {
    const std::string picture = folder.Write("field.png", {1, 2, 3});
    const std::string settings = folder.Write("Config.txt", {'5'});
    std::filesystem::create_symlink("field.png", folder.Path() / "link");
    std::filesystem::create_hard_link(settings, folder.Path() / "second-name");
    options.pictures = {InFolder("absent"), picture};
    options.settingsFile = settings;
    for (const char* name : {"field.png", "Config.txt", "./field.png", "link", "second-name"}) {
        options.jsonFile = InFolder(name);
        EXPECT_EQ(BatchOutput(stdout, stderr).Open(options),
                  "'" + *options.jsonFile + "' is one of the files to read");
    }
    EXPECT_EQ(ReadText(picture), "\1\2\3");
    EXPECT_EQ(ReadText(settings), "5");
}

TEST_F(AnalyzeOutput, IsNeverWrittenOverAPictureThatIsGivenThroughALink) {
    const std::string picture = folder.Write("field.png", {1, 2, 3});
    std::filesystem::create_symlink("field.png", folder.Path() / "link");
    options.pictures = {InFolder("link")};
    options.jsonFile = picture;
    EXPECT_NE(BatchOutput(stdout, stderr).Open(options), "");
    EXPECT_EQ(ReadText(picture), "\1\2\3");
}

TEST_F(AnalyzeOutput, ReplacesAnotherFile) {
    options.pictures = {folder.Write("field.png", {1, 2, 3})};
    options.jsonFile = folder.Write("old.json", {'o', 'l', 'd'});
    EXPECT_TRUE(Put({Analysed("field.png")}));
    EXPECT_EQ(ReadText(*options.jsonFile).substr(0, 18), "{\"file\":\"field.png");
}

} // namespace
} // namespace tessaro
