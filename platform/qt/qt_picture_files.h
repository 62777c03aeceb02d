#pragma once

#include "platform/picture_files.h"

namespace tessaro {

/// Picture files by Qt's image plugins. Of the pixels of a decoded picture the unused byte is 255.
class QtPictureFiles : public PictureFiles {
public:
    std::variant<Picture, PictureError> Decode(std::span<const std::uint8_t> file) override;
    std::variant<std::vector<std::uint8_t>, PictureError> Encode(const Picture& picture,
                                                                 std::string_view mimeType) override;
    std::vector<std::string> EncoderTypes() override;
};

} // namespace tessaro
