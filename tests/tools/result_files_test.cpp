#include "analyze/result_files.h"
#include "support/temporary_folder.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <sys/resource.h>
#include <unistd.h>

namespace tessaro {
namespace {

/// While it lives, permissions hold for this process, even where root runs the tests.
class WithoutPrivileges {
public:
    WithoutPrivileges() : m_held(m_before != 0 || seteuid(somebody) == 0) {}
    ~WithoutPrivileges() {
        if (m_before == 0 && seteuid(m_before) != 0)
            std::abort();
    }
    WithoutPrivileges(const WithoutPrivileges&) = delete;
    WithoutPrivileges& operator=(const WithoutPrivileges&) = delete;

    bool Held() const { return m_held; }

private:
    static constexpr uid_t somebody = 65'534;
    const uid_t m_before = geteuid();
    const bool m_held;
};

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

TEST_F(ResultFiles, ThatEndBeforeTheirSizeAreNotTakenForWhole) {
    // A file of the system that has a page by its size and fewer bytes to read.
    const std::filesystem::path shorter = "/sys/devices/system/cpu/online";
    std::error_code error;
    if (std::filesystem::file_size(shorter, error) < 100 || error)
        GTEST_SKIP() << "no such file here";
    EXPECT_EQ(std::get<FileError>(ReadFile(shorter)).reason, "the file could not be read to its end");
}

TEST_F(ResultFiles, WithoutPermissionAreNeitherReadNorWritten) {
    using std::filesystem::perms;
    const std::string path = folder.Write("secret", {1});
    std::filesystem::permissions(path, perms::none);
    std::filesystem::permissions(folder.Path(), perms::owner_exec | perms::group_exec | perms::others_exec);
    std::variant<std::vector<std::uint8_t>, FileError> read;
    std::variant<std::filesystem::path, FileError> written;
    bool held = false;
    {
        const WithoutPrivileges unprivileged;
        held = unprivileged.Held();
        read = ReadFile(path);
        written = WriteNewFile(folder.Path(), "field", "jpg", std::vector<std::uint8_t>{1});
    }
    std::filesystem::permissions(folder.Path(), perms::owner_all);
    if (!held)
        GTEST_SKIP() << "root cannot become somebody else here";
    EXPECT_EQ(std::get<FileError>(read).reason, "Permission denied");
    EXPECT_EQ(std::get<FileError>(written).reason, "Permission denied");
}

TEST_F(ResultFiles, ThatAreTooLargeAreNotRead) {
    const std::string path = folder.Write("huge", {});
    std::filesystem::resize_file(path, maximumFileBytes + 1); // a hole, no disk space
    EXPECT_EQ(std::get<FileError>(ReadFile(path)).reason, "the file is too large");
}

} // namespace
} // namespace tessaro
