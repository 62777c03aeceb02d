#pragma once

#include "platform/folders.h"

#include <algorithm>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <string_view>

namespace tessaro {

/// Files in memory. Failures are switched on by the test.
class MemoryFolders : public Folders {
public:
    std::filesystem::path DesktopFolder() override { return desktop; }

    bool CreateFolder(const std::filesystem::path& folder) override {
        Note("create", folder);
        if (failCreating)
            return false;
        for (std::filesystem::path part = folder; !part.empty(); part = part.parent_path()) {
            if (files.contains(part))
                return false;
            if (part == part.parent_path())
                break;
        }
        for (std::filesystem::path part = folder; part != part.parent_path(); part = part.parent_path())
            folders.insert(part);
        return true;
    }

    bool CanRead(const std::filesystem::path& file) override {
        return files.contains(file) && !unreadable.contains(file);
    }

    std::variant<std::uint64_t, FolderError> Size(const std::filesystem::path& file) override {
        if (const auto claimed = claimedSizes.find(file); claimed != claimedSizes.end())
            return claimed->second;
        const auto found = files.find(file);
        if (found == files.end())
            return FolderError{"no such file"};
        return std::uint64_t{found->second.size()};
    }

    std::variant<std::vector<std::uint8_t>, FolderError> Read(const std::filesystem::path& file,
                                                              std::size_t maximumBytes) override {
        Note("read", file);
        const auto found = files.find(file);
        if (found == files.end() || unreadable.contains(file))
            return FolderError{"no such file"};
        const auto& bytes = found->second;
        return std::vector<std::uint8_t>(
            bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(std::min(bytes.size(), maximumBytes)));
    }

    std::optional<FolderError> Replace(const std::filesystem::path& file,
                                       std::span<const std::uint8_t> content) override {
        Note("write", file);
        if (failWriting || !folders.contains(file.parent_path()) || folders.contains(file))
            return FolderError{"cannot write"};
        files[file].assign(content.begin(), content.end());
        return std::nullopt;
    }

    std::optional<FolderError> Create(const std::filesystem::path& file,
                                      std::span<const std::uint8_t> content) override {
        if (files.contains(file))
            return FolderError{"there is a file of that name"};
        return Replace(file, content);
    }

    void Put(const std::filesystem::path& file, std::string_view text) {
        files[file].assign(text.begin(), text.end());
    }

    std::string Text(const std::filesystem::path& file) const {
        const auto found = files.find(file);
        return found != files.end() ? std::string(found->second.begin(), found->second.end()) : std::string();
    }

    std::filesystem::path desktop = "/home/operator/Desktop";
    std::set<std::filesystem::path> folders;
    std::map<std::filesystem::path, std::vector<std::uint8_t>> files;
    std::set<std::filesystem::path> unreadable;                  // of the files
    std::map<std::filesystem::path, std::uint64_t> claimedSizes; // of files too large to be made for a test
    std::function<void(const std::string&)> onCall;              // told what is asked
    bool failCreating = false;
    bool failWriting = false;

private:
    void Note(const char* what, const std::filesystem::path& path) {
        if (onCall)
            onCall(what + (" " + path.filename().string()));
    }
};

} // namespace tessaro
