#pragma once

#include "platform/picture.h"

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

// Picture files made by hand, byte by byte, so that no library stands between a test and what it means.

namespace tessaro::samples {

using Bytes = std::vector<std::uint8_t>;

Bytes ToBytes(std::string_view text);
void Append(Bytes& bytes, const Bytes& more);

/// `bytes` with the first occurrence of `from`, which must be there, replaced by `to`.
Bytes Replaced(const Bytes& bytes, const Bytes& from, const Bytes& to);

/// A picture of smooth colours that differ at every pixel; its unused bytes are 255.
Picture Colourful(int width, int height);

/// The rows of the picture from the top down, red, green, blue a pixel.
Bytes RgbRows(const Picture& picture);

struct PngOptions {
    int bitDepth = 8;
    int colourType = 2; // 0 grey, 2 RGB, 3 palette, 4 grey alpha, 6 RGB alpha
    std::vector<std::pair<std::string_view, Bytes>> chunks; // between the header and the data
};
/// `rows`: each row as the format stores it, without its filter byte.
Bytes Png(std::uint32_t width, std::uint32_t height, const std::vector<Bytes>& rows,
          const PngOptions& options = {});

struct BmpOptions {
    int bitsPerPixel = 24;
    std::uint32_t compression = 0;
    Bytes palette{}; // four bytes a colour
    std::uint32_t coloursUsed = 0;
};
/// A negative height means rows from the top down.
Bytes Bmp(std::int32_t width, std::int32_t height, const Bytes& data, const BmpOptions& options = {});
/// The rows as a 24-bit BMP stores them: from the bottom up, blue first, padded to four bytes.
Bytes BmpRows(const Picture& picture);

struct TiffOptions {
    bool bigEndian = false;
    bool bigTiff = false;
    std::uint16_t samplesPerPixel = 3;
    std::uint16_t bitsPerSample = 8;
    std::uint16_t compression = 1;
    std::uint16_t photometric = 2;                                     // 1 grey, 2 RGB, 3 palette, 5 CMYK
    std::uint32_t rowsPerStrip = 0;                                    // 0: all rows in one strip
    std::vector<std::pair<std::uint16_t, std::uint16_t>> moreFields{}; // tag and one 16-bit value each
};
/// The directory comes first and the strips behind it, so that every cut takes pixels away.
Bytes Tiff(std::uint32_t width, std::uint32_t height, const std::vector<Bytes>& strips,
           const TiffOptions& options = {});

/// One segment of a JPEG: marker and length in front of the content.
Bytes JpegSegment(std::uint8_t marker, const Bytes& content);

/// What a grey baseline JPEG is made of, to build other kinds of JPEG from.
struct GreyJpegParts {
    Bytes tables; // the quantisation and Huffman tables, as whole segments
    Bytes scan;   // entropy-coded data
};
GreyJpegParts TakeApart(const Bytes& greyJpeg);

/// The grey picture as the channels of a picture with `components` of one scan each; without its last
/// `missingScans` scans.
Bytes JpegOfSeparateScans(const GreyJpegParts& grey, std::uint16_t width, std::uint16_t height,
                          int components, int missingScans = 0);

} // namespace tessaro::samples
