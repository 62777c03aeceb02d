#include "analyze/result_files.h"
#include "support/temporary_folder.h"

#include <gtest/gtest.h>

#include <csignal>
#include <sys/resource.h>

namespace tessaro {
namespace {

class ResultFiles : public testing::Test {
protected:
    std::filesystem::path Save(const std::vector<std::uint8_t>& bytes) {
        return std::get<std::filesystem::path>(WriteNewFile(folder.Path(), "field", "jpg", bytes));
    }

    static std::vector<std::uint8_t> Read(const std::filesystem::path& path) {
        return std::get<std::vector<std::uint8_t>>(ReadFile(path));
    }

    TemporaryFolder folder;
};

TEST_F(ResultFiles, TakeTheNextFreeNameInsteadOfOverwriting) {
    EXPECT_EQ(Save({1}).filename(), "field.jpg");
    EXPECT_EQ(Save({2}).filename(), "field_0.jpg");
    EXPECT_EQ(Save({3}).filename(), "field_1.jpg");
    EXPECT_EQ(Read(folder.Path() / "field.jpg"), (std::vector<std::uint8_t>{1}));
    EXPECT_EQ(Read(folder.Path() / "field_1.jpg"), (std::vector<std::uint8_t>{3}));
}

TEST_F(ResultFiles, DoNotReplaceALinkThatLeadsNowhere) {
    std::filesystem::create_symlink("nowhere", folder.Path() / "field.jpg");
    EXPECT_EQ(Save({1}).filename(), "field_0.jpg");
}

TEST_F(ResultFiles, InAMissingFolderAreAnError) {
    const auto result = WriteNewFile(folder.Path() / "absent", "field", "jpg", std::vector<std::uint8_t>{1});
    EXPECT_EQ(std::get<FileError>(result).reason, "No such file or directory");
}

TEST_F(ResultFiles, LeaveNothingBehindWhenTheDiskIsFull) {
    // A limit on the file size plays the full disk.
    rlimit before{};
    getrlimit(RLIMIT_FSIZE, &before);
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    const rlimit small{1000, before.rlim_max};
    setrlimit(RLIMIT_FSIZE, &small);
    const auto result = WriteNewFile(folder.Path(), "field", "jpg", std::vector<std::uint8_t>(100'000));
    setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);
    EXPECT_EQ(std::get<FileError>(result).reason, "File too large");
    EXPECT_TRUE(std::filesystem::is_empty(folder.Path()));
}

TEST_F(ResultFiles, AreReadWhole) {
    const std::vector<std::uint8_t> bytes(123'456, 7);
    EXPECT_EQ(Read(folder.Write("file", bytes)), bytes);
    EXPECT_TRUE(Read(folder.Write("empty", {})).empty());
}

TEST_F(ResultFiles, ThatAreNoFilesAreNotRead) {
    EXPECT_EQ(std::get<FileError>(ReadFile(folder.Path() / "absent")).reason, "No such file or directory");
    EXPECT_EQ(std::get<FileError>(ReadFile(folder.Path())).reason, "it is a folder");
    EXPECT_EQ(std::get<FileError>(ReadFile("/dev/zero")).reason, "it is not a file");
}

TEST_F(ResultFiles, ThatAreTooLargeAreNotRead) {
    const std::string path = folder.Write("huge", {});
    std::filesystem::resize_file(path, maximumFileBytes + 1); // a hole, no disk space
    EXPECT_EQ(std::get<FileError>(ReadFile(path)).reason, "the file is too large");
}

} // namespace
} // namespace tessaro
