#pragma once

#include "platform/picture_files.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace tessaro {

/// A look at the skeleton of a picture file before any decoder sees it: is the size acceptable, are all parts
/// there? The decoders fill in what is missing without a word, so this is where a file that was cut short is
/// found. Each function expects a file that begins with its format's magic bytes.
std::optional<PictureError> FindJpegFault(std::span<const std::uint8_t> file);
std::optional<PictureError> FindPngFault(std::span<const std::uint8_t> file);
std::optional<PictureError> FindTiffFault(std::span<const std::uint8_t> file);
std::optional<PictureError> FindBmpFault(std::span<const std::uint8_t> file);

/// Where a sound TIFF file says what its extra channels mean (the values of the first page's ExtraSamples).
struct ByteRange {
    std::size_t offset = 0;
    std::size_t length = 0; // 0: there are none
};
ByteRange FindTiffExtraSamples(std::span<const std::uint8_t> file);

/// The reasons that all formats share.
PictureError CutShort(std::string_view format);
PictureError Damaged(std::string_view format);
PictureError Unsupported(std::string_view format);
std::optional<PictureError> FindSizeFault(std::int64_t width, std::int64_t height);

} // namespace tessaro
