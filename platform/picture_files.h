#pragma once

#include "platform/picture.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace tessaro {

/// Why a picture could not be decoded or encoded: a phrase for the operator, such as "the JPEG data is
/// damaged".
struct PictureError {
    std::string reason;
};

/// Decoding and encoding of picture files that are in memory. Calls from several threads at once are safe.
/// A picture or a file that there is no memory for is an error, "not enough memory".
class PictureFiles {
public:
    virtual ~PictureFiles() = default;

    /// JPEG, PNG, TIFF, BMP and PPM (with PGM and PBM), told apart by their content. The pixels come as they
    /// are stored: no rotation by EXIF, no colour management; transparency is dropped, 16 bits become 8.
    ///
    /// A file that is cut short or damaged is an error, never a picture with parts made up; so is one that
    /// claims more than maximumPictureSide pixels a side or maximumPicturePixels in all, which is found out
    /// before memory is taken for it.
    virtual std::variant<Picture, PictureError> Decode(std::span<const std::uint8_t> file) = 0;

    /// MIME types "image/jpeg" (the encoder's default quality), "image/png".
    virtual std::variant<std::vector<std::uint8_t>, PictureError> Encode(const Picture& picture,
                                                                         std::string_view mimeType) = 0;

    /// The MIME types that Encode knows.
    virtual std::vector<std::string> EncoderTypes() = 0;
};

inline constexpr int maximumPictureSide = 32767;
inline constexpr std::int64_t maximumPicturePixels = 100'000'000;

/// A file that is larger needs not be read: the largest picture takes no more without compression, with four
/// channels of 16 bits and a megabyte for what else there is in a file.
inline constexpr std::int64_t maximumPictureFileBytes = maximumPicturePixels * 8 + 1'000'000;

} // namespace tessaro
