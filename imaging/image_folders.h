#pragma once

#include "imaging/frame_buffer.h"
#include "platform/folders.h"

#include <array>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace tessaro {

/// Where settings and images lie, below the user's desktop folder.
struct ImageFolders {
    /// Makes the working folder; a failure is ignored, as saving will show it.
    explicit ImageFolders(Folders& folders);

    std::filesystem::path desktop;
    std::filesystem::path working;  // Image_Data
    std::filesystem::path settings; // Config.txt
    std::array<char, 100> maskName = {"mask.png"};
    std::array<char, 100> alignmentMarkName = {"alignment_mark.png"};
    const char* mask = maskName.data();
    const char* alignmentMark = alignmentMarkName.data();

    std::string sessionName = "230101";
    std::filesystem::path plainSession;  // in the working folder
    std::filesystem::path detailRoot;    // Image_Detail
    std::filesystem::path detailSession; // in the detail root
    std::int32_t sessionMade = 0;

    /// The file last chosen for import. A dialog that is cancelled leaves it, so that the file is loaded
    /// again.
    std::optional<std::filesystem::path> importedFile;

    std::vector<std::array<std::int32_t, frameHeight>> map; // [1232][1028], zeroed

    ImageFolders(const ImageFolders&) = delete;
    ImageFolders& operator=(const ImageFolders&) = delete;
};

} // namespace tessaro
