#include "analysis/grain_edges.h"
#include "analysis/refinement.h"
#include "support/analysis_fixture.h"

#include <algorithm>

namespace tessaro {
namespace {

class Refinement : public AnalysisFixture {
protected:
    Refinement() { painter.Fill(substrate100); }

    /// Makes grain 0 of these reduced pixels, with its edges.
    void MakeGrain(int left, int low, int width, int height) {
        SetPixels(GrainAt(0), left, low, width, height);
        ComputeGrainEdges(field.grains, 1, field.findings.edges);
    }
};

TEST_F(Refinement, ReplacesReducedPixelsByTheMatchingPixelsOfTheFrame) {
    painter.Rectangle(201, 202, 40, 30, singleLayer100);
    Measure();
    MakeGrain(50, 50, 11, 9);
    EXPECT_TRUE(RefineGrain(field, 0));
    // Corners see only four marks, themselves included, and are rejected: 40 * 30 - 4.
    EXPECT_EQ(GrainAt(0).count, 1'196);
    const auto& pixels = GrainAt(0).pixels;
    EXPECT_TRUE(std::all_of(pixels.begin(), pixels.begin() + 1'196, [](PixelPosition pixel) {
        return pixel.x >= 201 && pixel.x < 241 && pixel.y >= 202 && pixel.y < 232;
    }));
    EXPECT_EQ(field.analyzer.pixelMap.Get(210, 210), 1);
    EXPECT_EQ(field.analyzer.pixelMap.Get(200, 210), 0);
}

TEST_F(Refinement, EmptiesAGrainThatIsTooSmallAtFullResolution) {
    painter.Rectangle(200, 200, 26, 24, singleLayer100); // 620 of 625
    Measure();
    MakeGrain(50, 50, 7, 6);
    EXPECT_FALSE(RefineGrain(field, 0));
    EXPECT_EQ(GrainAt(0).count, 0);
}

TEST_F(Refinement, EmptiesAGrainWithoutMatchingPixels) {
    Measure();
    MakeGrain(50, 50, 10, 10);
    EXPECT_FALSE(RefineGrain(field, 0));
}

TEST_F(Refinement, ClearsOldMarksInsideTheBoxOnly) {
    Measure();
    MakeGrain(50, 50, 10, 10); // box x 196 .. 243, y 196 .. 243
    field.analyzer.pixelMap.Set(196, 196, 1);
    field.analyzer.pixelMap.Set(243, 243, 1);
    field.analyzer.pixelMap.Set(195, 200, 1);
    field.analyzer.pixelMap.Set(244, 200, 1);
    RefineGrain(field, 0);
    EXPECT_EQ(field.analyzer.pixelMap.Get(196, 196), 0);
    EXPECT_EQ(field.analyzer.pixelMap.Get(243, 243), 0);
    EXPECT_EQ(field.analyzer.pixelMap.Get(195, 200), 1);
    EXPECT_EQ(field.analyzer.pixelMap.Get(244, 200), 1);
}

TEST_F(Refinement, StopsAtTwentyThousandMatchingPixels) {
    painter.Rectangle(200, 200, 200, 200, singleLayer100);
    Measure();
    SetBackground(100, 100, 100);
    MakeGrain(50, 50, 50, 50);
    EXPECT_TRUE(RefineGrain(field, 0));
    // 1,250 of the 2,500 reduced pixels fill the list, row by row: 25 rows of 50. The full grain takes 9,999.
    EXPECT_EQ(GrainAt(0).count, 9'999);
    EXPECT_EQ(field.analyzer.pixelMap.Get(398, 299), 1);
    EXPECT_EQ(field.analyzer.pixelMap.Get(399, 299), 0) << "the 20,000th is not marked";
    EXPECT_EQ(field.analyzer.pixelMap.Get(200, 300), 0);
}

TEST_F(Refinement, SaysSoWhenItFindsMoreThan297Grains) {
    for (int i = 0; i < 298; ++i)
        painter.Rectangle(200 + 6 * (i % 18), 200 + 6 * (i / 18), 3, 3, singleLayer100);
    Measure();
    MakeGrain(50, 50, 28, 26);
    RefineGrain(field, 0);
    EXPECT_EQ(status.lines, (std::vector<std::string>{"MAX_GRAIN overflow: group counting stopped"}));
}

TEST_F(Refinement, TakesTheLastPartThatExceedsTheFirst) {
    settings.minimumFlakeArea = 0;
    painter.Rectangle(200, 200, 10, 10, singleLayer100);
    painter.Rectangle(220, 200, 16, 16, singleLayer100);
    painter.Rectangle(240, 200, 12, 12, singleLayer100);
    Measure();
    MakeGrain(50, 50, 14, 5);
    EXPECT_TRUE(RefineGrain(field, 0));
    EXPECT_EQ(GrainAt(0).count, 140) << "12 x 12 without its corners, though 16 x 16 is larger";
}

TEST_F(Refinement, OfPixelsOutsideTheFrameFindsNothing) {
    Measure();
    SetPixels(GrainAt(0), 400, 300, 10, 10); // taken four times: x 1600, y 1200
    EXPECT_FALSE(RefineGrain(field, 0));
}

} // namespace
} // namespace tessaro
