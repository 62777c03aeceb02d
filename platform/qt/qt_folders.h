#pragma once

#include "platform/folders.h"

namespace tessaro {

/// Files by Qt; the desktop folder by the user's XDG settings, else $HOME/Desktop. Needs no application
/// object.
class QtFolders : public Folders {
public:
    std::filesystem::path DesktopFolder() override;
    bool CreateFolder(const std::filesystem::path& folder) override;
    bool CanRead(const std::filesystem::path& path) override;
    std::variant<std::uint64_t, FolderError> Size(const std::filesystem::path& path) override;
    std::variant<std::vector<std::uint8_t>, FolderError> Read(const std::filesystem::path& path,
                                                              std::size_t maximumBytes) override;
    std::optional<FolderError> Replace(const std::filesystem::path& path,
                                       std::span<const std::uint8_t> content) override;
    std::optional<FolderError> Create(const std::filesystem::path& path,
                                      std::span<const std::uint8_t> content) override;
};

} // namespace tessaro
