#include "simulated_field/random_field.h"
#include "simulated_field/reproducible_random.h"
#include "simulated_field/simulated_field.h"
#include "simulated_field/truth_json.h"
#include "support/frame_reading.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <set>
#include <vector>

namespace tessaro {
namespace {

Outline Square(double left, double low, double side) {
    return {{left, low}, {left + side, low}, {left + side, low + side}, {left, low + side}};
}

SimulatedField EvenlyLit() {
    SimulatedField field;
    field.cornerFalloff = 0.0;
    return field;
}

SimulatedField EvenlyLitWithoutNoise() {
    SimulatedField field = EvenlyLit();
    field.noiseSigma = 0.0;
    return field;
}

FrameBuffer Drawn(const SimulatedField& field, std::uint64_t seed = 1) {
    FrameBuffer frame;
    DrawField(field, seed, frame);
    return frame;
}

/// The nearest that a corner or a pixel centre of one flake comes to another.
double Gap(const SimulatedFlake& one, const SimulatedFlake& other) {
    double gap = 1e9;
    for (const Vertex& corner : one.outline)
        gap = std::min(gap, SignedDistance(corner, other.outline));
    for (const Vertex& corner : other.outline)
        gap = std::min(gap, SignedDistance(corner, one.outline));
    return gap;
}

TEST(SimulatedField, DrawsTheSameFrameForTheSameSeedAndAnotherForAnotherSeed) {
    const SimulatedField field = RandomField(5, 6, 3);
    EXPECT_TRUE(SameBytes(Drawn(field, 9), Drawn(field, 9)));
    EXPECT_FALSE(SameBytes(Drawn(field, 9), Drawn(field, 10)));
}

TEST(SimulatedField, PlacesTheSameFlakesForTheSameSeedAndOthersForAnotherSeed) {
    const SimulatedField field = RandomField(5, 6, 3);
    const SimulatedField same = RandomField(5, 6, 3);
    const SimulatedField another = RandomField(6, 6, 3);
    ASSERT_EQ(field.flakes.size(), 9U);
    ASSERT_EQ(same.flakes.size(), 9U);
    for (std::size_t flake = 0; flake < 9; ++flake) {
        EXPECT_EQ(field.flakes[flake].outline, same.flakes[flake].outline);
        EXPECT_EQ(field.flakes[flake].layers, same.flakes[flake].layers);
    }
    EXPECT_NE(field.flakes[0].outline, another.flakes[0].outline);
}

TEST(SimulatedField, OverwritesWhatTheFrameHeldBefore) {
    FrameBuffer used = Drawn(RandomField(3, 20, 5), 3);
    DrawField(SimulatedField(), 4, used);
    EXPECT_TRUE(SameBytes(used, Drawn(SimulatedField(), 4)));
}

TEST(SimulatedField, RandomNumbersAreThoseOfTheirPublishedMethod) {
    // The first outputs of SplitMix64 for the seed 1234567, as published with the generator.
    ReproducibleRandom random(1234567);
    EXPECT_EQ(random.Next(), 6457827717110365317U);
    EXPECT_EQ(random.Next(), 3203168211198807973U);
    EXPECT_EQ(random.Next(), 9817491932198370423U);
}

TEST(SimulatedField, NormalNumbersHaveMeanZeroAndDeviationOne) {
    ReproducibleRandom random(11);
    constexpr int count = 200'000;
    double sum = 0.0;
    double squares = 0.0;
    int withinOne = 0;
    for (int i = 0; i < count; ++i) {
        const double normal = random.Normal();
        sum += normal;
        squares += normal * normal;
        withinOne += normal > -1.0 && normal < 1.0 ? 1 : 0;
    }
    EXPECT_NEAR(sum / count, 0.0, 0.01);
    EXPECT_NEAR(squares / count, 1.0, 0.02);
    EXPECT_NEAR(static_cast<double>(withinOne) / count, 0.6827, 0.01);
}

TEST(SimulatedField, SubstrateHasItsColourAndNoise) {
    SimulatedField field = EvenlyLit();
    field.substrate = {100.0, 140.0, 200.0};
    const FrameBuffer frame = Drawn(field);
    const ChannelValues mean = MeanBetween(frame, 0, frameWidth - 1, 0, frameHeight - 1);
    EXPECT_NEAR(mean[0], 100.0, 0.02);
    EXPECT_NEAR(mean[1], 140.0, 0.02);
    EXPECT_NEAR(mean[2], 200.0, 0.02);
    double squares = 0.0;
    for (int x = 0; x < frameWidth; ++x) {
        const double deviation = IntensityAt(frame, x, 500)[1] - 140.0;
        squares += deviation * deviation;
    }
    EXPECT_NEAR(squares / frameWidth, 1.2 * 1.2 + 1.0 / 12.0, 0.25); // rounding adds a twelfth
}

TEST(SimulatedField, SingleLayerIsDarkerByItsContrast) {
    SimulatedField field = EvenlyLit();
    field.flakes.push_back({.outline = Square(400, 300, 100), .layers = 1});
    const ChannelValues mean = MeanBetween(Drawn(field), 402, 497, 302, 397);
    EXPECT_NEAR(mean[0], 140.0 * 0.88, 0.1);
    EXPECT_NEAR(mean[1], 140.0 * 0.92, 0.1);
    EXPECT_NEAR(mean[2], 140.0 * 0.98, 0.1);
}

TEST(SimulatedField, SecondLayerDarkensWhatTheFirstLeaves) {
    SimulatedField field = EvenlyLit();
    field.flakes.push_back({.outline = Square(400, 300, 100), .layers = 2});
    const ChannelValues mean = MeanBetween(Drawn(field), 402, 497, 302, 397);
    EXPECT_NEAR(mean[0], 140.0 * 0.7744, 0.1);
    EXPECT_NEAR(mean[1], 140.0 * 0.8464, 0.1);
    EXPECT_NEAR(mean[2], 140.0 * 0.9604, 0.1);
}

TEST(SimulatedField, ContrastOfLayersCompounds) {
    const ChannelValues two = LayerContrastPercent({-12.0, -8.0, -2.0}, 2);
    EXPECT_NEAR(two[0], -22.56, 1e-9);
    EXPECT_NEAR(two[1], -15.36, 1e-9);
    EXPECT_NEAR(two[2], -3.96, 1e-9);
    EXPECT_NEAR(LayerContrastPercent({10.0, 0.0, 0.0}, 3)[0], 33.1, 1e-9);
    EXPECT_EQ(LayerContrastPercent({-12.0, -8.0, -2.0}, 0)[0], 0.0);
}

TEST(SimulatedField, SquareOnWholePixelsCoversExactlyThose) {
    SimulatedField field = EvenlyLitWithoutNoise();
    field.flakes.push_back({.outline = Square(400, 300, 10), .layers = 1});
    const FrameBuffer frame = Drawn(field);
    const Intensity bare = {140, 140, 140};
    const Intensity covered = {123, 129, 137}; // 123.2, 128.8, 137.2
    for (int along = 301; along <= 308; ++along) {
        EXPECT_EQ(IntensityAt(frame, 399, along), bare);
        EXPECT_EQ(IntensityAt(frame, 400, along), covered);
        EXPECT_EQ(IntensityAt(frame, 409, along), covered);
        EXPECT_EQ(IntensityAt(frame, 410, along), bare);
    }
    EXPECT_EQ(IntensityAt(frame, 405, 299), bare);
    EXPECT_EQ(IntensityAt(frame, 405, 300), covered);
    EXPECT_EQ(IntensityAt(frame, 405, 309), covered);
    EXPECT_EQ(IntensityAt(frame, 405, 310), bare);
}

TEST(SimulatedField, EdgeThroughAPixelIsSmoothed) {
    SimulatedField field = EvenlyLitWithoutNoise();
    field.flakes.push_back({.outline = Square(400.5, 300, 20), .layers = 1});
    const FrameBuffer frame = Drawn(field);
    EXPECT_EQ(IntensityAt(frame, 399, 310)[0], 140);
    EXPECT_EQ(IntensityAt(frame, 400, 310)[0], 132); // half covered: 131.6
    EXPECT_EQ(IntensityAt(frame, 401, 310)[0], 123);
}

TEST(SimulatedField, FlakeAcrossTheFramesEdgeIsCutOff) {
    SimulatedField field = EvenlyLitWithoutNoise();
    field.flakes.push_back({.outline = Square(-50, -50, 100), .layers = 1});
    field.flakes.push_back({.outline = Square(5000, 5000, 100), .layers = 1});
    const FrameBuffer frame = Drawn(field);
    EXPECT_EQ(IntensityAt(frame, 0, 0)[0], 123);
    EXPECT_EQ(IntensityAt(frame, 49, 49)[0], 123);
    EXPECT_EQ(IntensityAt(frame, 50, 50)[0], 140);
    EXPECT_EQ(IntensityAt(frame, frameWidth - 1, frameHeight - 1)[0], 140);
    EXPECT_EQ(FlakeBox(field.flakes[0]), (PixelBox{0, 49, 0, 49}));
}

TEST(SimulatedField, CornersAreDarkerThanTheCentreByTheFalloff) {
    SimulatedField field;
    field.cornerFalloff = 0.1;
    field.noiseSigma = 0.0;
    const FrameBuffer frame = Drawn(field);
    EXPECT_EQ(IntensityAt(frame, frameWidth / 2, frameHeight / 2), (Intensity{140, 140, 140}));
    for (const int x : {0, frameWidth - 1})
        for (const int y : {0, frameHeight - 1})
            EXPECT_EQ(IntensityAt(frame, x, y), (Intensity{126, 126, 126}));
    EXPECT_DOUBLE_EQ(Illumination(field, {0.0, 0.0}), 0.9);
}

TEST(SimulatedField, ResidueDustAndScratchShowTheirContrast) {
    SimulatedField field = EvenlyLitWithoutNoise();
    field.residues.push_back(
        {.discs = {{{300, 300}, 20}, {{320, 300}, 20}}, .contrastPercent = {-10, -20, -30}});
    field.dustSpecks.push_back({.discs = {{{600, 300}, 4}}, .contrastPercent = {-50, -50, -50}});
    field.scratches.push_back(
        {.from = {700, 300}, .to = {800, 300}, .widthPixels = 4, .contrastPercent = {10, 10, 10}});
    const FrameBuffer frame = Drawn(field);
    EXPECT_EQ(IntensityAt(frame, 285, 300), (Intensity{126, 112, 98}));
    EXPECT_EQ(IntensityAt(frame, 310, 300), (Intensity{126, 112, 98})); // under both discs, dimmed once
    EXPECT_EQ(IntensityAt(frame, 335, 300), (Intensity{126, 112, 98}));
    EXPECT_EQ(IntensityAt(frame, 600, 300), (Intensity{70, 70, 70}));
    EXPECT_EQ(IntensityAt(frame, 606, 300), (Intensity{140, 140, 140}));
    EXPECT_EQ(IntensityAt(frame, 750, 298), (Intensity{154, 154, 154}));
    EXPECT_EQ(IntensityAt(frame, 750, 301), (Intensity{154, 154, 154}));
    EXPECT_EQ(IntensityAt(frame, 750, 303), (Intensity{140, 140, 140}));
}

TEST(SimulatedField, AreaFollowsTheShoelaceFormula) {
    // 24.64 pixels are 10 um: the square has 100 um^2, whichever way round.
    Outline square = Square(200, 100, 24.64);
    EXPECT_NEAR(FlakeAreaUm2({.outline = square}), 100.0, 1e-9);
    std::ranges::reverse(square);
    EXPECT_NEAR(FlakeAreaUm2({.outline = square}), 100.0, 1e-9);
    // An L of 4 x 4 without its 2 x 2 corner, and a triangle of base 6 and height 5.
    EXPECT_DOUBLE_EQ(OutlineArea({{0, 0}, {4, 0}, {4, 2}, {2, 2}, {2, 4}, {0, 4}}), 12.0);
    EXPECT_DOUBLE_EQ(OutlineArea({{1, 1}, {7, 1}, {3, 6}}), 15.0);
    EXPECT_EQ(OutlineArea({{1, 1}, {7, 1}}), 0.0);
}

TEST(SimulatedField, BoxHoldsThePixelsThatTheOutlineTouches) {
    const SimulatedFlake flake = {.outline = {{200.5, 100.0}, {210.0, 104.0}, {204.0, 109.2}}};
    EXPECT_EQ(FlakeBox(flake), (PixelBox{.left = 200, .right = 209, .minRow = 100, .maxRow = 109}));
    EXPECT_EQ(FlakeBox({}), PixelBox{});
}

TEST(SimulatedField, DistanceToAConcaveOutlineIsNegativeInsideOnly) {
    const Outline ell = {{0, 0}, {40, 0}, {40, 20}, {20, 20}, {20, 40}, {0, 40}};
    EXPECT_DOUBLE_EQ(SignedDistance({10, 10}, ell), -10.0);
    EXPECT_DOUBLE_EQ(SignedDistance({30, 25}, ell), 5.0);
    EXPECT_DOUBLE_EQ(SignedDistance({-3, -4}, ell), 5.0);
    EXPECT_DOUBLE_EQ(SignedDistance({20, 30}, ell), 0.0);
}

TEST(SimulatedField, FlakesKeepOffTheMargins) {
    for (std::uint64_t seed = 1; seed <= 20; ++seed) {
        for (const SimulatedFlake& flake : RandomField(seed, 40, 10).flakes) {
            for (const Vertex& corner : flake.outline) {
                EXPECT_GE(corner.x, 100.0);
                EXPECT_LE(corner.x, 1132.0);
                EXPECT_GE(corner.y, 10.0);
                EXPECT_LE(corner.y, 1018.0);
            }
        }
    }
}

TEST(SimulatedField, FlakesLieApart) {
    for (std::uint64_t seed = 1; seed <= 20; ++seed) {
        const SimulatedField field = RandomField(seed, 40, 10);
        for (std::size_t one = 0; one < field.flakes.size(); ++one)
            for (std::size_t other = 0; other < one; ++other)
                EXPECT_GE(Gap(field.flakes[one], field.flakes[other]), 16.0);
    }
}

TEST(SimulatedField, DirtKeepsOffTheFlakes) {
    for (std::uint64_t seed = 1; seed <= 10; ++seed) {
        const SimulatedField field = RandomField(seed, 40, 10);
        std::vector<SimulatedBlob> dirt = field.residues;
        dirt.insert(dirt.end(), field.dustSpecks.begin(), field.dustSpecks.end());
        for (const SimulatedFlake& flake : field.flakes) {
            for (const SimulatedBlob& blob : dirt)
                for (const Disc& disc : blob.discs)
                    EXPECT_GT(SignedDistance(disc.centre, flake.outline) - disc.radius, 3.0);
            for (const SimulatedScratch& scratch : field.scratches)
                for (const Vertex& corner : flake.outline)
                    EXPECT_GT(DistanceToSegment(corner, scratch.from, scratch.to), 3.0);
        }
    }
}

TEST(SimulatedField, RandomFieldHoldsWhatWasAskedFor) {
    const SimulatedField field = RandomField(2, 40, 10, {.residues = 1, .scratches = 4, .dustSpecks = 0});
    ASSERT_EQ(field.flakes.size(), 50U);
    for (std::size_t flake = 0; flake < 50; ++flake)
        if (flake < 40)
            EXPECT_EQ(field.flakes[flake].layers, 1);
        else
            EXPECT_GE(field.flakes[flake].layers, 2);
    EXPECT_EQ(field.residues.size(), 1U);
    EXPECT_EQ(field.scratches.size(), 4U);
    EXPECT_TRUE(field.dustSpecks.empty());
    EXPECT_TRUE(RandomField(2, 0, 0).flakes.empty());
}

TEST(SimulatedField, FindsRoomForAHundredSingleLayers) {
    for (std::uint64_t seed = 1; seed <= 20; ++seed)
        EXPECT_EQ(RandomField(seed, 100, 0).flakes.size(), 100U);
}

TEST(SimulatedField, LeavesOutFlakesThatFindNoRoom) {
    const SimulatedField field = RandomField(1, 50, 0, {.singleLayerArea = {20'000.0, 20'000.0}});
    EXPECT_GT(field.flakes.size(), 0U);
    EXPECT_LT(field.flakes.size(), 50U);
    EXPECT_TRUE(RandomField(1, 1, 0, {.singleLayerArea = {1e6, 1e6}}).flakes.empty());
}

TEST(SimulatedField, FlakesHaveTheSizesAndCornersAskedFor) {
    std::set<std::size_t> cornerCounts;
    for (std::uint64_t seed = 1; seed <= 20; ++seed) {
        for (const SimulatedFlake& flake :
             RandomField(seed, 20, 0, {.singleLayerArea = {120.0, 300.0}}).flakes) {
            EXPECT_GE(FlakeAreaUm2(flake), 120.0 - 1e-6);
            EXPECT_LE(FlakeAreaUm2(flake), 300.0 + 1e-6);
            cornerCounts.insert(flake.outline.size());
        }
    }
    EXPECT_EQ(cornerCounts, (std::set<std::size_t>{5, 6, 7, 8, 9}));
}

TEST(SimulatedField, FindableFlakesLeaveTheSubstrateDominantInEveryBackgroundBlock) {
    for (std::uint64_t seed = 1; seed <= 5; ++seed) {
        SimulatedField field = RandomField(seed, 40, 0, {.singleLayerArea = findableSingleLayerArea});
        field.cornerFalloff = 0.0;
        const FrameBuffer frame = Drawn(field, seed);
        for (int gx = 0; gx < 16; ++gx)
            for (int gy = 0; gy < 16; ++gy)
                EXPECT_NEAR(MostFrequentRed(frame, gx, gy), 140, 1) << "seed " << seed;
    }
}

TEST(SimulatedField, TruthListsFlakesInBufferCoordinates) {
    SimulatedField field;
    field.flakes.push_back({.outline = Square(200, 100, 24.64), .layers = 1});
    field.flakes.push_back({.outline = {{300.25, 400}, {310, 400}, {305, 410.5}}, .layers = 3});
    EXPECT_EQ(TruthJson(field, 18446744073709551615U),
              R"({"seed":18446744073709551615,"substrate":[140.000,140.000,140.000],"flakes":[
{"layers":1,"area_um2":100.000,"outline":[[200.000,100.000],[224.640,100.000],[224.640,124.640],[200.000,124.640]],"box":{"left":200,"right":224,"minRow":100,"maxRow":124}},
{"layers":3,"area_um2":8.431,"outline":[[300.250,400.000],[310.000,400.000],[305.000,410.500]],"box":{"left":300,"right":309,"minRow":400,"maxRow":410}}]}
)");
}

TEST(SimulatedField, TruthOfABareFieldHasNoFlakes) {
    EXPECT_EQ(TruthJson(SimulatedField(), 1),
              "{\"seed\":1,\"substrate\":[140.000,140.000,140.000],\"flakes\":[]}\n");
}

} // namespace
} // namespace tessaro
