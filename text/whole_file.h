#pragma once

#include <fstream>
#include <ios>
#include <optional>
#include <sstream>
#include <string>
#include <utility>

namespace tessaro {

/// Writes a text or bytes to a file, over what may be there; false when not all of it could be written.
template<typename Bytes>
bool WriteWholeFile(const std::string& path, const Bytes& bytes) {
    std::ofstream file(path, std::ios::binary);
    file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    file.close();
    return static_cast<bool>(file);
}

/// All bytes of a file; nothing where it cannot be read.
inline std::optional<std::string> ReadWholeFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream bytes;
    if (!file || (file.peek() != std::ifstream::traits_type::eof() && !(bytes << file.rdbuf())) || file.bad())
        return std::nullopt;
    return std::move(bytes).str();
}

} // namespace tessaro
