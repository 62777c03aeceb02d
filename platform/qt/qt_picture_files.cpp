#include "platform/qt/qt_picture_files.h"

#include "platform/qt/decoder_messages.h"
#include "platform/qt/netpbm_reader.h"
#include "platform/qt/picture_structure.h"

#include <QBuffer>
#include <QByteArray>
#include <QImage>
#include <QImageReader>
#include <QImageWriter>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <new>
#include <optional>

namespace tessaro {

namespace {

constexpr std::string_view jpegType = "image/jpeg";
constexpr std::string_view pngType = "image/png";
constexpr const char* noMemoryReason = "not enough memory";

using namespace std::string_view_literals;

bool BeginsWith(std::span<const std::uint8_t> file, std::string_view magic) {
    return file.size() >= magic.size() && std::memcmp(file.data(), magic.data(), magic.size()) == 0;
}

bool IsNetpbm(std::span<const std::uint8_t> file) {
    return file.size() >= 2 && file[0] == 'P' && file[1] >= '1' && file[1] <= '6';
}

/// One magic number of a format that Qt decodes.
struct QtFormat {
    std::string_view magic;
    std::string_view name;
    const char* qtName;
    std::optional<PictureError> (*findFault)(std::span<const std::uint8_t> file);
};

constexpr std::array qtFormats{
    QtFormat{"\xFF\xD8\xFF"sv, "JPEG", "jpeg", FindJpegFault},
    QtFormat{"\x89PNG\r\n\x1A\n"sv, "PNG", "png", FindPngFault},
    QtFormat{"II\x2A\0"sv, "TIFF", "tiff", FindTiffFault},
    QtFormat{"MM\0\x2A"sv, "TIFF", "tiff", FindTiffFault},
    QtFormat{"II\x2B\0"sv, "TIFF", "tiff", FindTiffFault}, // BigTIFF
    QtFormat{"MM\0\x2B"sv, "TIFF", "tiff", FindTiffFault},
    QtFormat{"BM"sv, "BMP", "bmp", FindBmpFault},
};

/// Room for the largest picture with four channels of 16 bits; Qt's own limit is smaller.
void SetAllocationLimitOnce() {
    static std::once_flag once;
    std::call_once(once, [] {
        constexpr std::int64_t mebibyte = 1024 * 1024;
        QImageReader::setAllocationLimit(
            static_cast<int>((maximumPicturePixels * 8 + mebibyte - 1) / mebibyte));
    });
}

/// The reader of TIFF multiplies colours by what it takes for transparency, and loses them where that is 0. A
/// copy of the file that leaves the meaning of the extra channel open makes it hand out the colours as they
/// are stored.
QByteArray WithOpenExtraSamples(const QByteArray& file, ByteRange extraSamples) {
    QByteArray copy(file.constData(), file.size());
    std::memset(copy.data() + extraSamples.offset, 0, extraSamples.length);
    return copy;
}

/// Does the message mean that pixels were lost? Each library has remarks that do not matter: an unknown tag,
/// a colour profile that makes no sense.
bool TellsOfDamage(const DecoderMessages::Message& message) {
    if (message.source == "qt.gui.imageio.jpeg")
        return true; // only the first warning of a file gets through, so none can be passed over
    if (message.source == "qt.gui.imageio") {
        const std::string_view text = message.text;
        return text.find("IDAT") != std::string_view::npos || text.find("PLTE") != std::string_view::npos;
    }
    // The TIFF library's remarks about fields come from TIFFReadDirectory and its like, those about pixels
    // from the decompressor.
    return message.severity == DecoderMessages::Severity::Error || !message.source.starts_with("TIFF");
}

const DecoderMessages::Message* FindDamage(const DecoderMessages& messages) {
    const auto found = std::ranges::find_if(messages.All(), TellsOfDamage);
    return found != messages.All().end() ? &*found : nullptr;
}

/// With the decoder's own words, where it had any.
PictureError WithDetail(const PictureError& error, const DecoderMessages::Message* message) {
    return message != nullptr ? PictureError{error.reason + " (" + message->text + ")"} : error;
}

PictureError Undecodable(const QtFormat& format, const DecoderMessages& messages) {
    return WithDetail({Damaged(format.name).reason + ", or of a kind that is not supported"},
                      FindDamage(messages));
}

/// Small palettes: an index beyond the palette has no colour of its own, and Qt makes one up.
bool UsesColoursBeyondPalette(const QImage& image) {
    const int indices = image.depth() <= 8 && image.colorCount() > 0 ? 1 << image.depth() : 0;
    if (image.colorCount() >= indices)
        return false;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            if (image.pixelIndex(x, y) >= image.colorCount())
                return true;
    }
    return false;
}

Picture CopyPixels(const QImage& image) {
    Picture picture(image.width(), image.height());
    for (int y = 0; y < picture.height; ++y) {
        const auto* from = reinterpret_cast<const QRgb*>(image.constScanLine(y));
        std::uint8_t* to = picture.Pixel(0, y);
        for (int x = 0; x < picture.width; ++x, to += 4) {
            const QRgb pixel = from[x] | 0xFF000000u;
            std::memcpy(to, &pixel, 4);
        }
    }
    return picture;
}

std::variant<Picture, PictureError> DecodeByQt(const QtFormat& format, std::span<const std::uint8_t> file) {
    if (auto fault = format.findFault(file))
        return *fault;
    SetAllocationLimitOnce();
    auto bytes = QByteArray::fromRawData(reinterpret_cast<const char*>(file.data()),
                                         static_cast<qsizetype>(file.size()));
    const bool isTiff = format.findFault == FindTiffFault;
    if (const ByteRange extra = isTiff ? FindTiffExtraSamples(file) : ByteRange{}; extra.length > 0)
        bytes = WithOpenExtraSamples(bytes, extra);
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    // The format is given and fixed: no other plugin gets to see the bytes.
    QImageReader reader(&buffer, format.qtName);
    reader.setAutoDetectImageFormat(false);
    reader.setAutoTransform(false);

    DecoderMessages messages;
    if (!reader.supportsOption(QImageIOHandler::Size))
        return PictureError{"this installation cannot read " + std::string(format.name) + " pictures"};
    const QSize size = reader.size();
    if (size.width() < 0)
        return Undecodable(format, messages);
    // A BMP that is stored from the top down has a negative height here.
    if (auto fault = FindSizeFault(size.width(), std::abs(std::int64_t{size.height()})))
        return *fault;
    QImage image;
    if (!reader.read(&image) || UsesColoursBeyondPalette(image))
        return Undecodable(format, messages);
    if (const auto* damage = FindDamage(messages))
        return WithDetail(Damaged(format.name), damage);
    // Alpha is dropped, not blended: the colours stay as they are stored.
    image.convertTo(QImage::Format_RGB32);
    if (image.isNull())
        return PictureError{noMemoryReason};
    return CopyPixels(image);
}

std::variant<Picture, PictureError> DecodeByContent(std::span<const std::uint8_t> file) {
    if (file.empty())
        return PictureError{"the file is empty"};
    for (const QtFormat& format : qtFormats)
        if (BeginsWith(file, format.magic))
            return DecodeByQt(format, file);
    if (IsNetpbm(file))
        return ReadNetpbm(file);
    return PictureError{"not a JPEG, PNG, TIFF, BMP or PPM picture"};
}

std::variant<std::vector<std::uint8_t>, PictureError> EncodeByQt(const Picture& picture,
                                                                 std::string_view mimeType) {
    if (mimeType != jpegType && mimeType != pngType)
        return PictureError{"pictures cannot be written as " + std::string(mimeType)};
    if (auto fault = FindSizeFault(picture.width, picture.height))
        return *fault;
    const auto bytesPerLine = static_cast<std::size_t>(picture.width) * 4;
    if (picture.pixels.size() != bytesPerLine * static_cast<std::size_t>(picture.height))
        return PictureError{"the picture's pixels do not fit its size"};
    const QImage image(picture.pixels.data(), picture.width, picture.height,
                       static_cast<qsizetype>(bytesPerLine), QImage::Format_RGB32);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, mimeType == pngType ? "png" : "jpeg");
    if (!writer.write(image))
        return PictureError{"the picture could not be written (" + writer.errorString().toStdString() + ")"};
    return std::vector<std::uint8_t>(bytes.begin(), bytes.end());
}

} // namespace

std::variant<Picture, PictureError> QtPictureFiles::Decode(std::span<const std::uint8_t> file) {
    try {
        return DecodeByContent(file);
    } catch (const std::bad_alloc&) {
        return PictureError{noMemoryReason};
    }
}

std::variant<std::vector<std::uint8_t>, PictureError> QtPictureFiles::Encode(const Picture& picture,
                                                                             std::string_view mimeType) {
    try {
        return EncodeByQt(picture, mimeType);
    } catch (const std::bad_alloc&) {
        return PictureError{noMemoryReason};
    }
}

std::vector<std::string> QtPictureFiles::EncoderTypes() {
    return {std::string(jpegType), std::string(pngType)};
}

} // namespace tessaro
