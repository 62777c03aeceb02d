#include "platform/qt/qt_picture_files.h"
#include "support/watched_memory.h"
#include "tests/platform/sample_pictures.h"

#include <gtest/gtest.h>

#include <string>

namespace tessaro {
namespace {

class QtPictureMemory : public testing::Test {
protected:
    template<class Result>
    static std::string Refusal(const Result& result) {
        const auto* error = std::get_if<PictureError>(&result);
        return error != nullptr ? error->reason : "";
    }

    std::string RefusalWithout(std::size_t block, const samples::Bytes& file) {
        refusedBlock = block;
        const auto result = m_files.Decode(file);
        refusedBlock = 0;
        return Refusal(result);
    }

    QtPictureFiles m_files;
    const Picture m_picture = samples::Colourful(67, 41);
    const std::size_t m_pictureBytes = m_picture.pixels.size();
};

TEST_F(QtPictureMemory, ThatIsMissingForADecodedPictureIsAnError) {
    for (const char* mimeType : {"image/jpeg", "image/png"}) {
        const auto file = std::get<samples::Bytes>(m_files.Encode(m_picture, mimeType));
        EXPECT_EQ(RefusalWithout(m_pictureBytes, file), "not enough memory") << mimeType;
        EXPECT_EQ(RefusalWithout(0, file), "") << "the next time";
    }
    std::string pixmap = "P6 67 41 255 ";
    pixmap.append(std::size_t{67} * 41 * 3, 'x');
    EXPECT_EQ(RefusalWithout(m_pictureBytes, samples::ToBytes(pixmap)), "not enough memory");
}

TEST_F(QtPictureMemory, ThatIsMissingForAnEncodedFileIsAnError) {
    for (const char* mimeType : {"image/jpeg", "image/png"}) {
        const auto file = std::get<samples::Bytes>(m_files.Encode(m_picture, mimeType));
        refusedBlock = file.size();
        const auto result = m_files.Encode(m_picture, mimeType);
        refusedBlock = 0;
        EXPECT_EQ(Refusal(result), "not enough memory") << mimeType;
    }
}

} // namespace
} // namespace tessaro
