#include "tests/platform/sample_pictures.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace tessaro::samples {

namespace {

void Put(Bytes& bytes, std::uint64_t number, int count, bool bigEndian) {
    for (int i = 0; i < count; ++i) {
        const int place = bigEndian ? count - 1 - i : i;
        bytes.push_back(static_cast<std::uint8_t>(number >> (8 * place)));
    }
}

void PutPngChunk(Bytes& file, std::string_view type, const Bytes& content) {
    Bytes checked = ToBytes(type);
    Append(checked, content);
    std::uint32_t sum = 0xFFFFFFFFu;
    for (const std::uint8_t byte : checked) {
        sum ^= byte;
        for (int bit = 0; bit < 8; ++bit)
            sum = (sum & 1) != 0 ? 0xEDB88320u ^ (sum >> 1) : sum >> 1;
    }
    Put(file, content.size(), 4, true);
    Append(file, checked);
    Put(file, ~sum, 4, true);
}

/// A zlib stream that stores the bytes uncompressed.
Bytes Stored(const Bytes& bytes) {
    Bytes stream{0x78, 0x01, 0x01};
    Put(stream, bytes.size(), 2, false);
    Put(stream, ~bytes.size(), 2, false);
    Append(stream, bytes);
    std::uint32_t a = 1;
    std::uint32_t b = 0;
    for (const std::uint8_t byte : bytes) {
        a = (a + byte) % 65521;
        b = (b + a) % 65521;
    }
    Put(stream, b << 16 | a, 4, true);
    return stream;
}

constexpr std::uint8_t startOfFrame = 0xC0;
constexpr std::uint8_t huffmanTable = 0xC4;
constexpr std::uint8_t startOfScan = 0xDA;
constexpr std::uint8_t quantisationTable = 0xDB;

} // namespace

Bytes ToBytes(std::string_view text) {
    return Bytes(text.begin(), text.end());
}

void Append(Bytes& bytes, const Bytes& more) {
    bytes.insert(bytes.end(), more.begin(), more.end());
}

Bytes Replaced(const Bytes& bytes, const Bytes& from, const Bytes& to) {
    const auto found = std::search(bytes.begin(), bytes.end(), from.begin(), from.end());
    if (found == bytes.end()) {
        ADD_FAILURE() << "the sample does not contain what the test wants to replace";
        return bytes;
    }
    Bytes result(bytes.begin(), found);
    Append(result, to);
    result.insert(result.end(), found + static_cast<std::ptrdiff_t>(from.size()), bytes.end());
    return result;
}

Picture Colourful(int width, int height) {
    Picture picture(width, height);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            std::uint8_t* pixel = picture.Pixel(x, y);
            pixel[0] = static_cast<std::uint8_t>(3 * x + 5 * y);
            pixel[1] = static_cast<std::uint8_t>(6 * x + 40);
            pixel[2] = static_cast<std::uint8_t>(200 - 6 * y);
            pixel[3] = 255;
        }
    }
    return picture;
}

Bytes RgbRows(const Picture& picture) {
    Bytes rows;
    for (std::size_t i = 0; i < picture.pixels.size(); i += 4)
        Append(rows, {picture.pixels[i + 2], picture.pixels[i + 1], picture.pixels[i]});
    return rows;
}

Bytes Png(std::uint32_t width, std::uint32_t height, const std::vector<Bytes>& rows,
          const PngOptions& options) {
    Bytes file{0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    Bytes header;
    Put(header, width, 4, true);
    Put(header, height, 4, true);
    Append(header, {static_cast<std::uint8_t>(options.bitDepth),
                    static_cast<std::uint8_t>(options.colourType), 0, 0, 0});
    PutPngChunk(file, "IHDR", header);
    for (const auto& [type, content] : options.chunks)
        PutPngChunk(file, type, content);
    Bytes filtered;
    for (const Bytes& row : rows) {
        filtered.push_back(0); // no filter
        Append(filtered, row);
    }
    PutPngChunk(file, "IDAT", Stored(filtered));
    PutPngChunk(file, "IEND", {});
    return file;
}

Bytes Bmp(std::int32_t width, std::int32_t height, const Bytes& data, const BmpOptions& options) {
    constexpr std::uint32_t headers = 14 + 40;
    const auto dataOffset = static_cast<std::uint32_t>(headers + options.palette.size());
    Bytes file{'B', 'M'};
    Put(file, dataOffset + data.size(), 4, false);
    Put(file, 0, 4, false);
    Put(file, dataOffset, 4, false);
    Put(file, 40, 4, false);
    Put(file, static_cast<std::uint32_t>(width), 4, false);
    Put(file, static_cast<std::uint32_t>(height), 4, false);
    Put(file, 1, 2, false);
    Put(file, static_cast<std::uint32_t>(options.bitsPerPixel), 2, false);
    Put(file, options.compression, 4, false);
    Put(file, data.size(), 4, false);
    Put(file, 0, 8, false);
    Put(file, options.coloursUsed, 4, false);
    Put(file, 0, 4, false);
    Append(file, options.palette);
    Append(file, data);
    return file;
}

Bytes BmpRows(const Picture& picture) {
    Bytes rows;
    for (int y = picture.height - 1; y >= 0; --y) {
        for (int x = 0; x < picture.width; ++x) {
            const std::uint8_t* pixel = picture.Pixel(x, y);
            Append(rows, {pixel[0], pixel[1], pixel[2]});
        }
        rows.resize((rows.size() + 3) / 4 * 4);
    }
    return rows;
}

Bytes Tiff(std::uint32_t width, std::uint32_t height, const std::vector<Bytes>& strips,
           const TiffOptions& options) {
    struct Field {
        std::uint16_t tag;
        std::uint16_t type; // 3: 16 bits, 4: 32 bits
        std::vector<std::uint32_t> values;
    };
    constexpr std::uint16_t stripOffsets = 273;
    std::vector<std::uint32_t> lengths;
    lengths.reserve(strips.size());
    for (const Bytes& strip : strips)
        lengths.push_back(static_cast<std::uint32_t>(strip.size()));
    std::vector<Field> fields{
        {256, 4, {width}},
        {257, 4, {height}},
        {258, 3, std::vector<std::uint32_t>(options.samplesPerPixel, options.bitsPerSample)},
        {259, 3, {options.compression}},
        {262, 3, {options.photometric}},
        {stripOffsets, 4, std::vector<std::uint32_t>(strips.size())},
        {277, 3, {options.samplesPerPixel}},
        {278, 4, {options.rowsPerStrip != 0 ? options.rowsPerStrip : height}},
        {279, 4, lengths},
    };
    for (const auto& [tag, value] : options.moreFields)
        fields.push_back({tag, 3, {value}});
    std::ranges::sort(fields, {}, &Field::tag);

    const bool big = options.bigTiff;
    const int offsetBytes = big ? 8 : 4;
    const auto directoryAt = static_cast<std::size_t>(big ? 16 : 8);
    const std::size_t directoryBytes =
        static_cast<std::size_t>(big ? 8 : 2) + fields.size() * (big ? 20u : 12u) + (big ? 8u : 4u);
    const auto bytesOf = [](const Field& field) { return field.values.size() * (field.type == 3 ? 2u : 4u); };
    std::size_t outsideAt = directoryAt + directoryBytes;
    std::size_t stripAt = outsideAt;
    for (const Field& field : fields)
        stripAt += bytesOf(field) > static_cast<std::size_t>(offsetBytes) ? bytesOf(field) : 0;
    auto& offsets = std::ranges::find(fields, stripOffsets, &Field::tag)->values;
    for (std::size_t i = 0; i < strips.size(); ++i) {
        offsets[i] = static_cast<std::uint32_t>(stripAt);
        stripAt += strips[i].size();
    }

    const auto put = [&](Bytes& bytes, std::uint64_t number, int count) {
        Put(bytes, number, count, options.bigEndian);
    };
    Bytes file = ToBytes(options.bigEndian ? "MM" : "II");
    put(file, big ? 43 : 42, 2);
    if (big) {
        put(file, 8, 2);
        put(file, 0, 2);
    }
    put(file, directoryAt, offsetBytes);
    put(file, fields.size(), big ? 8 : 2);
    Bytes outside;
    for (const Field& field : fields) {
        put(file, field.tag, 2);
        put(file, field.type, 2);
        put(file, field.values.size(), offsetBytes);
        Bytes values;
        for (const std::uint32_t value : field.values)
            put(values, value, field.type == 3 ? 2 : 4);
        if (values.size() > static_cast<std::size_t>(offsetBytes)) {
            put(file, outsideAt + outside.size(), offsetBytes);
            Append(outside, values);
        } else {
            values.resize(static_cast<std::size_t>(offsetBytes));
            Append(file, values);
        }
    }
    put(file, 0, offsetBytes); // no further directory
    Append(file, outside);
    for (const Bytes& strip : strips)
        Append(file, strip);
    return file;
}

Bytes JpegSegment(std::uint8_t marker, const Bytes& content) {
    Bytes segment{0xFF, marker};
    Put(segment, content.size() + 2, 2, true);
    Append(segment, content);
    return segment;
}

GreyJpegParts TakeApart(const Bytes& greyJpeg) {
    GreyJpegParts parts;
    for (std::size_t position = 2; position + 4 <= greyJpeg.size();) {
        const std::uint8_t marker = greyJpeg[position + 1];
        const auto length = static_cast<std::size_t>(greyJpeg[position + 2] * 256 + greyJpeg[position + 3]);
        const auto begin = greyJpeg.begin() + static_cast<std::ptrdiff_t>(position);
        const auto end = begin + static_cast<std::ptrdiff_t>(2 + length);
        if (marker == startOfScan) {
            parts.scan.assign(end, greyJpeg.end() - 2); // up to the end-of-image marker
            break;
        }
        if (marker == quantisationTable || marker == huffmanTable)
            parts.tables.insert(parts.tables.end(), begin, end);
        position += 2 + length;
    }
    EXPECT_FALSE(parts.scan.empty());
    return parts;
}

Bytes JpegOfSeparateScans(const GreyJpegParts& grey, std::uint16_t width, std::uint16_t height,
                          int components, int missingScans) {
    Bytes file{0xFF, 0xD8};
    // Adobe's segment says that the channels are what they are: no conversion from luma and chroma.
    Append(file, JpegSegment(0xEE, {'A', 'd', 'o', 'b', 'e', 0, 100, 0, 0, 0, 0, 0}));
    Append(file, grey.tables);
    Bytes frame{8};
    Put(frame, height, 2, true);
    Put(frame, width, 2, true);
    frame.push_back(static_cast<std::uint8_t>(components));
    for (int i = 1; i <= components; ++i)
        Append(frame, {static_cast<std::uint8_t>(i), 0x11, 0});
    Append(file, JpegSegment(startOfFrame, frame));
    for (int i = 1; i <= components - missingScans; ++i) {
        Append(file, JpegSegment(startOfScan, {1, static_cast<std::uint8_t>(i), 0x00, 0, 63, 0}));
        Append(file, grey.scan);
    }
    Append(file, {0xFF, 0xD9});
    return file;
}

} // namespace tessaro::samples
