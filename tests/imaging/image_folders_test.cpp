#include "imaging/image_folders.h"
#include "platform/fake/memory_folders.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace tessaro {
namespace {

TEST(ImageFolders, LieBelowTheDesktop) {
    MemoryFolders files;
    files.desktop = "/home/operator/Desktop";
    const ImageFolders folders(files);
    EXPECT_EQ(folders.desktop, "/home/operator/Desktop");
    EXPECT_EQ(folders.working, "/home/operator/Desktop/Image_Data");
    EXPECT_EQ(folders.settings, "/home/operator/Desktop/Image_Data/Config.txt");
}

TEST(ImageFolders, MakeTheWorkingFolderAndNothingElse) {
    MemoryFolders files;
    std::vector<std::string> calls;
    files.onCall = [&](const std::string& call) { calls.push_back(call); };
    const ImageFolders folders(files);
    EXPECT_EQ(calls, std::vector<std::string>{"create Image_Data"});
    EXPECT_TRUE(files.folders.contains(folders.working));
    EXPECT_TRUE(files.files.empty());
}

TEST(ImageFolders, GoOnWithoutTheWorkingFolder) {
    MemoryFolders files;
    files.failCreating = true;
    const ImageFolders folders(files);
    EXPECT_EQ(folders.working, files.desktop / "Image_Data");
}

TEST(ImageFolders, StartWithoutSessionAndWithoutImportedFile) {
    MemoryFolders files;
    const ImageFolders folders(files);
    EXPECT_EQ(folders.sessionName, "230101");
    EXPECT_EQ(folders.sessionMade, 0);
    EXPECT_EQ(folders.importedFile, std::nullopt);
}

TEST(ImageFolders, KnowTheNamesOfMaskAndAlignmentMark) {
    MemoryFolders files;
    const ImageFolders folders(files);
    EXPECT_STREQ(folders.mask, "mask.png");
    EXPECT_STREQ(folders.alignmentMark, "alignment_mark.png");
    EXPECT_EQ(folders.maskName.size(), 100U);
    EXPECT_EQ(folders.alignmentMarkName.size(), 100U);
}

TEST(ImageFolders, HoldAMapOfZerosOfTheFramesSize) {
    MemoryFolders files;
    const ImageFolders folders(files);
    ASSERT_EQ(folders.map.size(), 1232U);
    EXPECT_EQ(folders.map[0].size(), 1028U);
    for (const auto& column : folders.map)
        ASSERT_TRUE(std::all_of(column.begin(), column.end(), [](std::int32_t cell) { return cell == 0; }));
}

} // namespace
} // namespace tessaro
