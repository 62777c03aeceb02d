#include "platform/qt/qt_folders.h"
#include "tests/support/temporary_folder.h"

#include <QByteArray>
#include <QtGlobal>

#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace tessaro {
namespace {

/// A variable of the environment for one test.
class Variable {
public:
    Variable(const char* name, const std::string& value) : m_name(name), m_before(qgetenv(name)) {
        qputenv(name, value.c_str());
    }
    ~Variable() {
        if (m_before.isNull())
            qunsetenv(m_name);
        else
            qputenv(m_name, m_before);
    }
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;

private:
    const char* m_name;
    QByteArray m_before;
};

class QtFoldersTest : public testing::Test {
protected:
    void WriteUserDirectories(const std::string& text) const {
        std::filesystem::create_directories(m_home.Path() / ".config");
        std::ofstream(m_home.Path() / ".config" / "user-dirs.dirs") << text;
    }

    static bool Succeeds(const std::optional<FolderError>& error) { return !error.has_value(); }

    TemporaryFolder m_home;
    Variable m_homeVariable{"HOME", m_home.Path().string()};
    Variable m_configVariable{"XDG_CONFIG_HOME", (m_home.Path() / ".config").string()};
    QtFolders m_folders;
    const std::vector<std::uint8_t> m_content = {1, 2, 3};
};

TEST_F(QtFoldersTest, TakesTheDesktopBelowHomeWithoutSettings) {
    EXPECT_EQ(m_folders.DesktopFolder(), m_home.Path() / "Desktop");
}

TEST_F(QtFoldersTest, TakesTheDesktopOfTheUsersSettings) {
    WriteUserDirectories("XDG_DOWNLOAD_DIR=\"$HOME/Down\"\nXDG_DESKTOP_DIR=\"$HOME/Schreibtisch\"\n");
    EXPECT_EQ(m_folders.DesktopFolder(), m_home.Path() / "Schreibtisch");
    WriteUserDirectories("XDG_DESKTOP_DIR=\"/data/desk\"\n");
    EXPECT_EQ(m_folders.DesktopFolder(), "/data/desk");
}

TEST_F(QtFoldersTest, KnowsDesktopsWithOddNames) {
    for (const std::string name :
         {"바탕 화면", "Plocha \xC4\x8D\xC5\x99", "with  spaces", "dollar&semi;colon", "quote's"}) {
        WriteUserDirectories("XDG_DESKTOP_DIR=\"$HOME/" + name + "\"\n");
        const std::filesystem::path desktop = m_folders.DesktopFolder();
        EXPECT_EQ(desktop, m_home.Path() / name);
        ASSERT_TRUE(m_folders.CreateFolder(desktop));
        EXPECT_TRUE(Succeeds(m_folders.Create(desktop / name, m_content))) << name;
        EXPECT_TRUE(m_folders.CanRead(desktop / name));
        EXPECT_TRUE(std::filesystem::exists(m_home.Path() / name / name));
    }
}

TEST_F(QtFoldersTest, TakesTheDesktopBelowHomeWhenTheSettingsHaveNone) {
    WriteUserDirectories("XDG_DOWNLOAD_DIR=\"$HOME/Down\"\n");
    EXPECT_EQ(m_folders.DesktopFolder(), m_home.Path() / "Desktop");
    WriteUserDirectories("XDG_DESKTOP_DIR=\n\xFF\xFE nonsense");
    EXPECT_EQ(m_folders.DesktopFolder(), m_home.Path() / "Desktop");
}

TEST_F(QtFoldersTest, CannotReadAPipeAndDoesNotWaitForIt) {
    const std::filesystem::path pipe = m_home.Path() / "pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_FALSE(m_folders.CanRead(pipe));
    EXPECT_TRUE(std::holds_alternative<FolderError>(m_folders.Read(pipe, 10)));
    EXPECT_FALSE(Succeeds(m_folders.Create(pipe, m_content)));
    EXPECT_TRUE(std::filesystem::is_fifo(pipe));
}

TEST_F(QtFoldersTest, TellsTheSizeOfAFileThatIsLargerThanMemory) {
    const std::filesystem::path path = m_home.Path() / "large";
    ASSERT_TRUE(Succeeds(m_folders.Create(path, m_content)));
    const std::uint64_t size = std::uint64_t{1} << 40U;
    std::filesystem::resize_file(path, size); // a hole, no disk space
    const auto told = m_folders.Size(path);
    ASSERT_TRUE(std::holds_alternative<std::uint64_t>(told));
    EXPECT_EQ(std::get<std::uint64_t>(told), size);
}

TEST_F(QtFoldersTest, TellsNoSizeOfAPipe) {
    const std::filesystem::path pipe = m_home.Path() / "pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_TRUE(std::holds_alternative<FolderError>(m_folders.Size(pipe)));
}

TEST_F(QtFoldersTest, DoesNotReplaceAPipe) {
    const std::filesystem::path pipe = m_home.Path() / "pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_FALSE(Succeeds(m_folders.Replace(pipe, m_content)));
    EXPECT_TRUE(std::filesystem::is_fifo(pipe));
}

TEST_F(QtFoldersTest, CreatesNothingThroughALinkThatLeadsNowhere) {
    const std::filesystem::path link = m_home.Path() / "link";
    std::filesystem::create_symlink(m_home.Path() / "target", link);
    EXPECT_FALSE(Succeeds(m_folders.Create(link, m_content)));
    EXPECT_FALSE(std::filesystem::exists(m_home.Path() / "target"));
    EXPECT_TRUE(std::filesystem::is_symlink(link));
}

TEST_F(QtFoldersTest, ReplacesWhatALinkLeadsTo) {
    const std::filesystem::path target = m_home.Path() / "target";
    const std::filesystem::path link = m_home.Path() / "link";
    ASSERT_TRUE(Succeeds(m_folders.Create(target, {})));
    std::filesystem::create_symlink(target, link);
    EXPECT_TRUE(Succeeds(m_folders.Replace(link, m_content)));
    EXPECT_TRUE(std::filesystem::is_symlink(link));
    EXPECT_EQ(std::filesystem::file_size(target), m_content.size());
}

TEST_F(QtFoldersTest, TellsOfFilesThatMayNotBeRead) {
    if (geteuid() == 0)
        GTEST_SKIP() << "the administrator may read everything";
    const std::filesystem::path file = m_home.Path() / "secret";
    ASSERT_TRUE(Succeeds(m_folders.Create(file, m_content)));
    std::filesystem::permissions(file, std::filesystem::perms::none);
    EXPECT_FALSE(m_folders.CanRead(file));
    EXPECT_TRUE(std::holds_alternative<FolderError>(m_folders.Read(file, 10)));
    EXPECT_FALSE(Succeeds(m_folders.Create(file, m_content))) << "it is there, if unreadable";
}

TEST_F(QtFoldersTest, TellsOfPathsThatCannotBe) {
    ASSERT_TRUE(Succeeds(m_folders.Create(m_home.Path() / "file", m_content)));
    for (const std::filesystem::path& path :
         {m_home.Path() / "file" / "below", m_home.Path() / std::string(300, 'n'),
          m_home.Path() / "no" / "such"}) {
        EXPECT_FALSE(m_folders.CanRead(path));
        EXPECT_TRUE(std::holds_alternative<FolderError>(m_folders.Read(path, 10)));
        EXPECT_FALSE(Succeeds(m_folders.Replace(path, m_content)));
        EXPECT_FALSE(Succeeds(m_folders.Create(path, m_content)));
    }
    EXPECT_FALSE(m_folders.CreateFolder(m_home.Path() / std::string(300, 'n')));
}

TEST_F(QtFoldersTest, LeavesNoOtherFilesBehind) {
    ASSERT_TRUE(Succeeds(m_folders.Create(m_home.Path() / "file", m_content)));
    ASSERT_TRUE(Succeeds(m_folders.Replace(m_home.Path() / "file", m_content)));
    EXPECT_FALSE(Succeeds(m_folders.Create(m_home.Path() / "missing" / "file", m_content)));
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(m_home.Path()), {}), 1);
}

} // namespace
} // namespace tessaro
