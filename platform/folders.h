#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <variant>
#include <vector>

namespace tessaro {

/// Why a file could not be read: a phrase for the operator, such as "No such file or directory".
struct FolderError {
    std::string reason;
};

/// Folders and small files of the user. No call throws.
class Folders {
public:
    virtual ~Folders() = default;

    /// Where the user's desktop shows its files. It need not exist.
    virtual std::filesystem::path DesktopFolder() = 0;

    /// Makes the folder, and what is missing above it. True when it is there afterwards.
    virtual bool CreateFolder(const std::filesystem::path& folder) = 0;

    /// Whether the file can be opened for reading; it is closed again.
    virtual bool CanRead(const std::filesystem::path& file) = 0;

    /// How many bytes the file has, without reading it.
    virtual std::variant<std::uint64_t, FolderError> Size(const std::filesystem::path& file) = 0;

    /// The file's first bytes, at most so many.
    virtual std::variant<std::vector<std::uint8_t>, FolderError> Read(const std::filesystem::path& file,
                                                                      std::size_t maximumBytes) = 0;

    /// Gives the file this content, whole or not at all: a disk that is full, or a crash, leaves what was
    /// there. Nothing on success.
    virtual std::optional<FolderError> Replace(const std::filesystem::path& file,
                                               std::span<const std::uint8_t> content) = 0;

    /// The same for a file that is not there yet; an error when it is, readable or not.
    virtual std::optional<FolderError> Create(const std::filesystem::path& file,
                                              std::span<const std::uint8_t> content) = 0;
};

/// The folders of the machine that the program runs on; each set of adapters defines it. It may be called
/// before main, because the working folder is made when the global objects are.
Folders& NativeFolders();

} // namespace tessaro
