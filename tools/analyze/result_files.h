#pragma once

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <span>
#include <string>
#include <variant>
#include <vector>

namespace tessaro {

struct FileError {
    std::string reason;
};

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using OpenFile = std::unique_ptr<std::FILE, CloseFile>;

/// Largest file that is read; nothing that a camera or a scanner makes comes near it.
inline constexpr std::uintmax_t maximumFileBytes = std::uintmax_t{1} << 30U;

/// A whole regular file.
std::variant<std::vector<std::uint8_t>, FileError> ReadFile(const std::filesystem::path& path);

/// Writes a new file "folder/stem.extension", or "folder/stem_0.extension", "..._1.extension", ... when that
/// name is taken; never overwrites. A file that could not be written whole is removed again. Returns the
/// path.
std::variant<std::filesystem::path, FileError> WriteNewFile(const std::filesystem::path& folder,
                                                            const std::string& stem,
                                                            const std::string& extension,
                                                            std::span<const std::uint8_t> bytes);

} // namespace tessaro
