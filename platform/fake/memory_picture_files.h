#pragma once

#include "platform/picture_files.h"

#include <algorithm>
#include <cstring>
#include <string>

namespace tessaro {

/// Pictures in a format of its own: "FAKE", width and height as 32-bit integers of this machine, then the
/// pixels. Anything else is no picture.
class MemoryPictureFiles : public PictureFiles {
public:
    std::variant<Picture, PictureError> Decode(std::span<const std::uint8_t> file) override {
        std::int32_t size[2] = {};
        if (file.size() < headerBytes || std::memcmp(file.data(), "FAKE", 4) != 0)
            return PictureError{"not a fake picture"};
        std::memcpy(size, file.data() + 4, sizeof size);
        Picture picture(size[0], size[1]);
        if (file.size() != headerBytes + picture.pixels.size())
            return PictureError{"a fake picture of another length"};
        std::copy(file.begin() + headerBytes, file.end(), picture.pixels.begin());
        return picture;
    }

    std::variant<std::vector<std::uint8_t>, PictureError> Encode(const Picture& picture,
                                                                 std::string_view mimeType) override {
        if (failEncoding)
            return PictureError{"encoding failed as the test asked for"};
        if (mimeType != "image/jpeg" && mimeType != "image/png")
            return PictureError{"no encoder for " + std::string(mimeType)};
        const std::int32_t size[2] = {picture.width, picture.height};
        std::vector<std::uint8_t> bytes(headerBytes);
        std::memcpy(bytes.data(), "FAKE", 4);
        std::memcpy(bytes.data() + 4, size, sizeof size);
        bytes.insert(bytes.end(), picture.pixels.begin(), picture.pixels.end());
        return bytes;
    }

    bool failEncoding = false;

private:
    static constexpr std::size_t headerBytes = 12;
};

} // namespace tessaro
