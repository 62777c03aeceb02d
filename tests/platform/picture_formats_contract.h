#pragma once

#include "platform/picture_files.h"
#include "tests/platform/picture_files_contract.h"
#include "tests/platform/sample_pictures.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <string>
#include <thread>
#include <vector>

// What every PictureFiles that reads the formats of cameras and scanners must do besides. Instantiate it for
// each of them:
// INSTANTIATE_TYPED_TEST_SUITE_P(Qt, PictureFormatsContract, QtPictureFiles);

namespace tessaro {

template<class Files>
class PictureFormatsContract : public PictureFilesContract<Files> {
protected:
    struct Sample {
        std::string name;
        samples::Bytes file;
    };

    /// The same small picture in formats that keep every pixel.
    static std::vector<Sample> ExactSamples(const Picture& picture) {
        const auto width = static_cast<std::uint32_t>(picture.width);
        const auto height = static_cast<std::uint32_t>(picture.height);
        const std::string size = std::to_string(width) + " " + std::to_string(height);
        const samples::Bytes rgb = samples::RgbRows(picture);
        std::vector<samples::Bytes> rows;
        std::string plain = "P3\n" + size + "\n255\n";
        for (auto at = rgb.begin(); at != rgb.end(); at += 3 * picture.width)
            rows.emplace_back(at, at + 3 * picture.width);
        for (const std::uint8_t sample : rgb)
            plain += std::to_string(sample) + "\n";
        samples::Bytes ppm = samples::ToBytes("P6\n# a remark\n" + size + "\n255\n");
        samples::Append(ppm, rgb);
        return {{"PNG", samples::Png(width, height, rows)},
                {"TIFF", samples::Tiff(width, height, {rgb})},
                {"TIFF in strips", samples::Tiff(width, height, rows, {.rowsPerStrip = 1})},
                {"TIFF, high byte first", samples::Tiff(width, height, {rgb}, {.bigEndian = true})},
                {"BMP", samples::Bmp(picture.width, picture.height, samples::BmpRows(picture))},
                {"binary PPM", ppm},
                {"plain PPM", samples::ToBytes(plain)}};
    }

    std::vector<Sample> AllSamples() {
        const Picture picture = samples::Colourful(19, 13);
        auto all = ExactSamples(picture);
        all.push_back({"JPEG", this->EncodeOrFail(picture, "image/jpeg")});
        all.push_back({"encoded PNG", this->EncodeOrFail(picture, "image/png")});
        return all;
    }
};

TYPED_TEST_SUITE_P(PictureFormatsContract);

TYPED_TEST_P(PictureFormatsContract, ReadsEveryExactFormatFromTheTopDown) {
    const Picture picture = samples::Colourful(19, 13);
    for (const auto& [name, file] : this->ExactSamples(picture)) {
        SCOPED_TRACE(name);
        const Picture decoded = this->DecodeOrFail(file);
        EXPECT_EQ(decoded.width, 19);
        EXPECT_EQ(decoded.height, 13);
        EXPECT_EQ(this->Colours(decoded), this->Colours(picture));
    }
}

TYPED_TEST_P(PictureFormatsContract, ReadsGreyAndPalettePictures) {
    using Colours = std::vector<std::string>;
    const samples::Bytes palette{10, 20, 30, 40, 50, 60};
    EXPECT_EQ(this->Colours(this->DecodeOrFail(
                  samples::Png(3, 1, {{0, 1, 0}}, {.colourType = 3, .chunks = {{"PLTE", palette}}}))),
              (Colours{"10,20,30", "40,50,60", "10,20,30"}));
    EXPECT_EQ(
        this->Colours(this->DecodeOrFail(samples::Png(2, 1, {{7, 250}}, {.colourType = 0, .chunks = {}}))),
        (Colours{"7,7,7", "250,250,250"}));
    EXPECT_EQ(this->Colours(this->DecodeOrFail(
                  samples::Tiff(2, 1, {{7, 250}}, {.samplesPerPixel = 1, .photometric = 1}))),
              (Colours{"7,7,7", "250,250,250"}));
    EXPECT_EQ(this->Colours(this->DecodeOrFail(samples::Bmp(
                  3, 1, {1, 0, 1, 0},
                  {.bitsPerPixel = 8, .palette = {30, 20, 10, 0, 60, 50, 40, 0}, .coloursUsed = 2}))),
              (Colours{"40,50,60", "10,20,30", "40,50,60"}));
    EXPECT_EQ(this->Colours(this->DecodeOrFail(samples::ToBytes("P5 2 1 255 \x07\xFA"))),
              (Colours{"7,7,7", "250,250,250"}));
    EXPECT_EQ(this->Colours(this->DecodeOrFail(samples::ToBytes("P4 3 1 \xA0"))),
              (Colours{"0,0,0", "255,255,255", "0,0,0"}));
}

TYPED_TEST_P(PictureFormatsContract, ReducesSixteenBitsToTheNearestOfEight) {
    // 0x1280 / 257 = 18.4, 0x12C0 / 257 = 18.7, 0xFF00 / 257 = 254.01
    const samples::Bytes rgb{0x12, 0x80, 0x12, 0xC0, 0xFF, 0x00};
    const std::vector<std::string> nearest{"18,19,254"};
    EXPECT_EQ(this->Colours(this->DecodeOrFail(samples::Png(1, 1, {rgb}, {.bitDepth = 16, .chunks = {}}))),
              nearest);
    EXPECT_EQ(this->Colours(
                  this->DecodeOrFail(samples::Tiff(1, 1, {rgb}, {.bigEndian = true, .bitsPerSample = 16}))),
              nearest);
    samples::Bytes ppm = samples::ToBytes("P6 1 1 65535 ");
    samples::Append(ppm, rgb);
    EXPECT_EQ(this->Colours(this->DecodeOrFail(ppm)), nearest);
}

TYPED_TEST_P(PictureFormatsContract, DropsTransparencyWithoutBlending) {
    const std::vector<std::string> stored{"10,20,30", "40,50,60"};
    const samples::Bytes rgba{10, 20, 30, 0, 40, 50, 60, 128};
    EXPECT_EQ(this->Colours(this->DecodeOrFail(samples::Png(2, 1, {rgba}, {.colourType = 6, .chunks = {}}))),
              stored);
    for (const std::uint16_t meaning : {std::uint16_t{0}, std::uint16_t{1}, std::uint16_t{2}}) {
        SCOPED_TRACE(meaning); // unknown, colours multiplied by alpha, alpha apart
        EXPECT_EQ(this->Colours(this->DecodeOrFail(samples::Tiff(
                      2, 1, {rgba}, {.samplesPerPixel = 4, .moreFields = {{std::uint16_t{338}, meaning}}}))),
                  stored);
    }
}

TYPED_TEST_P(PictureFormatsContract, RefusesEveryFormatCutAnywhere) {
    for (const auto& [name, file] : this->AllSamples()) {
        SCOPED_TRACE(name);
        ASSERT_EQ(this->Refusal(file), "");
        for (std::size_t length = 0; length < file.size(); ++length) {
            EXPECT_NE(this->Refusal({file.begin(), file.begin() + static_cast<std::ptrdiff_t>(length)}), "")
                << "cut to " << length << " of " << file.size() << " bytes";
        }
    }
}

TYPED_TEST_P(PictureFormatsContract, SurvivesEverySingleFlippedBit) {
    for (const auto& [name, file] : this->AllSamples()) {
        SCOPED_TRACE(name);
        for (std::size_t bit = 0; bit < file.size() * 8; ++bit) {
            samples::Bytes flipped = file;
            flipped[bit / 8] = static_cast<std::uint8_t>(flipped[bit / 8] ^ (1u << bit % 8));
            const auto result = this->m_files.Decode(flipped);
            if (const auto* picture = std::get_if<Picture>(&result)) {
                EXPECT_EQ(picture->pixels.size(), static_cast<std::size_t>(picture->width) *
                                                      static_cast<std::size_t>(picture->height) * 4);
            } else {
                EXPECT_NE(std::get<PictureError>(result).reason, "");
            }
        }
    }
}

TYPED_TEST_P(PictureFormatsContract, RefusesEverySingleFlippedBitOfAPng) {
    const samples::Bytes file = this->EncodeOrFail(samples::Colourful(19, 13), "image/png");
    for (std::size_t bit = 0; bit < file.size() * 8; ++bit) {
        samples::Bytes flipped = file;
        flipped[bit / 8] = static_cast<std::uint8_t>(flipped[bit / 8] ^ (1u << bit % 8));
        EXPECT_NE(this->Refusal(flipped), "") << "bit " << bit;
    }
}

TYPED_TEST_P(PictureFormatsContract, RefusesAnEmptyFileAndForeignFiles) {
    EXPECT_EQ(this->Refusal({}), "the file is empty");
    for (const char* text :
         {"x", "hello", "GIF89a", "P7\n", "P", "%PDF-1.4", "<svg/>", "\xFF\xD8", "II", "B"})
        EXPECT_EQ(this->Refusal(samples::ToBytes(text)), "not a JPEG, PNG, TIFF, BMP or PPM picture") << text;
}

TYPED_TEST_P(PictureFormatsContract, RefusesPicturesThatClaimToBeEnormousOrEmpty) {
    const Picture small = samples::Colourful(8, 8);
    const samples::Bytes jpeg = this->EncodeOrFail(small, "image/jpeg");
    const auto jpegOf = [&](std::uint8_t high, std::uint8_t low) {
        return samples::Replaced(jpeg, {8, 0, 8, 0, 8, 3}, {8, high, low, high, low, 3});
    };
    for (const auto& file :
         {jpegOf(0xFF, 0xDC), samples::Png(65500, 65500, {{}}), samples::Tiff(65500, 65500, {{1, 2, 3}}),
          samples::Bmp(65500, 65500, {1, 2, 3, 4}), samples::ToBytes("P6 65500 65500 255 "),
          samples::ToBytes("P3 65500 65500 255 1"), samples::ToBytes("P1 65500 65500 1"),
          samples::ToBytes("P4 65500 65500 1")})
        EXPECT_EQ(this->Refusal(file), "the picture is too large (65500 x 65500 pixels)");
    EXPECT_EQ(this->Refusal(samples::Png(20000, 20000, {{}})),
              "the picture is too large (20000 x 20000 pixels)");
    for (const auto& file : {jpegOf(0, 0), samples::Png(0, 0, {{}}), samples::Tiff(0, 0, {{1, 2, 3}}),
                             samples::Bmp(0, 0, {1, 2, 3, 4}), samples::ToBytes("P6 0 0 255 ")})
        EXPECT_EQ(this->Refusal(file), "the picture has no pixels");
}

TYPED_TEST_P(PictureFormatsContract, ReadsAJpegWithMarkersInUnexpectedPlaces) {
    const samples::Bytes jpeg = this->EncodeOrFail(samples::Colourful(19, 13), "image/jpeg");
    const auto colours = this->Colours(this->DecodeOrFail(jpeg));
    const samples::Bytes start{0xFF, 0xD8};

    samples::Bytes thumbnail = samples::ToBytes(std::string_view("Exif\0\0", 6));
    samples::Append(thumbnail, this->EncodeOrFail(samples::Colourful(8, 8), "image/jpeg"));
    samples::Bytes withThumbnail = start;
    samples::Append(withThumbnail, samples::JpegSegment(0xE1, thumbnail));
    EXPECT_EQ(this->Colours(this->DecodeOrFail(samples::Replaced(jpeg, start, withThumbnail))), colours);

    samples::Bytes trailing = jpeg;
    samples::Append(trailing, samples::ToBytes("\xFF\xD8\xFF what a camera adds"));
    EXPECT_EQ(this->Colours(this->DecodeOrFail(trailing)), colours);

    const samples::Bytes filled = samples::Replaced(jpeg, {0xFF, 0xDA}, {0xFF, 0xFF, 0xFF, 0xDA});
    EXPECT_EQ(this->Colours(this->DecodeOrFail(filled)), colours);
}

TYPED_TEST_P(PictureFormatsContract, DoesNotRotateByExif) {
    const samples::Bytes jpeg = this->EncodeOrFail(samples::Colourful(19, 13), "image/jpeg");
    // A TIFF of one field: orientation (0x0112), 16 bits, one value, 6 (a quarter turn).
    const samples::Bytes exif{'E', 'x',  'i', 'f', 0, 0, 'M', 'M', 0, 42, 0, 0, 0, 8, 0, 1,
                              1,   0x12, 0,   3,   0, 0, 0,   1,   0, 6,  0, 0, 0, 0, 0, 0};
    samples::Bytes withExif{0xFF, 0xD8};
    samples::Append(withExif, samples::JpegSegment(0xE1, exif));
    const Picture turned = this->DecodeOrFail(samples::Replaced(jpeg, {0xFF, 0xD8}, withExif));
    EXPECT_EQ(turned.width, 19);
    EXPECT_EQ(this->Colours(turned), this->Colours(this->DecodeOrFail(jpeg)));

    const Picture picture = samples::Colourful(5, 3);
    const Picture tiff = this->DecodeOrFail(samples::Tiff(
        5, 3, {samples::RgbRows(picture)}, {.moreFields = {{std::uint16_t{274}, std::uint16_t{6}}}}));
    EXPECT_EQ(tiff.width, 5);
    EXPECT_EQ(this->Colours(tiff), this->Colours(picture));
}

TYPED_TEST_P(PictureFormatsContract, CallsAJpegWithDamagedPixelsDamaged) {
    const samples::Bytes jpeg = this->EncodeOrFail(samples::Colourful(64, 64), "image/jpeg");
    samples::Bytes holed = jpeg;
    std::fill_n(holed.end() - 60, 40, std::uint8_t{0});
    EXPECT_NE(this->Refusal(holed).find("damaged"), std::string::npos) << this->Refusal(holed);
    // Cut short, with an end put where the file was cut.
    samples::Bytes closed(jpeg.begin(), jpeg.end() - 60);
    samples::Append(closed, {0xFF, 0xD9});
    EXPECT_NE(this->Refusal(closed).find("damaged"), std::string::npos) << this->Refusal(closed);
}

TYPED_TEST_P(PictureFormatsContract, TellsSoundFromDamagedFilesInFourThreadsAtOnce) {
    const samples::Bytes sound = this->EncodeOrFail(samples::Colourful(64, 64), "image/jpeg");
    samples::Bytes damaged = sound;
    std::fill_n(damaged.end() - 60, 40, std::uint8_t{0});
    const samples::Bytes soundTiff = samples::Tiff(8, 8, {samples::RgbRows(samples::Colourful(8, 8))});
    const std::string reason = this->Refusal(damaged);
    ASSERT_NE(reason, "");
    std::atomic<int> mistakes = 0;
    std::vector<std::jthread> threads;
    constexpr int threadCount = 4;
    threads.reserve(threadCount);
    for (int thread = 0; thread < threadCount; ++thread) {
        threads.emplace_back([&, thread] {
            for (int round = 0; round < 50; ++round) {
                const bool wrong = thread == 0   ? this->Refusal(damaged) != reason
                                   : thread == 1 ? this->Refusal(soundTiff) != ""
                                                 : this->Refusal(sound) != "";
                mistakes += wrong ? 1 : 0;
            }
        });
    }
    threads.clear();
    EXPECT_EQ(mistakes, 0);
}

REGISTER_TYPED_TEST_SUITE_P(PictureFormatsContract, ReadsEveryExactFormatFromTheTopDown,
                            ReadsGreyAndPalettePictures, ReducesSixteenBitsToTheNearestOfEight,
                            DropsTransparencyWithoutBlending, RefusesEveryFormatCutAnywhere,
                            SurvivesEverySingleFlippedBit, RefusesEverySingleFlippedBitOfAPng,
                            RefusesAnEmptyFileAndForeignFiles, RefusesPicturesThatClaimToBeEnormousOrEmpty,
                            ReadsAJpegWithMarkersInUnexpectedPlaces, DoesNotRotateByExif,
                            CallsAJpegWithDamagedPixelsDamaged,
                            TellsSoundFromDamagedFilesInFourThreadsAtOnce);

} // namespace tessaro
