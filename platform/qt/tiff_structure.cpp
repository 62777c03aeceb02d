#include "platform/qt/file_bytes.h"
#include "platform/qt/picture_structure.h"

#include <algorithm>
#include <variant>
#include <vector>

namespace tessaro {

namespace {

constexpr std::string_view format = "TIFF";

enum Tag : std::uint16_t {
    ImageWidth = 256,
    ImageLength = 257,
    BitsPerSample = 258,
    CompressionScheme = 259,
    Photometric = 262,
    StripOffsets = 273,
    SamplesPerPixel = 277,
    RowsPerStrip = 278,
    StripByteCounts = 279,
    PlanarConfiguration = 284,
    TileWidth = 322,
    TileLength = 323,
    TileOffsets = 324,
    TileByteCounts = 325,
    ExtraSamples = 338,
};

constexpr std::uint64_t noCompression = 1;
constexpr std::uint64_t lumaAndChroma = 6; // its chroma may be stored more coarsely
constexpr std::uint64_t separatePlanes = 2;
constexpr std::uint16_t shortType = 3;

/// Bytes of one value of each field type; 0: a type that readers skip.
constexpr std::uint64_t TypeBytes(std::uint16_t type) {
    constexpr std::uint8_t bytes[] = {0, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8, 4, 0, 0, 8, 8, 8};
    return type < std::size(bytes) ? bytes[type] : 0;
}

struct Field {
    std::uint16_t tag = 0;
    std::uint16_t type = 0;
    std::uint64_t count = 0;
    std::uint64_t valuesAt = 0;
};

struct Directory {
    std::vector<Field> fields;    // those of known types
    std::uint64_t fieldCount = 0; // of all types
    std::uint64_t next = 0;       // 0: this is the last directory

    /// The first of its tag counts.
    const Field* Find(Tag tag) const {
        const auto found = std::ranges::find(fields, tag, &Field::tag);
        return found != fields.end() ? &*found : nullptr;
    }
};

/// TIFF and BigTIFF: a chain of directories of fields, each field with its values in it or elsewhere in the
/// file.
class TiffFile {
public:
    explicit TiffFile(std::span<const std::uint8_t> file)
        : m_bytes(file, file[0] == 'I' ? std::endian::little : std::endian::big) {}

    std::variant<std::uint64_t, PictureError> FirstDirectory() {
        m_big = m_bytes.U16(2) == 43;
        if (!m_bytes.Holds(0, m_big ? 16 : 8))
            return CutShort(format);
        if (m_big && (m_bytes.U16(4) != 8 || m_bytes.U16(6) != 0))
            return Damaged(format);
        const std::uint64_t first = Offset(m_big ? 8 : 4);
        return first != 0 ? std::variant<std::uint64_t, PictureError>(first) : Damaged(format);
    }

    std::variant<Directory, PictureError> Read(std::uint64_t offset) const {
        const std::uint64_t countBytes = m_big ? 8 : 2;
        const std::uint64_t fieldBytes = m_big ? 20 : 12;
        if (!m_bytes.Holds(offset, countBytes))
            return CutShort(format);
        const std::uint64_t count = m_big ? m_bytes.U64(offset) : m_bytes.U16(offset);
        const std::uint64_t fieldsAt = offset + countBytes;
        if (count > m_bytes.Size() / fieldBytes ||
            !m_bytes.Holds(fieldsAt, count * fieldBytes + OffsetBytes()))
            return CutShort(format);
        Directory directory;
        directory.fieldCount = count;
        for (std::uint64_t i = 0; i < count; ++i) {
            const Field field = ReadField(fieldsAt + i * fieldBytes);
            const std::uint64_t valueBytes = TypeBytes(field.type);
            if (valueBytes == 0)
                continue;
            if (field.count > m_bytes.Size() || !m_bytes.Holds(field.valuesAt, field.count * valueBytes))
                return CutShort(format);
            directory.fields.push_back(field);
        }
        directory.next = Offset(fieldsAt + count * fieldBytes);
        return directory;
    }

    bool Holds(std::uint64_t offset, std::uint64_t length) const { return m_bytes.Holds(offset, length); }

    /// 0 for a type that holds no whole numbers: no field used here may be 0.
    std::uint64_t Value(const Field& field, std::uint64_t index) const {
        const std::uint64_t position = field.valuesAt + index * TypeBytes(field.type);
        switch (field.type) {
        case 1:
            return m_bytes.U8(position);
        case shortType:
            return m_bytes.U16(position);
        case 4:
            return m_bytes.U32(position);
        case 16:
            return m_bytes.U64(position);
        default:
            return 0;
        }
    }

    std::uint64_t ValueOr(const Directory& directory, Tag tag, std::uint64_t missing) const {
        const Field* field = directory.Find(tag);
        return field != nullptr ? (field->count > 0 ? Value(*field, 0) : 0) : missing;
    }

private:
    std::uint64_t OffsetBytes() const { return m_big ? 8 : 4; }
    std::uint64_t Offset(std::uint64_t position) const {
        return m_big ? m_bytes.U64(position) : m_bytes.U32(position);
    }

    Field ReadField(std::uint64_t position) const {
        Field field;
        field.tag = m_bytes.U16(position);
        field.type = m_bytes.U16(position + 2);
        field.count = m_big ? m_bytes.U64(position + 4) : m_bytes.U32(position + 4);
        const std::uint64_t valuePosition = position + (m_big ? 12 : 8);
        const bool inside =
            field.count <= OffsetBytes() && field.count * TypeBytes(field.type) <= OffsetBytes();
        field.valuesAt = inside ? valuePosition : Offset(valuePosition);
        return field;
    }

    FileBytes m_bytes;
    bool m_big = false;
};

std::uint64_t PartsOf(std::uint64_t whole, std::uint64_t part) {
    return whole / part + (whole % part != 0);
}

/// How the pixels of one page are cut into pieces (strips or tiles).
struct PageLayout {
    std::uint64_t width = 0;
    std::uint64_t height = 0;
    std::uint64_t bitsPerSample = 0;
    std::uint64_t samples = 0;
    std::uint64_t planes = 0;
    std::uint64_t pieceWidth = 0;
    std::uint64_t pieceHeight = 0;
    bool tiled = false;

    std::uint64_t PiecesPerPlane() const { return PartsOf(width, pieceWidth) * PartsOf(height, pieceHeight); }
    std::uint64_t BytesOf(std::uint64_t rows) const {
        return PartsOf(pieceWidth * bitsPerSample * (planes > 1 ? 1 : samples), 8) * rows;
    }
    std::uint64_t RowsOf(std::uint64_t piece) const {
        const std::uint64_t top = piece % PiecesPerPlane() * pieceHeight;
        return tiled ? pieceHeight : std::min(pieceHeight, height - top);
    }
};

std::variant<PageLayout, PictureError> ReadLayout(const TiffFile& file, const Directory& page) {
    PageLayout layout;
    layout.width = file.ValueOr(page, ImageWidth, 0);
    layout.height = file.ValueOr(page, ImageLength, 0);
    constexpr std::uint64_t beyondAll = std::uint64_t{1} << 40;
    if (auto fault = FindSizeFault(static_cast<std::int64_t>(std::min(layout.width, beyondAll)),
                                   static_cast<std::int64_t>(std::min(layout.height, beyondAll))))
        return *fault;
    layout.bitsPerSample = file.ValueOr(page, BitsPerSample, 1);
    layout.samples = file.ValueOr(page, SamplesPerPixel, 1);
    layout.planes = file.ValueOr(page, PlanarConfiguration, 1) == separatePlanes ? layout.samples : 1;
    layout.tiled = page.Find(TileOffsets) != nullptr;
    layout.pieceWidth = layout.tiled ? file.ValueOr(page, TileWidth, 0) : layout.width;
    layout.pieceHeight = layout.tiled
                             ? file.ValueOr(page, TileLength, 0)
                             : std::min(file.ValueOr(page, RowsPerStrip, layout.height), layout.height);
    if (layout.bitsPerSample == 0 || layout.samples == 0 || layout.pieceWidth == 0 || layout.pieceHeight == 0)
        return Damaged(format);
    // What the decoder would take memory for: the whole page, and one piece, which may be larger than the
    // page.
    constexpr std::uint64_t maximumBits = std::uint64_t{maximumPicturePixels} * 64;
    constexpr std::uint64_t maximumPieceSide = maximumPictureSide + 1;
    if (layout.bitsPerSample > 64 || layout.samples > maximumBits / 64 ||
        layout.pieceWidth > maximumPieceSide || layout.pieceHeight > maximumPieceSide ||
        std::max(layout.width * layout.height, layout.pieceWidth * layout.pieceHeight) >
            maximumBits / (layout.bitsPerSample * layout.samples))
        return Unsupported(format);
    return layout;
}

/// All pieces of one page must be in the file, each as long as it has to be as far as that can be known.
/// `budget` pays for the work: pieces of several pages never share the bytes that list them in a sound file.
std::optional<PictureError> FindPageFault(const TiffFile& file, const Directory& page,
                                          std::uint64_t& budget) {
    const auto read = ReadLayout(file, page);
    if (const auto* fault = std::get_if<PictureError>(&read))
        return *fault;
    const auto& layout = std::get<PageLayout>(read);
    const Field* offsets = page.Find(layout.tiled ? TileOffsets : StripOffsets);
    const Field* byteCounts = page.Find(layout.tiled ? TileByteCounts : StripByteCounts);
    const std::uint64_t pieces = layout.PiecesPerPlane() * layout.planes;
    // The decoder would read the pieces that are not listed from the start of the file.
    if (offsets == nullptr || byteCounts == nullptr || offsets->count < pieces ||
        byteCounts->count < pieces || pieces > budget)
        return Damaged(format);
    budget -= pieces;
    const bool lengthKnown = file.ValueOr(page, CompressionScheme, noCompression) == noCompression &&
                             file.ValueOr(page, Photometric, 0) != lumaAndChroma;
    for (std::uint64_t piece = 0; piece < pieces; ++piece) {
        const std::uint64_t offset = file.Value(*offsets, piece);
        const std::uint64_t length = file.Value(*byteCounts, piece);
        if (offset == 0 || length == 0 || (lengthKnown && length < layout.BytesOf(layout.RowsOf(piece))))
            return Damaged(format);
        if (!file.Holds(offset, length))
            return CutShort(format);
    }
    return std::nullopt;
}

} // namespace

std::optional<PictureError> FindTiffFault(std::span<const std::uint8_t> file) {
    TiffFile tiff(file);
    const auto first = tiff.FirstDirectory();
    if (const auto* fault = std::get_if<PictureError>(&first))
        return *fault;
    std::uint64_t budget = file.size(); // more fields or pieces than bytes: the directories run in circles
    for (std::uint64_t offset = std::get<std::uint64_t>(first); offset != 0;) {
        const auto read = tiff.Read(offset);
        if (const auto* fault = std::get_if<PictureError>(&read))
            return *fault;
        const auto& page = std::get<Directory>(read);
        if (page.fieldCount == 0 || page.fieldCount > budget)
            return Damaged(format);
        budget -= page.fieldCount;
        if (auto fault = FindPageFault(tiff, page, budget))
            return fault;
        offset = page.next;
    }
    return std::nullopt;
}

ByteRange FindTiffExtraSamples(std::span<const std::uint8_t> file) {
    TiffFile tiff(file);
    const auto first = tiff.FirstDirectory();
    if (const auto* offset = std::get_if<std::uint64_t>(&first)) {
        const auto read = tiff.Read(*offset);
        const auto* page = std::get_if<Directory>(&read);
        const Field* extra = page != nullptr ? page->Find(ExtraSamples) : nullptr;
        if (extra != nullptr && extra->type == shortType)
            return {static_cast<std::size_t>(extra->valuesAt), static_cast<std::size_t>(extra->count * 2)};
    }
    return {};
}

} // namespace tessaro
