#pragma once

#include <fstream>
#include <ios>
#include <string>

namespace tessaro {

/// Writes a text or bytes to a file, over what may be there; false when not all of it could be written.
template<typename Bytes>
bool WriteWholeFile(const std::string& path, const Bytes& bytes) {
    std::ofstream file(path, std::ios::binary);
    file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    file.close();
    return static_cast<bool>(file);
}

} // namespace tessaro
