#include "platform/qt/file_bytes.h"
#include "platform/qt/picture_structure.h"

namespace tessaro {

namespace {

constexpr std::string_view format = "BMP";

constexpr std::uint64_t fileHeaderBytes = 14;
constexpr std::uint32_t coreHeaderBytes = 12; // OS/2, 16-bit sizes, palette of three bytes a colour
constexpr std::uint32_t os2HeaderBytes = 64;
constexpr std::uint32_t windowsHeaderBytes = 40;
constexpr std::uint32_t windows4HeaderBytes = 108;
constexpr std::uint32_t windows5HeaderBytes = 124;

enum Compression : std::uint32_t { Plain = 0, RunLength8 = 1, RunLength4 = 2, BitFields = 3 };

struct BmpHeader {
    std::uint32_t bytes = 0;
    std::int64_t width = 0;
    std::int64_t height = 0;
    bool topDown = false;
    std::uint32_t planes = 0;
    std::uint32_t bitsPerPixel = 0;
    std::uint32_t compression = Plain;
    std::uint32_t colours = 0;
    std::uint64_t dataOffset = 0;
};

std::uint64_t BytesBeforeData(const BmpHeader& header) {
    const std::uint64_t masks =
        header.bytes == windowsHeaderBytes && header.compression == BitFields ? 12 : 0;
    const std::uint64_t paletteEntry = header.bytes == coreHeaderBytes ? 3 : 4;
    return fileHeaderBytes + header.bytes + masks + paletteEntry * header.colours;
}

bool IsSupported(const BmpHeader& header) {
    switch (header.compression) {
    case Plain:
        return header.bitsPerPixel == 1 || header.bitsPerPixel == 4 || header.bitsPerPixel == 8 ||
               header.bitsPerPixel == 16 || header.bitsPerPixel == 24 || header.bitsPerPixel == 32;
    case RunLength8:
        return header.bitsPerPixel == 8 && !header.topDown;
    case RunLength4:
        return header.bitsPerPixel == 4 && !header.topDown;
    case BitFields:
        return header.bytes != os2HeaderBytes && (header.bitsPerPixel == 16 || header.bitsPerPixel == 32);
    default:
        return false;
    }
}

BmpHeader ReadHeader(const FileBytes& bytes) {
    BmpHeader header;
    header.dataOffset = bytes.U32(10);
    header.bytes = bytes.U32(fileHeaderBytes);
    if (header.bytes == coreHeaderBytes) {
        header.width = bytes.U16(18);
        header.height = bytes.U16(20);
        header.planes = bytes.U16(22);
        header.bitsPerPixel = bytes.U16(24);
    } else {
        const std::int64_t height = bytes.I32(22);
        header.width = bytes.I32(18);
        header.height = height < 0 ? -height : height;
        header.topDown = height < 0;
        header.planes = bytes.U16(26);
        header.bitsPerPixel = bytes.U16(28);
        header.compression = bytes.U32(30);
        header.colours = bytes.U32(46);
    }
    if (header.bitsPerPixel > 8)
        header.colours = 0; // a palette here is a hint for displays, and is skipped by the offset of the data
    else if (header.colours == 0)
        header.colours = 1u << header.bitsPerPixel;
    return header;
}

/// Every row must be written to its end: pixels that the runs leave out would be made up by the decoder.
std::optional<PictureError> FindRunLengthFault(const FileBytes& bytes, const BmpHeader& header) {
    constexpr std::uint8_t endOfLine = 0;
    constexpr std::uint8_t endOfBitmap = 1;
    constexpr std::uint8_t skip = 2;
    std::uint64_t position = header.dataOffset;
    std::int64_t x = 0;
    std::int64_t y = 0;
    while (true) {
        if (!bytes.Holds(position, 2))
            return CutShort(format);
        const std::uint8_t count = bytes.U8(position);
        const std::uint8_t value = bytes.U8(position + 1);
        position += 2;
        if (count == 0 && value == endOfBitmap) {
            const bool complete =
                (x == 0 && y == header.height) || (x == header.width && y == header.height - 1);
            return complete ? std::nullopt : std::optional(Damaged(format));
        }
        if (count == 0 && value == endOfLine) {
            if (x != header.width)
                return Damaged(format);
            x = 0;
            ++y;
        } else if (count == 0 && value == skip) {
            return Damaged(format);
        } else if (count == 0) {
            const std::uint64_t literal = header.compression == RunLength8 ? value : (value + 1u) / 2;
            const std::uint64_t padded = literal + literal % 2;
            if (!bytes.Holds(position, padded))
                return CutShort(format);
            position += padded;
            x += value;
        } else {
            x += count;
        }
        if (x > header.width || (x > 0 && y >= header.height))
            return Damaged(format);
    }
}

} // namespace

std::optional<PictureError> FindBmpFault(std::span<const std::uint8_t> file) {
    const FileBytes bytes(file, std::endian::little);
    if (!bytes.Holds(fileHeaderBytes, 4) || !bytes.Holds(fileHeaderBytes, bytes.U32(fileHeaderBytes)))
        return CutShort(format);
    switch (bytes.U32(fileHeaderBytes)) {
    case coreHeaderBytes:
    case windowsHeaderBytes:
    case os2HeaderBytes:
    case windows4HeaderBytes:
    case windows5HeaderBytes:
        break;
    default:
        return Unsupported(format);
    }
    const BmpHeader header = ReadHeader(bytes);
    if (auto fault = FindSizeFault(header.width, header.height))
        return fault;
    if (!IsSupported(header))
        return Unsupported(format);
    if (header.planes != 1 || (header.bitsPerPixel <= 8 && header.colours > 1u << header.bitsPerPixel) ||
        header.dataOffset < BytesBeforeData(header))
        return Damaged(format);
    if (header.compression == RunLength8 || header.compression == RunLength4)
        return FindRunLengthFault(bytes, header);
    const std::uint64_t rowBits = static_cast<std::uint64_t>(header.width) * header.bitsPerPixel;
    const std::uint64_t rowBytes = (rowBits + 31) / 32 * 4;
    if (!bytes.Holds(header.dataOffset, rowBytes * static_cast<std::uint64_t>(header.height)))
        return CutShort(format);
    return std::nullopt;
}

} // namespace tessaro
