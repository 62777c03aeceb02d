#include "platform/qt/file_bytes.h"
#include "platform/qt/picture_structure.h"

#include <bitset>

namespace tessaro {

namespace {

constexpr std::string_view format = "JPEG";

// The second byte of each marker; the first is 0xFF.
constexpr std::uint8_t markerPrefix = 0xFF;
constexpr std::uint8_t stuffedZero = 0x00; // 0xFF 0x00 inside a scan is the data byte 0xFF
constexpr std::uint8_t temporary = 0x01;
constexpr std::uint8_t startOfFrame0 = 0xC0;
constexpr std::uint8_t huffmanTables = 0xC4;
constexpr std::uint8_t jpegExtension = 0xC8;
constexpr std::uint8_t arithmeticConditioning = 0xCC;
constexpr std::uint8_t startOfFrame15 = 0xCF;
constexpr std::uint8_t restart0 = 0xD0;
constexpr std::uint8_t restart7 = 0xD7;
constexpr std::uint8_t startOfImage = 0xD8;
constexpr std::uint8_t endOfImage = 0xD9;
constexpr std::uint8_t startOfScan = 0xDA;

/// Encoders write about ten. Each scan costs a pass over the whole picture, so a file of thousands of empty
/// ones would keep the decoder busy for hours.
constexpr int maximumScans = 500;

bool IsRestart(std::uint8_t marker) {
    return marker >= restart0 && marker <= restart7;
}

bool IsFrameHeader(std::uint8_t marker) {
    return marker >= startOfFrame0 && marker <= startOfFrame15 && marker != huffmanTables &&
           marker != jpegExtension && marker != arithmeticConditioning;
}

/// Walks from marker to marker up to the end of the image; what follows that is not part of the picture.
class JpegWalk {
public:
    explicit JpegWalk(std::span<const std::uint8_t> file) : m_bytes(file, std::endian::big) {}

    std::optional<PictureError> Run() {
        while (true) {
            if (!m_bytes.Holds(m_position, 2))
                return CutShort(format);
            if (m_bytes.U8(m_position) != markerPrefix)
                return Damaged(format);
            const std::uint8_t marker = m_bytes.U8(m_position + 1);
            if (marker == markerPrefix) { // a fill byte
                ++m_position;
                continue;
            }
            m_position += 2;
            if (marker == endOfImage)
                return AllComponentsSeen() ? std::nullopt : std::optional(Damaged(format));
            if (marker == temporary)
                continue;
            if (marker == stuffedZero || marker == startOfImage || IsRestart(marker))
                return Damaged(format);
            if (auto fault = TakeSegment(marker))
                return fault;
        }
    }

private:
    std::optional<PictureError> TakeSegment(std::uint8_t marker) {
        if (!m_bytes.Holds(m_position, 2))
            return CutShort(format);
        const std::uint64_t length = m_bytes.U16(m_position);
        if (length < 2)
            return Damaged(format);
        if (!m_bytes.Holds(m_position, length))
            return CutShort(format);
        const std::uint64_t content = m_position + 2;
        m_position += length;
        if (IsFrameHeader(marker))
            return TakeFrameHeader(content, length - 2);
        if (marker == startOfScan)
            return TakeScan(content, length - 2);
        return std::nullopt;
    }

    std::optional<PictureError> TakeFrameHeader(std::uint64_t content, std::uint64_t length) {
        constexpr std::uint64_t fixedPart = 6; // precision, height, width, number of components
        if (m_declared.any() || length < fixedPart || length < fixedPart + 3u * m_bytes.U8(content + 5))
            return Damaged(format);
        for (std::uint64_t i = 0; i < m_bytes.U8(content + 5); ++i)
            m_declared.set(m_bytes.U8(content + fixedPart + 3 * i));
        if (m_declared.none())
            return Damaged(format);
        return FindSizeFault(m_bytes.U16(content + 3), m_bytes.U16(content + 1));
    }

    std::optional<PictureError> TakeScan(std::uint64_t content, std::uint64_t length) {
        if (m_declared.none() || length < 1 || length < 1 + 2u * m_bytes.U8(content) ||
            ++m_scans > maximumScans)
            return Damaged(format);
        for (std::uint64_t i = 0; i < m_bytes.U8(content); ++i)
            m_scanned.set(m_bytes.U8(content + 1 + 2 * i));
        SkipScanData();
        return std::nullopt;
    }

    void SkipScanData() {
        while (m_bytes.Holds(m_position, 2)) {
            const std::uint8_t next = m_bytes.U8(m_position + 1);
            if (m_bytes.U8(m_position) != markerPrefix)
                ++m_position;
            else if (next == stuffedZero || IsRestart(next))
                m_position += 2;
            else
                return; // a marker, or a fill byte before one
        }
        m_position = m_bytes.Size();
    }

    /// A component without a scan would be made up (grey instead of colour, say).
    bool AllComponentsSeen() const { return m_declared.any() && (m_declared & ~m_scanned).none(); }

    FileBytes m_bytes;
    std::uint64_t m_position = 2; // after the start of the image
    std::bitset<256> m_declared;
    std::bitset<256> m_scanned;
    int m_scans = 0;
};

} // namespace

std::optional<PictureError> FindJpegFault(std::span<const std::uint8_t> file) {
    return JpegWalk(file).Run();
}

} // namespace tessaro
