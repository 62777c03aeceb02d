#include "analysis/flake_analyzer.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <utility>

namespace tessaro {
namespace {

TEST(PixelMap, ReadsNoMarkBesideTheArrayAndTakesNone) {
    const auto map = std::make_unique<PixelMap>();
    for (const auto& [x, y] : {std::pair{-1, 0}, std::pair{0, -1}, std::pair{frameWidth, 0},
                               std::pair{frameWidth - 1, frameHeight}, std::pair{-9, -9},
                               std::pair{frameWidth + 9, frameHeight + 9}}) {
        map->Set(x, y, 1);
        EXPECT_EQ(map->Get(x, y), 0) << x << ", " << y;
    }
    map->Set(0, 0, 1);
    map->Set(frameWidth - 1, frameHeight - 1, 2);
    EXPECT_EQ(map->Get(0, 0), 1);
    EXPECT_EQ(map->Get(frameWidth - 1, frameHeight - 1), 2);
}

TEST(PixelMap, ReadsTheNeighbouringColumnBesideAColumn) {
    const auto map = std::make_unique<PixelMap>();
    map->Set(4, frameHeight - 1, 1);
    map->Set(6, 0, 1);
    EXPECT_EQ(map->Get(5, -1), 1);
    EXPECT_EQ(map->Get(5, frameHeight), 1);
}

TEST(CandidateMap, ReadsNoMarkBesideTheArrayAndTakesNone) {
    const auto map = std::make_unique<CandidateMap>();
    for (const auto& [x4, y4] : {std::pair{-1, 0}, std::pair{0, -1}, std::pair{reducedWidth, 0},
                                 std::pair{reducedWidth - 1, reducedHeight}}) {
        map->Set(x4, y4, 1);
        EXPECT_EQ(map->Get(x4, y4), 0) << x4 << ", " << y4;
    }
    map->Set(reducedWidth - 1, reducedHeight - 1, 1);
    EXPECT_EQ(map->Get(reducedWidth - 1, reducedHeight - 1), 1);
}

struct ClearedBox {
    int left;
    int low;
    int width;
    int height;
};

class ClearBox : public testing::TestWithParam<ClearedBox> {};

TEST_P(ClearBox, ClearsWhatSettingItsCellsOneByOneClears) {
    const auto cleared = std::make_unique<PixelMap>();
    const auto expected = std::make_unique<PixelMap>();
    for (int x = 0; x < frameWidth; ++x) {
        for (int y = 0; y < frameHeight; ++y) {
            cleared->Set(x, y, 1);
            expected->Set(x, y, 1);
        }
    }
    const ClearedBox box = GetParam();
    cleared->ClearBox(box.left, box.low, box.width, box.height);
    for (int x = box.left; x < box.left + box.width; ++x) {
        for (int y = box.low; y < box.low + box.height; ++y)
            expected->Set(x, y, 0);
    }
    EXPECT_TRUE(std::memcmp(cleared.get(), expected.get(), sizeof(PixelMap)) == 0);
}

INSTANTIATE_TEST_SUITE_P(Boxes, ClearBox,
                         testing::Values(ClearedBox{600, 500, 3, 4}, ClearedBox{-3, -3, 5, 5},
                                         ClearedBox{1229, 1025, 6, 6}, ClearedBox{-5, 0, 3, 1028},
                                         ClearedBox{1232, 0, 3, 1028}, ClearedBox{0, 0, 1232, 1028},
                                         ClearedBox{5, 5, 0, 5}, ClearedBox{5, 5, 5, 0},
                                         ClearedBox{10, 10, 4, -4}, ClearedBox{10, 10, -4, 4}));

} // namespace
} // namespace tessaro
