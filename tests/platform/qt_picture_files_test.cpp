#include "platform/qt/qt_picture_files.h"
#include "tests/platform/picture_files_contract.h"
#include "tests/platform/picture_formats_contract.h"
#include "tests/platform/sample_pictures.h"

#include <QBuffer>
#include <QByteArray>
#include <QImage>
#include <QImageWriter>
#include <QLoggingCategory>
#include <QString>

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <sys/resource.h>
#include <thread>

namespace tessaro {

INSTANTIATE_TYPED_TEST_SUITE_P(Qt, PictureFilesContract, QtPictureFiles);
INSTANTIATE_TYPED_TEST_SUITE_P(Qt, PictureFormatsContract, QtPictureFiles);

namespace {

using samples::Bytes;
using ColourList = std::vector<std::string>;

class QtPictureFilesTest : public PictureFormatsContract<QtPictureFiles> {
protected:
    Bytes GreyJpeg(int width, int height) {
        QImage grey(width, height, QImage::Format_Grayscale8);
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x)
                grey.scanLine(y)[x] = static_cast<uchar>(60 + 5 * x + 9 * y);
        return Write(grey, "jpeg");
    }

    static QImage ToQImage(const Picture& picture) {
        return QImage(picture.pixels.data(), picture.width, picture.height, picture.width * 4,
                      QImage::Format_RGB32)
            .copy();
    }

    static Bytes Write(const QImage& image, const char* format, int compression = -1,
                       bool progressive = false) {
        QByteArray bytes;
        QBuffer buffer(&bytes);
        buffer.open(QIODevice::WriteOnly);
        QImageWriter writer(&buffer, format);
        writer.setProgressiveScanWrite(progressive);
        writer.setCompression(compression);
        EXPECT_TRUE(writer.write(image)) << format << ": " << writer.errorString().toStdString();
        return Bytes(bytes.begin(), bytes.end());
    }

    void ExpectRefusedWhereverCut(const Bytes& file) {
        ASSERT_EQ(Refusal(file), "");
        for (std::size_t length = 0; length < file.size(); ++length) {
            EXPECT_NE(Refusal({file.begin(), file.begin() + static_cast<std::ptrdiff_t>(length)}), "")
                << "cut to " << length << " of " << file.size() << " bytes";
        }
    }

    void ExpectSurvivesFlippedBits(const Bytes& file) {
        for (std::size_t bit = 0; bit < file.size() * 8; ++bit) {
            Bytes flipped = file;
            flipped[bit / 8] = static_cast<std::uint8_t>(flipped[bit / 8] ^ (1u << bit % 8));
            m_files.Decode(flipped);
        }
    }
};

TEST_F(QtPictureFilesTest, FillsTheUnusedByte) {
    for (const auto& [name, file] : AllSamples()) {
        SCOPED_TRACE(name);
        const Picture picture = DecodeOrFail(file);
        for (std::size_t i = 3; i < picture.pixels.size(); i += 4)
            ASSERT_EQ(picture.pixels[i], 255);
    }
    const Picture transparent =
        DecodeOrFail(samples::Png(1, 1, {{1, 2, 3, 0}}, {.colourType = 6, .chunks = {}}));
    EXPECT_EQ(transparent.pixels, (Bytes{3, 2, 1, 255}));
}

TEST_F(QtPictureFilesTest, TakesNoMemoryForPicturesThatClaimToBeEnormous) {
    const auto peakMegabytes = [] {
        rusage usage{};
        getrusage(RUSAGE_SELF, &usage);
        return usage.ru_maxrss / 1024;
    };
    Refusal(samples::Tiff(1, 1, {{1, 2, 3}})); // loads the plugins
    const auto before = peakMegabytes();
    for (const std::uint32_t side : {30000u, 32767u, 65500u, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
        EXPECT_NE(Refusal(samples::Png(side, side, {{}})), "");
        EXPECT_NE(Refusal(samples::Tiff(side, side, {{1, 2, 3}})), "");
        EXPECT_NE(
            Refusal(samples::Bmp(static_cast<std::int32_t>(side), static_cast<std::int32_t>(side), {1})), "");
        const std::string number = std::to_string(side);
        for (const char* type : {"P1", "P2", "P3", "P4", "P5", "P6"}) {
            std::string file = type;
            file.append(" ").append(number).append(" ").append(number).append(" 255 1 2 3");
            EXPECT_NE(Refusal(samples::ToBytes(file)), "");
        }
    }
    // Acceptable sizes without the data for them.
    EXPECT_NE(Refusal(samples::Tiff(10000, 10000, {{1, 2, 3}})), "");
    EXPECT_NE(Refusal(samples::Bmp(10000, 10000, {1})), "");
    EXPECT_NE(Refusal(samples::ToBytes("P6 10000 10000 255 1 2 3")), "");
    EXPECT_NE(Refusal(samples::ToBytes("P2 10000 10000 255 1 2 3")), "");
    EXPECT_LT(peakMegabytes() - before, 100);
}

TEST_F(QtPictureFilesTest, ReadsAPictureLargerThanQtAllowsByItself) {
    const Picture large(8300, 8300); // 276 MB
    const Picture decoded = DecodeOrFail(EncodeOrFail(large, "image/jpeg"));
    EXPECT_EQ(decoded.width, large.width);
    EXPECT_EQ(decoded.height, large.height);
}

// --- JPEG

TEST_F(QtPictureFilesTest, RefusesAProgressiveOrGreyJpegCutAnywhere) {
    const QImage image = ToQImage(samples::Colourful(19, 13));
    ExpectRefusedWhereverCut(Write(image, "jpeg", -1, true));
    ExpectRefusedWhereverCut(GreyJpeg(16, 16));
}

TEST_F(QtPictureFilesTest, SurvivesFlippedBitsOfAProgressiveJpeg) {
    ExpectSurvivesFlippedBits(Write(ToQImage(samples::Colourful(19, 13)), "jpeg", -1, true));
}

TEST_F(QtPictureFilesTest, ReadsAGreyJpeg) {
    const Picture picture = DecodeOrFail(GreyJpeg(16, 16));
    for (std::size_t i = 0; i < picture.pixels.size(); i += 4) {
        EXPECT_EQ(picture.pixels[i], picture.pixels[i + 1]);
        EXPECT_EQ(picture.pixels[i], picture.pixels[i + 2]);
    }
    EXPECT_NE(*picture.Pixel(0, 0), *picture.Pixel(15, 15));
}

TEST_F(QtPictureFilesTest, WalksOverStuffedBytesOfANoisyJpeg) {
    Picture noise(64, 64);
    std::uint32_t state = 1;
    for (std::uint8_t& byte : noise.pixels) {
        state = state * 1664525u + 1013904223u;
        byte = static_cast<std::uint8_t>(state >> 24);
    }
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    ToQImage(noise).save(&buffer, "jpeg", 100);
    ASSERT_TRUE(bytes.contains(QByteArray("\xFF\x00", 2))) << "the sample lacks what the test is about";
    EXPECT_EQ(Refusal(Bytes(bytes.begin(), bytes.end())), "");
}

TEST_F(QtPictureFilesTest, ReadsAJpegWithRestartMarkers) {
    const Bytes block = GreyJpeg(8, 8); // one block, which restart markers repeat three times
    const auto parts = samples::TakeApart(block);
    samples::GreyJpegParts repeated = parts;
    samples::Append(repeated.tables, samples::JpegSegment(0xDD, {0, 1})); // restart after each block
    for (const std::uint8_t restart : {std::uint8_t{0xD0}, std::uint8_t{0xD1}}) {
        samples::Append(repeated.scan, {0xFF, restart});
        samples::Append(repeated.scan, parts.scan);
    }
    const Bytes file = samples::JpegOfSeparateScans(repeated, 24, 8, 1);
    const Picture once = DecodeOrFail(block);
    const Picture picture = DecodeOrFail(file);
    ASSERT_EQ(picture.width, 24);
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 24; ++x)
            EXPECT_EQ(*picture.Pixel(x, y), *once.Pixel(x % 8, y));
    ExpectRefusedWhereverCut(file);
    // A restart marker that comes too early or out of turn is damage.
    EXPECT_NE(Refusal(samples::Replaced(file, {0xFF, 0xD1}, {0xFF, 0xD5})), "");
}

TEST_F(QtPictureFilesTest, ReadsAJpegOfFourInks) {
    const Bytes grey = GreyJpeg(8, 8);
    const auto greyColours = Colours(DecodeOrFail(grey));
    const Picture inks = DecodeOrFail(samples::JpegOfSeparateScans(samples::TakeApart(grey), 8, 8, 4));
    // Every ink has the grey value g; stored inverted as by Adobe, that is g * g / 255 of light in each
    // colour.
    for (std::size_t i = 0; i < greyColours.size(); ++i) {
        const int value = std::stoi(greyColours[i]);
        EXPECT_EQ(inks.pixels[4 * i], value * value / 255);
    }
}

TEST_F(QtPictureFilesTest, RefusesAJpegThatLacksTheScanOfAColour) {
    const auto parts = samples::TakeApart(GreyJpeg(8, 8));
    EXPECT_EQ(Refusal(samples::JpegOfSeparateScans(parts, 8, 8, 3)), "");
    EXPECT_EQ(Refusal(samples::JpegOfSeparateScans(parts, 8, 8, 3, 1)), "the JPEG data is damaged");
}

TEST_F(QtPictureFilesTest, RefusesAJpegOfThousandsOfScans) {
    auto parts = samples::TakeApart(GreyJpeg(8, 8));
    Bytes file = samples::JpegOfSeparateScans(parts, 8, 8, 1);
    const Bytes scan(file.end() - 2 - static_cast<std::ptrdiff_t>(parts.scan.size() + 10), file.end() - 2);
    file.erase(file.end() - 2, file.end());
    for (int i = 0; i < 2000; ++i)
        samples::Append(file, scan);
    samples::Append(file, {0xFF, 0xD9});
    EXPECT_EQ(Refusal(file), "the JPEG data is damaged");
}

TEST_F(QtPictureFilesTest, NamesWhatTheJpegDecoderFound) {
    Bytes jpeg = EncodeOrFail(samples::Colourful(64, 64), "image/jpeg");
    std::fill_n(jpeg.end() - 60, 40, std::uint8_t{0});
    EXPECT_EQ(Refusal(jpeg).find("the JPEG data is damaged (Corrupt JPEG data: "), 0u) << Refusal(jpeg);
}

// --- messages

std::atomic<int> messagesSeen = 0;
void CountMessages(QtMsgType, const QMessageLogContext& context, const QString&) {
    messagesSeen += context.category == std::string_view("tessaro.test") ? 1 : 1000;
}

TEST_F(QtPictureFilesTest, LeavesMessagesOfOthersToTheirHandlerWhileItDecodes) {
    Bytes damaged = EncodeOrFail(samples::Colourful(64, 64), "image/jpeg");
    std::fill_n(damaged.end() - 60, 40, std::uint8_t{0});
    messagesSeen = 0;
    const QtMessageHandler before = qInstallMessageHandler(CountMessages);
    constexpr int rounds = 200;
    std::jthread speaker([] {
        const QLoggingCategory category("tessaro.test");
        for (int i = 0; i < rounds; ++i)
            qCWarning(category, "something else");
    });
    for (int i = 0; i < rounds; ++i)
        EXPECT_NE(Refusal(damaged), "");
    speaker.join();
    EXPECT_EQ(qInstallMessageHandler(before), CountMessages);
    EXPECT_EQ(messagesSeen, rounds); // and none about pictures
}

TEST_F(QtPictureFilesTest, FindsDamageWhenTheUserHasSilencedQt) {
    Bytes damaged = EncodeOrFail(samples::Colourful(64, 64), "image/jpeg");
    std::fill_n(damaged.end() - 60, 40, std::uint8_t{0});
    QLoggingCategory::setFilterRules(QStringLiteral("*=false"));
    const std::string refusal = Refusal(damaged);
    const QLoggingCategory category("qt.gui.imageio.jpeg");
    EXPECT_FALSE(category.isWarningEnabled()) << "the rules hold again after decoding";
    QLoggingCategory::setFilterRules(QString());
    EXPECT_NE(refusal, "");
}

// --- PNG

TEST_F(QtPictureFilesTest, ReadsAPngWithAColourProfileThatMakesNoSense) {
    const Bytes profile = samples::ToBytes(std::string_view("x\0\0not compressed", 17));
    EXPECT_EQ(Colours(DecodeOrFail(samples::Png(1, 1, {{1, 2, 3}}, {.chunks = {{"iCCP", profile}}}))),
              ColourList{"1,2,3"});
}

TEST_F(QtPictureFilesTest, DoesNotCorrectThePixelsOfAPngByItsGamma) {
    const Bytes linear{0, 1, 0x86, 0xA0}; // gamma 1.0
    EXPECT_EQ(Colours(DecodeOrFail(samples::Png(1, 1, {{10, 100, 200}}, {.chunks = {{"gAMA", linear}}}))),
              ColourList{"10,100,200"});
}

TEST_F(QtPictureFilesTest, RefusesAPngWithTooFewOrTooManyRows) {
    EXPECT_NE(Refusal(samples::Png(1, 2, {{1, 2, 3}})), "");
    EXPECT_NE(Refusal(samples::Png(1, 1, {{1, 2, 3}, {4, 5, 6}})), "");
}

// --- TIFF

TEST_F(QtPictureFilesTest, RefusesACompressedTiffCutAnywhere) {
    const QImage image = ToQImage(samples::Colourful(19, 13));
    constexpr int lzw = 1;
    ExpectRefusedWhereverCut(Write(image, "tiff", lzw));
    ExpectRefusedWhereverCut(
        Write(image.convertToFormat(QImage::Format_Mono), "tiff", lzw)); // fax compression
    ExpectRefusedWhereverCut(Write(image.convertToFormat(QImage::Format_Indexed8), "tiff", lzw));
    ExpectRefusedWhereverCut(Write(image.convertToFormat(QImage::Format_RGBA64), "tiff", 0));
}

TEST_F(QtPictureFilesTest, SurvivesFlippedBitsOfACompressedTiff) {
    const QImage image = ToQImage(samples::Colourful(9, 7));
    ExpectSurvivesFlippedBits(Write(image, "tiff", 1));
    ExpectSurvivesFlippedBits(Write(image.convertToFormat(QImage::Format_Mono), "tiff", 1));
    ExpectSurvivesFlippedBits(Write(image.convertToFormat(QImage::Format_Grayscale16), "tiff", 1));
}

TEST_F(QtPictureFilesTest, ReadsABigTiff) {
    const Picture picture = samples::Colourful(5, 3);
    for (const bool bigEndian : {false, true}) {
        const Bytes file =
            samples::Tiff(5, 3, {samples::RgbRows(picture)}, {.bigEndian = bigEndian, .bigTiff = true});
        EXPECT_EQ(Colours(DecodeOrFail(file)), Colours(picture));
        ExpectRefusedWhereverCut(file);
    }
}

TEST_F(QtPictureFilesTest, ReadsATiffOfSeparatePlanes) {
    constexpr std::uint16_t planarConfiguration = 284;
    EXPECT_EQ(Colours(DecodeOrFail(samples::Tiff(2, 1, {{1, 2}, {3, 4}, {5, 6}},
                                                 {.moreFields = {{planarConfiguration, std::uint16_t{2}}}}))),
              (ColourList{"1,3,5", "2,4,6"}));
}

TEST_F(QtPictureFilesTest, ReadsATiffWithATagThatNobodyKnows) {
    constexpr std::uint16_t unknown = 65000;
    EXPECT_EQ(Colours(DecodeOrFail(
                  samples::Tiff(1, 1, {{1, 2, 3}}, {.moreFields = {{unknown, std::uint16_t{5}}}}))),
              ColourList{"1,2,3"});
}

TEST_F(QtPictureFilesTest, RefusesATiffThatListsTooFewOrTooShortStrips) {
    EXPECT_EQ(Refusal(samples::Tiff(1, 2, {{1, 2, 3}}, {.rowsPerStrip = 1})), "the TIFF data is damaged");
    Bytes short5 = samples::Tiff(1, 2, {{1, 2, 3, 4, 5}});
    samples::Append(short5, {6, 7, 8}); // the decoder would go on reading here
    EXPECT_EQ(Refusal(short5), "the TIFF data is damaged");
}

TEST_F(QtPictureFilesTest, RefusesATiffWhoseDirectoriesRunInCircles) {
    Bytes file = samples::Tiff(1, 1, {{1, 2, 3}});
    constexpr std::size_t nextDirectory = 8 + 2 + 9 * 12;
    ASSERT_EQ(file[nextDirectory], 0);
    file[nextDirectory] = 8;
    EXPECT_EQ(Refusal(file), "the TIFF data is damaged");
}

TEST_F(QtPictureFilesTest, RefusesATiffWhoseDecompressorOnlyWarns) {
    constexpr std::uint16_t packBits = 32773;
    const Bytes sound{5, 1, 2, 3, 4, 5, 6}; // six literal bytes
    EXPECT_EQ(Refusal(samples::Tiff(2, 1, {sound}, {.compression = packBits})), "");
    const Bytes tooMany{7, 1, 2, 3, 4, 5, 6, 7, 8};
    EXPECT_EQ(
        Refusal(samples::Tiff(2, 1, {tooMany}, {.compression = packBits})).find("the TIFF data is damaged ("),
        0u);
}

// --- BMP

TEST_F(QtPictureFilesTest, ReadsABmpStoredFromTheTopDown) {
    EXPECT_EQ(Colours(DecodeOrFail(samples::Bmp(1, -2, {3, 2, 1, 0, 6, 5, 4, 0}))),
              (ColourList{"1,2,3", "4,5,6"}));
}

TEST_F(QtPictureFilesTest, RefusesABmpPixelBeyondThePalette) {
    const Bytes palette{30, 20, 10, 0, 60, 50, 40, 0};
    const samples::BmpOptions options{.bitsPerPixel = 8, .palette = palette, .coloursUsed = 2};
    EXPECT_EQ(Refusal(samples::Bmp(4, 1, {0, 1, 0, 1}, options)), "");
    EXPECT_NE(Refusal(samples::Bmp(4, 1, {0, 1, 2, 1}, options)), "");
}

TEST_F(QtPictureFilesTest, ReadsARunLengthBmpOnlyIfItWritesEveryPixel) {
    const samples::BmpOptions options{
        .bitsPerPixel = 8, .compression = 1, .palette = {1, 1, 1, 0, 2, 2, 2, 0}, .coloursUsed = 2};
    // Lower row: 4 x 1. Upper row: three literal bytes 0 1 0 and their padding, then 1 x 1. End.
    const Bytes data{4, 1, 0, 0, 0, 3, 0, 1, 0, 0, 1, 1, 0, 1};
    EXPECT_EQ(Colours(DecodeOrFail(samples::Bmp(4, 2, data, options))),
              (ColourList{"1,1,1", "2,2,2", "1,1,1", "2,2,2", "2,2,2", "2,2,2", "2,2,2", "2,2,2"}));
    ExpectRefusedWhereverCut(samples::Bmp(4, 2, data, options));
    for (const Bytes& incomplete :
         {Bytes{4, 1, 0, 1}, Bytes{3, 1, 0, 0, 4, 1, 0, 1}, Bytes{0, 2, 2, 0, 2, 1, 0, 1},
          Bytes{5, 1, 0, 0, 4, 1, 0, 1}, Bytes{4, 1, 0, 0, 4, 1, 0, 0, 1, 1, 0, 1}})
        EXPECT_EQ(Refusal(samples::Bmp(4, 2, incomplete, options)), "the BMP data is damaged");
}

TEST_F(QtPictureFilesTest, SurvivesFlippedBitsOfARunLengthBmp) {
    ExpectSurvivesFlippedBits(samples::Bmp(
        4, 2, {4, 1, 0, 0, 0, 3, 0, 1, 0, 0, 1, 1, 0, 1},
        {.bitsPerPixel = 8, .compression = 1, .palette = {1, 1, 1, 0, 2, 2, 2, 0}, .coloursUsed = 2}));
}

// --- PPM

TEST_F(QtPictureFilesTest, ReadsPlainBitmapsWithAndWithoutSpaces) {
    const ColourList expected{"0,0,0", "255,255,255", "255,255,255", "0,0,0"};
    EXPECT_EQ(Colours(DecodeOrFail(samples::ToBytes("P1\n2 2\n1 0\n0 1\n"))), expected);
    EXPECT_EQ(Colours(DecodeOrFail(samples::ToBytes("P1\n# remark\n2 2\n1001"))), expected);
}

TEST_F(QtPictureFilesTest, ScalesSamplesByTheMaximumOfThePpm) {
    EXPECT_EQ(Colours(DecodeOrFail(samples::ToBytes("P2 3 1 15\n0 1 15\n"))),
              (ColourList{"0,0,0", "17,17,17", "255,255,255"}));
    EXPECT_EQ(Colours(DecodeOrFail(samples::ToBytes("P2 2 1 1023\n1023 512\n"))),
              (ColourList{"255,255,255", "128,128,128"})); // 512 * 255 / 1023 = 127.6
}

TEST_F(QtPictureFilesTest, TakesBytesThatLookLikeSpacesAndRemarksAsPixels) {
    EXPECT_EQ(Colours(DecodeOrFail(samples::ToBytes("P6\n1 1\n255\n\n #"))), ColourList{"10,32,35"});
}

TEST_F(QtPictureFilesTest, RefusesPpmSamplesAboveTheMaximumAndOtherNonsense) {
    for (const char* text : {"P2 1 1 15 16\n", "P5 1 1 100 \x65", "P3 1 1 255 1 -2 3\n", "P3 1 1 255 1 x 3\n",
                             "P2 1 1 65536 1\n", "P2 1 1 0 0\n", "P1 2 1 12\n", "P6 +1 1 255 abc",
                             "P6 99999999999 1 255 abc", "P6abc", "P2 1 1 255x1\n"})
        EXPECT_EQ(Refusal(samples::ToBytes(text)), "the PPM data is damaged") << text;
}

} // namespace
} // namespace tessaro
