#include "platform/qt/file_bytes.h"
#include "platform/qt/picture_structure.h"

#include <array>

namespace tessaro {

namespace {

constexpr std::string_view format = "PNG";

constexpr std::uint64_t signatureBytes = 8;
constexpr std::uint64_t headerBytes = 13;
constexpr std::uint64_t chunkFrame = 12;          // length and type before the content, checksum after it
constexpr std::uint32_t headerChunk = 0x49484452; // "IHDR"
constexpr std::uint32_t endChunk = 0x49454E44;    // "IEND"

constexpr std::array<std::uint32_t, 256> MakeChecksumTable() {
    std::array<std::uint32_t, 256> table{};
    for (std::uint32_t i = 0; i < 256; ++i) {
        std::uint32_t value = i;
        for (int bit = 0; bit < 8; ++bit)
            value = (value & 1) != 0 ? 0xEDB88320u ^ (value >> 1) : value >> 1;
        table[i] = value;
    }
    return table;
}

std::uint32_t Checksum(std::span<const std::uint8_t> bytes) {
    static constexpr auto table = MakeChecksumTable();
    std::uint32_t sum = 0xFFFFFFFFu;
    for (const std::uint8_t byte : bytes)
        sum = table[(sum ^ byte) & 0xFF] ^ (sum >> 8);
    return ~sum;
}

} // namespace

// The decoder ignores a wrong checksum of the chunks that it can do without, and completes a cut one.
std::optional<PictureError> FindPngFault(std::span<const std::uint8_t> file) {
    const FileBytes bytes(file, std::endian::big);
    std::uint64_t position = signatureBytes;
    while (true) {
        if (!bytes.Holds(position, chunkFrame))
            return CutShort(format);
        const std::uint64_t length = bytes.U32(position);
        const std::uint32_t type = bytes.U32(position + 4);
        if ((position == signatureBytes) != (type == headerChunk && length == headerBytes))
            return Damaged(format);
        if (!bytes.Holds(position, chunkFrame + length))
            return CutShort(format);
        const auto typeAndContent =
            file.subspan(static_cast<std::size_t>(position + 4), static_cast<std::size_t>(4 + length));
        if (Checksum(typeAndContent) != bytes.U32(position + 8 + length))
            return Damaged(format);
        if (type == headerChunk) {
            if (auto fault = FindSizeFault(bytes.U32(position + 8), bytes.U32(position + 12)))
                return fault;
        }
        if (type == endChunk)
            return std::nullopt;
        position += chunkFrame + length;
    }
}

} // namespace tessaro
