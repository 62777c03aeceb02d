#include "camera/bayer_reduction.h"

#include <gtest/gtest.h>

#include <memory>

namespace tessaro {
namespace {

using Bytes = std::vector<std::uint8_t>;

class BayerReduction : public testing::Test {
protected:
    /// Every sample its index, low 8 bits.
    BayerReduction() {
        for (std::size_t i = 0; i < source.size(); ++i)
            source[i] = static_cast<std::uint8_t>(i);
    }

    Bytes Converted(std::int32_t byteCount) {
        session->byteCount = byteCount;
        Bytes target(sensorByteCount, 1);
        ConvertBayerFrame(*session, source.data(), target.data());
        return target;
    }

    std::unique_ptr<CameraSession> session = std::make_unique<CameraSession>();
    Bytes source = Bytes(sensorByteCount);
};

TEST_F(BayerReduction, TakesTheMeanOfTheGreensRoundedDown) {
    source[0] = 200;
    source[1] = 255;
    source[2464] = 254;
    source[2465] = 7;
    const Bytes target = Converted(sensorByteCount);
    const std::size_t upperLeft = PixelOffset(0, 1027);
    EXPECT_EQ(Bytes(target.begin() + static_cast<std::ptrdiff_t>(upperLeft),
                    target.begin() + static_cast<std::ptrdiff_t>(upperLeft) + 4),
              (Bytes{7, 254, 200, 1}));
}

TEST_F(BayerReduction, GoesBackToTheSensorsSize) {
    session->width = 100;
    session->height = 7;
    Converted(sensorByteCount);
    EXPECT_EQ(session->width, 2464);
    EXPECT_EQ(session->height, 2056);
}

TEST_F(BayerReduction, WithoutSamplesTakesTheFirstCellForThePixelAtTheStart) {
    const Bytes target = Converted(0);
    EXPECT_EQ(session->sourceIndex, 0);
    EXPECT_EQ(session->targetIndex, 0);
    // Samples 0, 1, 2464 = 160 and 2465 = 161.
    EXPECT_EQ(Bytes(target.begin(), target.begin() + 5), (Bytes{161, 80, 0, 1, 1}));
    EXPECT_EQ(Bytes(target.begin() + 3, target.end()), Bytes(sensorByteCount - 3, 1));
}

TEST_F(BayerReduction, WithFewSamplesLimitsBothIndices) {
    // One row and one sample too few for any cell but the first: 2 * 2464 + 1 are needed for index 0.
    EXPECT_EQ(Converted(4928)[4928], 161) << "all but the lowest row pile up at byte 4928";
    EXPECT_EQ(session->sourceIndex, 0);
    Converted(4929);
    EXPECT_EQ(session->sourceIndex, 0);
    Converted(4931);
    EXPECT_EQ(session->sourceIndex, 2) << "the last cell";
    EXPECT_EQ(session->targetIndex, 4924);
}

TEST_F(BayerReduction, KeepsAlmostWholeFramesInTheBuffer) {
    for (const std::int32_t missing : {1, 2, 3, 4, 5, 4928}) {
        const Bytes target = Converted(sensorByteCount - missing);
        EXPECT_EQ(target.back(), 1) << missing;
        EXPECT_EQ(session->sourceIndex, sensorByteCount - missing - 4929);
    }
}

} // namespace
} // namespace tessaro
