#include "platform/fake/memory_picture_files.h"
#include "tests/platform/picture_files_contract.h"

#include <gtest/gtest.h>

#include <cstring>

namespace tessaro {

INSTANTIATE_TYPED_TEST_SUITE_P(Memory, PictureFilesContract, MemoryPictureFiles);

namespace {

class MemoryPictureFilesTest : public PictureFilesContract<MemoryPictureFiles> {
protected:
    /// A file that claims this size and holds one pixel.
    samples::Bytes Claiming(std::int32_t width, std::int32_t height) {
        samples::Bytes file = EncodeOrFail(samples::Colourful(1, 1), "image/png");
        std::memcpy(file.data() + 4, &width, sizeof width);
        std::memcpy(file.data() + 8, &height, sizeof height);
        return file;
    }
};

TEST_F(MemoryPictureFilesTest, RefusesASizeThatNoPictureHasBeforeMemoryIsTakenForIt) {
    EXPECT_EQ(Refusal(Claiming(1, 1)), "");
    EXPECT_EQ(Refusal(Claiming(65500, 65500)), "the picture is too large (65500 x 65500 pixels)");
    EXPECT_EQ(Refusal(Claiming(20000, 20000)), "the picture is too large (20000 x 20000 pixels)");
    EXPECT_EQ(Refusal(Claiming(32768, 1)), "the picture is too large (32768 x 1 pixels)");
    for (const auto& [width, height] : {std::pair{0, 1}, std::pair{1, 0}, std::pair{-1, -1}})
        EXPECT_EQ(Refusal(Claiming(width, height)), "the picture has no pixels");
    EXPECT_EQ(Refusal(Claiming(9000, 9000)), "a fake picture of another length");
}

TEST_F(MemoryPictureFilesTest, FailsToEncodeWhenAsked) {
    m_files.failEncoding = true;
    EXPECT_TRUE(std::holds_alternative<PictureError>(m_files.Encode(samples::Colourful(1, 1), "image/png")));
}

} // namespace
} // namespace tessaro
