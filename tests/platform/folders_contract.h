#pragma once

#include "platform/folders.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

// What every Folders must do. Instantiate it with a machine of this shape:
// INSTANTIATE_TYPED_TEST_SUITE_P(Qt, FoldersContract, QtFoldersMachine);
//   folders     the adapter
//   Base()      a folder that is there and empty
//   FillDisk()  from now on no file can be written

namespace tessaro {

template<class Machine>
class FoldersContract : public testing::Test {
protected:
    using Bytes = std::vector<std::uint8_t>;

    std::filesystem::path File(const std::string& name = "file") { return m_machine.Base() / name; }

    static Bytes Content(std::size_t size, std::uint8_t first = 1) {
        Bytes bytes(size);
        for (std::size_t i = 0; i < size; ++i)
            bytes[i] = static_cast<std::uint8_t>(first + i * 7);
        return bytes;
    }

    /// Nothing when it cannot be read.
    std::optional<Bytes> Read(const std::filesystem::path& file, std::size_t maximumBytes = 1U << 24U) {
        auto result = m_machine.folders.Read(file, maximumBytes);
        if (const auto* error = std::get_if<FolderError>(&result)) {
            EXPECT_NE(error->reason, "");
            return std::nullopt;
        }
        return std::get<Bytes>(std::move(result));
    }

    bool Replace(const std::filesystem::path& file, const Bytes& content) {
        return Succeeded(m_machine.folders.Replace(file, content));
    }

    bool Create(const std::filesystem::path& file, const Bytes& content) {
        return Succeeded(m_machine.folders.Create(file, content));
    }

    Machine m_machine;

private:
    static bool Succeeded(const std::optional<FolderError>& error) {
        if (error.has_value()) {
            EXPECT_NE(error->reason, "");
        }
        return !error.has_value();
    }
};

TYPED_TEST_SUITE_P(FoldersContract);

TYPED_TEST_P(FoldersContract, ReadsWhatItWrote) {
    for (const std::size_t size : {0U, 1U, 5000U, 3'000'000U}) {
        const auto content = this->Content(size);
        ASSERT_TRUE(this->Replace(this->File(), content));
        EXPECT_TRUE(this->m_machine.folders.CanRead(this->File()));
        EXPECT_EQ(this->Read(this->File()), content) << size;
    }
}

TYPED_TEST_P(FoldersContract, ReadsAtMostAsManyBytesAsItIsTold) {
    const auto content = this->Content(1000);
    ASSERT_TRUE(this->Create(this->File(), content));
    for (const std::size_t limit : {0U, 1U, 999U, 1000U, 1001U}) {
        const auto read = this->Read(this->File(), limit);
        ASSERT_TRUE(read.has_value());
        EXPECT_EQ(*read, std::vector(content.begin(),
                                     content.begin() +
                                         static_cast<std::ptrdiff_t>(std::min<std::size_t>(limit, 1000))));
    }
}

TYPED_TEST_P(FoldersContract, TellsTheSizeOfAFile) {
    for (const std::size_t size : {0U, 1U, 5000U}) {
        ASSERT_TRUE(this->Replace(this->File(), this->Content(size)));
        const auto told = this->m_machine.folders.Size(this->File());
        ASSERT_TRUE(std::holds_alternative<std::uint64_t>(told));
        EXPECT_EQ(std::get<std::uint64_t>(told), size);
    }
    const std::filesystem::path folder = this->File("folder");
    ASSERT_TRUE(this->m_machine.folders.CreateFolder(folder));
    for (const std::filesystem::path& path : {this->File("missing"), folder, std::filesystem::path()}) {
        const auto told = this->m_machine.folders.Size(path);
        ASSERT_TRUE(std::holds_alternative<FolderError>(told)) << path;
        EXPECT_NE(std::get<FolderError>(told).reason, "");
    }
}

TYPED_TEST_P(FoldersContract, CannotReadAMissingFileOrAFolder) {
    EXPECT_FALSE(this->m_machine.folders.CanRead(this->File("missing")));
    EXPECT_FALSE(this->Read(this->File("missing")).has_value());
    const std::filesystem::path folder = this->File("folder");
    ASSERT_TRUE(this->m_machine.folders.CreateFolder(folder));
    EXPECT_FALSE(this->m_machine.folders.CanRead(folder));
    EXPECT_FALSE(this->Read(folder).has_value());
    EXPECT_FALSE(this->m_machine.folders.CanRead({}));
    EXPECT_FALSE(this->Read({}).has_value());
}

TYPED_TEST_P(FoldersContract, MakesAFolderWithWhatIsMissingAboveIt) {
    const std::filesystem::path deep = this->File("a") / "b" / "c";
    EXPECT_FALSE(this->Create(deep / "file", {1})) << "before it is there";
    EXPECT_TRUE(this->m_machine.folders.CreateFolder(deep));
    EXPECT_TRUE(this->m_machine.folders.CreateFolder(deep)) << "there already";
    EXPECT_TRUE(this->Create(deep / "file", {1}));
    EXPECT_TRUE(this->Create(this->File("a") / "file", {1}));
}

TYPED_TEST_P(FoldersContract, MakesNoFolderWhereAFileIs) {
    ASSERT_TRUE(this->Create(this->File(), {1, 2}));
    EXPECT_FALSE(this->m_machine.folders.CreateFolder(this->File()));
    EXPECT_FALSE(this->m_machine.folders.CreateFolder(this->File() / "below"));
    EXPECT_EQ(this->Read(this->File()), (std::vector<std::uint8_t>{1, 2}));
}

TYPED_TEST_P(FoldersContract, ReplacesTheWholeContent) {
    ASSERT_TRUE(this->Replace(this->File(), this->Content(1000)));
    ASSERT_TRUE(this->Replace(this->File(), this->Content(10, 50)));
    EXPECT_EQ(this->Read(this->File()), this->Content(10, 50));
}

TYPED_TEST_P(FoldersContract, CreatesButNeverOverwrites) {
    ASSERT_TRUE(this->Create(this->File(), this->Content(10)));
    EXPECT_FALSE(this->Create(this->File(), this->Content(20)));
    EXPECT_EQ(this->Read(this->File()), this->Content(10));
}

TYPED_TEST_P(FoldersContract, WritesNoFileWhereAFolderIs) {
    const std::filesystem::path folder = this->File("folder");
    ASSERT_TRUE(this->m_machine.folders.CreateFolder(folder));
    ASSERT_TRUE(this->Create(folder / "inside", {5}));
    EXPECT_FALSE(this->Replace(folder, {1}));
    EXPECT_FALSE(this->Create(folder, {1}));
    EXPECT_EQ(this->Read(folder / "inside"), std::vector<std::uint8_t>{5});
}

TYPED_TEST_P(FoldersContract, LeavesWhatWasThereWhenTheDiskIsFull) {
    ASSERT_TRUE(this->Create(this->File(), this->Content(100)));
    this->m_machine.FillDisk();
    for (const std::size_t size : {100'000U, 100U}) {
        EXPECT_FALSE(this->Replace(this->File(), this->Content(size, 9))) << size;
        EXPECT_EQ(this->Read(this->File()), this->Content(100));
        EXPECT_FALSE(this->Create(this->File("new"), this->Content(size))) << size;
        EXPECT_FALSE(this->m_machine.folders.CanRead(this->File("new"))) << "no part of it may be left";
    }
}

REGISTER_TYPED_TEST_SUITE_P(FoldersContract, ReadsWhatItWrote, ReadsAtMostAsManyBytesAsItIsTold,
                            TellsTheSizeOfAFile, CannotReadAMissingFileOrAFolder,
                            MakesAFolderWithWhatIsMissingAboveIt, MakesNoFolderWhereAFileIs,
                            ReplacesTheWholeContent, CreatesButNeverOverwrites, WritesNoFileWhereAFolderIs,
                            LeavesWhatWasThereWhenTheDiskIsFull);

} // namespace tessaro
