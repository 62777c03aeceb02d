#include "simulated_field/reproducible_random.h"
#include "twin/wafer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>

namespace tessaro {
namespace {

WaferOptions SmallWafer(std::uint64_t seed = 1) {
    WaferOptions options;
    options.seed = seed;
    options.sideMm = 1.0;
    return options;
}

TEST(Wafer, TheSameOptionsMakeTheSameFlakes) {
    const Wafer wafer(SmallWafer(5));
    const Wafer same(SmallWafer(5));
    const Wafer other(SmallWafer(6));
    ASSERT_EQ(wafer.Flakes().size(), same.Flakes().size());
    for (std::size_t flake = 0; flake < wafer.Flakes().size(); ++flake)
        EXPECT_EQ(wafer.Flakes()[flake].outline, same.Flakes()[flake].outline);
    EXPECT_NE(wafer.Flakes()[0].outline, other.Flakes()[0].outline);
}

TEST(Wafer, HoldsAsManyFlakesAsItsSizeAndDensityAskFor) {
    WaferOptions options;
    options.sideMm = 2.5;
    options.flakesPerMm2 = 40.0;
    EXPECT_EQ(Wafer(options).Flakes().size(), 250U + 33U) << "and 2 thick pieces for 15 flakes";
    options.flakesPerMm2 = 0.0;
    EXPECT_TRUE(Wafer(options).Flakes().empty());
}

TEST(Wafer, ThatIsFullLeavesFlakesOut) {
    WaferOptions options = SmallWafer();
    options.flakesPerMm2 = 1'000'000.0;
    const std::size_t flakes = Wafer(options).Flakes().size();
    EXPECT_GT(flakes, 300U);
    EXPECT_LT(flakes, 5'000U);
}

TEST(Wafer, HasFlakesOfEveryThickness) {
    std::map<int, int> counts;
    const Wafer wafer{WaferOptions()};
    for (const WaferFlake& flake : wafer.Flakes())
        ++counts[flake.layers];
    for (const int layers : {2, 3, 4, 5, 6, 7, 8, bulkWaferLayers})
        EXPECT_GT(counts[layers], 5) << layers;
    EXPECT_GT(counts[1], 300); // of 960
}

TEST(Wafer, SingleLayersAreNoneThatTheAnalysisTakesForSubstrate) {
    const Wafer wafer{WaferOptions()};
    for (const WaferFlake& flake : wafer.Flakes()) {
        if (flake.layers != 1)
            continue;
        EXPECT_GE(flake.AreaUm2(), 40.0 - 1e-6);
        EXPECT_LE(flake.AreaUm2(), 380.0 + 1e-6);
    }
}

/// Smaller bulk flakes keep their distance like all others.
bool IsThickPiece(const WaferFlake& flake) {
    return flake.layers == bulkWaferLayers && flake.AreaUm2() > 6000.0;
}

TEST(Wafer, IsCoveredByThickPiecesToSomeHundredths) {
    const Wafer wafer{WaferOptions()};
    double area = 0.0;
    for (const WaferFlake& flake : wafer.Flakes()) {
        EXPECT_LE(flake.AreaUm2(), 16'000.0 + 1e-6);
        area += IsThickPiece(flake) ? flake.AreaUm2() : 0.0;
    }
    EXPECT_GT(area / (wafer.SideUm() * wafer.SideUm()), 0.015);
    EXPECT_LT(area / (wafer.SideUm() * wafer.SideUm()), 0.08);
}

constexpr std::size_t flakesOfAMillimetre = 60;

TEST(Wafer, NothingButDirtOnThickPiecesComesNearAFlake) {
    const WaferContents contents = RandomContents(SmallWafer());
    const std::vector<WaferFlake>& flakes = contents.flakes;
    ASSERT_GE(contents.stains.size(), 60U);
    ASSERT_GE(contents.scratches.size(), 3U);
    for (std::size_t flake = 0; flake < flakes.size(); ++flake) {
        for (std::size_t other = flake + 1; other < flakes.size(); ++other)
            for (const Vertex& corner : flakes[other].outline)
                EXPECT_GT(SignedDistance(corner, flakes[flake].outline), 6.9);
        if (flake >= flakesOfAMillimetre)
            continue; // thick pieces come last
        for (const WaferStain& stain : contents.stains)
            for (const Disc& disc : stain.discs)
                EXPECT_GT(SignedDistance(disc.centre, flakes[flake].outline) - disc.radius, 6.9);
        for (const WaferScratch& scratch : contents.scratches)
            for (const Vertex& corner : flakes[flake].outline)
                EXPECT_GT(DistanceToSegment(corner, scratch.from, scratch.to), 3.0);
    }
}

TEST(Wafer, EverythingLiesOnIt) {
    const WaferContents contents = RandomContents(SmallWafer());
    Extent extent;
    for (const WaferFlake& flake : contents.flakes)
        for (const Vertex& corner : flake.outline)
            extent.Add(corner);
    for (const WaferScratch& scratch : contents.scratches) {
        extent.Add(scratch.from);
        extent.Add(scratch.to);
    }
    EXPECT_GE(extent.low.x, 0.0);
    EXPECT_GE(extent.low.y, 0.0);
    EXPECT_LE(extent.high.x, 1000.0);
    EXPECT_LE(extent.high.y, 1000.0);
}

TEST(Wafer, FindsEveryMarkThatReachesIntoAnArea) {
    const Wafer wafer(SmallWafer());
    const std::vector<const WaferMark*> all = wafer.MarksBetween({-1e9, -1e9}, {1e9, 1e9});
    EXPECT_GT(all.size(), 130U);
    ReproducibleRandom random(1);
    for (int area = 0; area < 200; ++area) {
        const double x = random.Between(-200.0, 1100.0);
        const double y = random.Between(-200.0, 1100.0);
        const Vertex low = {x, y};
        const Vertex high = {x + random.Between(0.0, 300.0), y + random.Between(0.0, 300.0)};
        std::vector<const WaferMark*> expected;
        for (const WaferMark* mark : all) {
            const Extent& extent = mark->extent;
            if (extent.low.x <= high.x && extent.high.x >= low.x && extent.low.y <= high.y &&
                extent.high.y >= low.y)
                expected.push_back(mark);
        }
        EXPECT_EQ(wafer.MarksBetween(low, high), expected);
    }
}

TEST(Wafer, FindsMarksThatReachBeyondIt) {
    WaferContents contents;
    contents.flakes.push_back({.outline = {{-500, -500}, {-400, -500}, {-450, -400}}, .layers = 1});
    const Wafer wafer(SmallWafer(), contents);
    EXPECT_EQ(wafer.MarksBetween({-450, -450}, {-440, -440}).size(), 1U);
    EXPECT_TRUE(wafer.MarksBetween({10, 10}, {20, 20}).empty());
}

TEST(Wafer, FocusRisesFromTheOriginAlongTheTilt) {
    WaferOptions options = SmallWafer();
    options.focusZUm = 12.0;
    options.tiltUmPerUm = {0.001, -0.002};
    const Wafer wafer(options);
    EXPECT_DOUBLE_EQ(wafer.FocusZ(0.0, 0.0), 12.0);
    EXPECT_DOUBLE_EQ(wafer.FocusZ(1000.0, 2000.0), 9.0);
}

} // namespace
} // namespace tessaro
