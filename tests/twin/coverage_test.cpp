#include "simulated_field/random_shapes.h"
#include "simulated_field/reproducible_random.h"
#include "twin/coverage.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <numeric>

namespace tessaro {
namespace {

/// Samples of 1 um with the top left corner at (0, 12): sample (column, row) lies at X column, Y 12 - row.
LightPlane BarePlane(int width = 16, int height = 12) {
    LightPlane plane;
    plane.grid = {
        .topLeft = {0.0, static_cast<double>(height)}, .samplesPerUm = 1.0, .width = width, .height = height};
    plane.samples.assign(plane.grid.SampleCount(), 1.0F);
    return plane;
}

WaferMark MarkOf(Outline outline) {
    return {.outline = std::move(outline)};
}

double At(const LightPlane& plane, int column, int row) {
    return static_cast<double>(plane.samples[static_cast<std::size_t>(row * plane.grid.width + column)]);
}

/// Area covered by what lets no light through.
double CoveredArea(const LightPlane& plane) {
    const double light = std::accumulate(plane.samples.begin(), plane.samples.end(), 0.0);
    return (static_cast<double>(plane.grid.SampleCount()) - light) /
           (plane.grid.samplesPerUm * plane.grid.samplesPerUm);
}

TEST(Coverage, OfASampleIsTheShareThatTheOutlineCovers) {
    LightPlane plane = BarePlane();
    MarkPainter().Paint(MarkOf({{3.25, 4.5}, {6.0, 4.5}, {6.0, 7.0}, {3.25, 7.0}}), 0.0, plane);
    EXPECT_NEAR(At(plane, 4, 6), 0.0, 1e-6);   // Y 5 to 6, inside
    EXPECT_NEAR(At(plane, 3, 6), 0.25, 1e-6);  // X 3 to 4, three quarters covered
    EXPECT_NEAR(At(plane, 4, 7), 0.5, 1e-6);   // Y 4 to 5, half covered
    EXPECT_NEAR(At(plane, 3, 7), 0.625, 1e-6); // 1 - 0.75 * 0.5
    EXPECT_NEAR(At(plane, 6, 6), 1.0, 1e-6);
    EXPECT_NEAR(At(plane, 4, 4), 1.0, 1e-6);
    EXPECT_NEAR(CoveredArea(plane), 2.75 * 2.5, 1e-5);
}

TEST(Coverage, DimsToTheTransmissionAndMarksDimOneAnother) {
    LightPlane plane = BarePlane();
    const WaferMark mark = MarkOf({{2, 2}, {6, 2}, {6, 6}, {2, 6}});
    MarkPainter painter;
    painter.Paint(mark, 0.8, plane);
    painter.Paint(mark, 0.5, plane);
    EXPECT_NEAR(At(plane, 3, 7), 0.4, 1e-6);
    EXPECT_NEAR(At(plane, 8, 7), 1.0, 1e-6);
}

TEST(Coverage, OfSlantedEdgesIsExact) {
    LightPlane plane = BarePlane();
    MarkPainter().Paint(MarkOf({{1.0, 1.0}, {9.0, 1.0}, {9.0, 5.0}}), 0.0, plane); // slope one half
    EXPECT_NEAR(CoveredArea(plane), 16.0, 1e-5);
    EXPECT_NEAR(At(plane, 1, 10), 1.0 - 0.25, 1e-6); // Y 1 to 2: a triangle of 1 by a half
    EXPECT_NEAR(At(plane, 2, 10), 1.0 - 0.75, 1e-6);
}

TEST(Coverage, OfRandomOutlinesAddsUpToTheirAreaEitherWayRound) {
    ReproducibleRandom random(3);
    for (int outlineNumber = 0; outlineNumber < 200; ++outlineNumber) {
        const double area = random.Between(0.05, 60.0);
        Outline outline = RandomOutline(area, random);
        for (Vertex& corner : outline)
            corner = {corner.x + 20.3, corner.y + 20.7};
        LightPlane plane = BarePlane(41, 41);
        MarkPainter().Paint(MarkOf(outline), 0.0, plane);
        EXPECT_NEAR(CoveredArea(plane), area, 1e-4);
        LightPlane turned = BarePlane(41, 41);
        MarkPainter().Paint(MarkOf({outline.rbegin(), outline.rend()}), 0.0, turned);
        EXPECT_NEAR(CoveredArea(turned), area, 1e-4);
    }
}

/// The share of 40 x 40 points in a sample that lie in the outline.
double PointsInside(int column, int row, const LightPlane& plane, const Outline& outline) {
    constexpr int points = 40;
    int inside = 0;
    for (int i = 0; i < points; ++i)
        for (int j = 0; j < points; ++j) {
            const Vertex um = {column + (i + 0.5) / points, plane.grid.height - (row + (j + 0.5) / points)};
            inside += SignedDistance(um, outline) < 0.0 ? 1 : 0;
        }
    return inside / double{points * points};
}

TEST(Coverage, OfRandomOutlinesIsThatOfManyPointsInEachSample) {
    ReproducibleRandom random(5);
    for (int outlineNumber = 0; outlineNumber < 10; ++outlineNumber) {
        Outline outline = RandomOutline(30.0, random);
        for (Vertex& corner : outline)
            corner = {corner.x + 8.0, corner.y + 6.0};
        LightPlane plane = BarePlane();
        MarkPainter().Paint(MarkOf(outline), 0.0, plane);
        for (int row = 0; row < plane.grid.height; ++row)
            for (int column = 0; column < plane.grid.width; ++column)
                EXPECT_NEAR(At(plane, column, row), 1.0 - PointsInside(column, row, plane, outline), 0.03);
    }
}

TEST(Coverage, OfWhatReachesBeyondTheGridIsThatOfThePartInside) {
    LightPlane plane = BarePlane();
    MarkPainter painter;
    painter.Paint(MarkOf({{-1e6, -1e6}, {1e6, -1e6}, {1e6, 3.0}, {-1e6, 3.0}}), 0.0, plane);
    EXPECT_NEAR(CoveredArea(plane), 16.0 * 3.0, 1e-3);
    painter.Paint(MarkOf({{-5.0, 20.0}, {-1.0, 20.0}, {-3.0, 30.0}}), 0.0, plane);
    painter.Paint(MarkOf({{100.0, 5.0}, {120.0, 5.0}, {110.0, 9.0}}), 0.0, plane);
    EXPECT_NEAR(CoveredArea(plane), 16.0 * 3.0, 1e-3);
}

TEST(Coverage, OfDiscsIsAboutTheirAreaHoweverCoarseTheSamples) {
    for (const double samplesPerUm : {framePixelsPerUm, framePixelsPerUm / 2.0, framePixelsPerUm / 8.0}) {
        LightPlane plane = BarePlane(64, 64);
        plane.grid.topLeft = {-32.0 / samplesPerUm, 32.0 / samplesPerUm};
        plane.grid.samplesPerUm = samplesPerUm;
        WaferMark mark;
        mark.discs = {{{0.3, 0.1}, 4.0}};
        mark.edgeWidthUm = 1.0;
        mark.extent.Add(Disc{{0.3, 0.1}, 4.5});
        MarkPainter().Paint(mark, 0.0, plane);
        EXPECT_NEAR(CoveredArea(plane), 3.14159 * 16.0, 1.5);
    }
}

TEST(Coverage, WaferShowsFromItsEdgesOn) {
    LightPlane plane = BarePlane();
    plane.grid.topLeft = {-4.5, 8.0};
    MarkPainter::PaintWafer(1000.0, 0.2, plane);
    EXPECT_NEAR(At(plane, 0, 0), 0.2, 1e-6);
    EXPECT_NEAR(At(plane, 4, 0), 0.6, 1e-6); // X -0.5 to 0.5
    EXPECT_NEAR(At(plane, 5, 7), 1.0, 1e-6); // Y 0 to 1
    EXPECT_NEAR(At(plane, 5, 8), 0.2, 1e-6);
}

} // namespace
} // namespace tessaro
