#include "analyze/result_files.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <system_error>

namespace tessaro {
namespace {

FileError LastError() {
    return {std::generic_category().message(errno)};
}

bool WriteAll(OpenFile file, std::span<const std::uint8_t> bytes) {
    const bool written = std::fwrite(bytes.data(), 1, bytes.size(), file.get()) == bytes.size();
    return std::fclose(file.release()) == 0 && written; // a full disk may show at closing only
}

} // namespace

std::variant<std::vector<std::uint8_t>, FileError> ReadFile(const std::filesystem::path& path) {
    std::error_code error;
    const auto status = std::filesystem::status(path, error);
    if (!std::filesystem::exists(status))
        return FileError{error ? error.message() : "no such file"};
    if (std::filesystem::is_directory(status))
        return FileError{"it is a folder"};
    if (!std::filesystem::is_regular_file(status))
        return FileError{"it is not a file"};
    const std::uintmax_t size = std::filesystem::file_size(path, error);
    if (error)
        return FileError{error.message()};
    if (size > maximumFileBytes)
        return FileError{"the file is too large"};

    std::ifstream file(path, std::ios::binary);
    if (!file)
        return LastError();
    std::vector<std::uint8_t> bytes(static_cast<std::size_t>(size));
    file.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    if (file.gcount() != static_cast<std::streamsize>(bytes.size()))
        return FileError{"the file could not be read to its end"};
    return bytes;
}

std::variant<std::filesystem::path, FileError> WriteNewFile(const std::filesystem::path& folder,
                                                            const std::string& stem,
                                                            const std::string& extension,
                                                            std::span<const std::uint8_t> bytes) {
    std::filesystem::path path = folder / (stem + '.' + extension);
    for (int counter = 0;; ++counter) {
        OpenFile file(std::fopen(path.string().c_str(), "wbx"));
        if (file) {
            if (WriteAll(std::move(file), bytes))
                return path;
            const FileError error = LastError();
            std::error_code ignored;
            std::filesystem::remove(path, ignored);
            return error;
        }
        if (errno != EEXIST)
            return LastError();
        std::string name = stem;
        name.append("_").append(std::to_string(counter)).append(".").append(extension);
        path = folder / name;
    }
}

} // namespace tessaro
