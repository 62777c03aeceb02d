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
        if (file.empty())
            return PictureError{"the file is empty"};
        if (file.size() < headerBytes || std::memcmp(file.data(), "FAKE", 4) != 0)
            return PictureError{"not a fake picture"};
        std::memcpy(size, file.data() + 4, sizeof size);
        const std::int64_t width = size[0];
        const std::int64_t height = size[1];
        if (width <= 0 || height <= 0)
            return PictureError{"the picture has no pixels"};
        if (width > maximumPictureSide || height > maximumPictureSide ||
            width * height > maximumPicturePixels)
            return PictureError{"the picture is too large (" + std::to_string(width) + " x " +
                                std::to_string(height) + " pixels)"};
        if (file.size() - headerBytes != static_cast<std::size_t>(width * height * 4))
            return PictureError{"a fake picture of another length"};
        Picture picture(size[0], size[1]);
        std::copy(file.begin() + headerBytes, file.end(), picture.pixels.begin());
        return picture;
    }

    std::variant<std::vector<std::uint8_t>, PictureError> Encode(const Picture& picture,
                                                                 std::string_view mimeType) override {
        if (failEncoding)
            return PictureError{"encoding failed as the test asked for"};
        if (mimeType != "image/jpeg" && mimeType != "image/png")
            return PictureError{"no encoder for " + std::string(mimeType)};
        if (picture.width <= 0 || picture.height <= 0 ||
            picture.pixels.size() != std::size_t{4} * static_cast<std::size_t>(picture.width) *
                                         static_cast<std::size_t>(picture.height))
            return PictureError{"it is no picture"};
        const std::int32_t size[2] = {picture.width, picture.height};
        std::vector<std::uint8_t> bytes(headerBytes);
        std::memcpy(bytes.data(), "FAKE", 4);
        std::memcpy(bytes.data() + 4, size, sizeof size);
        bytes.insert(bytes.end(), picture.pixels.begin(), picture.pixels.end());
        return bytes;
    }

    std::vector<std::string> EncoderTypes() override { return encoderTypes; }

    bool failEncoding = false;
    std::vector<std::string> encoderTypes = {"image/jpeg", "image/png"};

private:
    static constexpr std::size_t headerBytes = 12;
};

} // namespace tessaro
