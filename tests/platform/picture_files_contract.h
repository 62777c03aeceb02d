#pragma once

#include "platform/picture_files.h"
#include "tests/platform/sample_pictures.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <string>
#include <thread>
#include <vector>

// What every PictureFiles must do, with the files that it makes itself. Instantiate it for each adapter:
// INSTANTIATE_TYPED_TEST_SUITE_P(Qt, PictureFilesContract, QtPictureFiles);

namespace tessaro {

template<class Files>
class PictureFilesContract : public testing::Test {
protected:
    Picture DecodeOrFail(const samples::Bytes& file) {
        auto result = m_files.Decode(file);
        if (const auto* error = std::get_if<PictureError>(&result)) {
            ADD_FAILURE() << "refused: " << error->reason;
            return {};
        }
        return std::get<Picture>(std::move(result));
    }

    /// Empty if the file was accepted.
    std::string Refusal(const samples::Bytes& file) {
        const auto result = m_files.Decode(file);
        const auto* error = std::get_if<PictureError>(&result);
        return error != nullptr ? error->reason : "";
    }

    samples::Bytes EncodeOrFail(const Picture& picture, std::string_view mimeType) {
        auto result = m_files.Encode(picture, mimeType);
        if (const auto* error = std::get_if<PictureError>(&result)) {
            ADD_FAILURE() << "not encoded: " << error->reason;
            return {};
        }
        return std::get<samples::Bytes>(std::move(result));
    }

    /// Colours, without the unused byte, as "red,green,blue".
    static std::vector<std::string> Colours(const Picture& picture) {
        std::vector<std::string> colours;
        for (std::size_t i = 0; i < picture.pixels.size(); i += 4) {
            colours.push_back(std::to_string(picture.pixels[i + 2]) + "," +
                              std::to_string(picture.pixels[i + 1]) + "," +
                              std::to_string(picture.pixels[i]));
        }
        return colours;
    }

    static samples::Bytes Cut(const samples::Bytes& file, std::size_t length) {
        return {file.begin(), file.begin() + static_cast<std::ptrdiff_t>(length)};
    }

    Files m_files;
};

TYPED_TEST_SUITE_P(PictureFilesContract);

TYPED_TEST_P(PictureFilesContract, KeepsEveryPixelThroughPng) {
    const Picture picture = samples::Colourful(67, 41);
    const Picture decoded = this->DecodeOrFail(this->EncodeOrFail(picture, "image/png"));
    EXPECT_EQ(this->Colours(decoded), this->Colours(picture));
}

TYPED_TEST_P(PictureFilesContract, KeepsSmoothColoursThroughJpegWithinAFewLevels) {
    const Picture picture = samples::Colourful(32, 24);
    const Picture decoded = this->DecodeOrFail(this->EncodeOrFail(picture, "image/jpeg"));
    ASSERT_EQ(decoded.pixels.size(), picture.pixels.size());
    int largest = 0;
    for (std::size_t i = 0; i < picture.pixels.size(); ++i)
        largest = i % 4 == 3 ? largest : std::max(largest, std::abs(decoded.pixels[i] - picture.pixels[i]));
    EXPECT_LE(largest, 24);
}

TYPED_TEST_P(PictureFilesContract, RefusesToEncodeWhatIsNoPicture) {
    const Picture picture = samples::Colourful(4, 4);
    const auto isError = [this](const Picture& subject, std::string_view mimeType) {
        const auto result = this->m_files.Encode(subject, mimeType);
        return std::holds_alternative<PictureError>(result);
    };
    EXPECT_FALSE(isError(picture, "image/png"));
    EXPECT_TRUE(isError(picture, "image/gif"));
    EXPECT_TRUE(isError(picture, "png"));
    EXPECT_TRUE(isError(picture, ""));
    EXPECT_TRUE(isError(Picture(), "image/png"));
    EXPECT_TRUE(isError(Picture(0, 4), "image/jpeg"));
    Picture negative = picture;
    negative.width = -4;
    negative.height = -4;
    EXPECT_TRUE(isError(negative, "image/png"));
    Picture tooFew = picture;
    tooFew.pixels.pop_back();
    EXPECT_TRUE(isError(tooFew, "image/png"));
    Picture tooMany = picture;
    tooMany.pixels.push_back(0);
    EXPECT_TRUE(isError(tooMany, "image/jpeg"));
}

TYPED_TEST_P(PictureFilesContract, RefusesItsOwnFilesCutAnywhere) {
    for (const char* mimeType : {"image/jpeg", "image/png"}) {
        SCOPED_TRACE(mimeType);
        const samples::Bytes file = this->EncodeOrFail(samples::Colourful(19, 13), mimeType);
        ASSERT_EQ(this->Refusal(file), "");
        for (std::size_t length = 0; length < file.size(); ++length)
            EXPECT_NE(this->Refusal(this->Cut(file, length)), "") << "cut to " << length << " bytes";
    }
}

TYPED_TEST_P(PictureFilesContract, RefusesAnEmptyFileAndWhatIsNoPicture) {
    EXPECT_EQ(this->Refusal({}), "the file is empty");
    for (const char* text : {"x", "hello", "no picture at all, though it is long enough for a header"})
        EXPECT_NE(this->Refusal(samples::ToBytes(text)), "") << text;
}

TYPED_TEST_P(PictureFilesContract, TellsWholeFromCutFilesInFourThreadsAtOnce) {
    const samples::Bytes whole = this->EncodeOrFail(samples::Colourful(64, 64), "image/png");
    const samples::Bytes cut = this->Cut(whole, whole.size() - 60);
    const std::string reason = this->Refusal(cut);
    std::atomic<int> mistakes = 0;
    std::vector<std::jthread> threads;
    constexpr int threadCount = 4;
    threads.reserve(threadCount);
    for (int thread = 0; thread < threadCount; ++thread) {
        threads.emplace_back([&, thread] {
            for (int round = 0; round < 50; ++round) {
                const bool wrong = thread == 0 ? this->Refusal(cut) != reason : this->Refusal(whole) != "";
                mistakes += wrong ? 1 : 0;
            }
        });
    }
    threads.clear();
    EXPECT_EQ(mistakes, 0);
}

REGISTER_TYPED_TEST_SUITE_P(PictureFilesContract, KeepsEveryPixelThroughPng,
                            KeepsSmoothColoursThroughJpegWithinAFewLevels, RefusesToEncodeWhatIsNoPicture,
                            RefusesItsOwnFilesCutAnywhere, RefusesAnEmptyFileAndWhatIsNoPicture,
                            TellsWholeFromCutFilesInFourThreadsAtOnce);

} // namespace tessaro
