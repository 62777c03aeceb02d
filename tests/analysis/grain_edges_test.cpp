#include "analysis/grain_edges.h"
#include "support/analysis_fixture.h"

namespace tessaro {
namespace {

class GrainEdgesTests : public AnalysisFixture {};

TEST_F(GrainEdgesTests, AreWidenedByOneAndTwoAndScaled) {
    SetPixels(GrainAt(0), 50, 60, 4, 3);
    const GrainExtent extent = GrainExtremes(GrainAt(0), 4);
    EXPECT_EQ(extent.left, (PixelPosition{49 * 4, 60 * 4}));
    EXPECT_EQ(extent.right, (PixelPosition{55 * 4, 60 * 4}));
    EXPECT_EQ(extent.minRow, (PixelPosition{50 * 4, 59 * 4}));
    EXPECT_EQ(extent.maxRow, (PixelPosition{50 * 4, 64 * 4}));
}

TEST_F(GrainEdgesTests, KeepTheFirstPixelOfATie) {
    Grain& grain = GrainAt(0);
    grain.pixels[0] = {10, 20};
    grain.pixels[1] = {10, 30};
    grain.pixels[2] = {12, 30};
    grain.count = 3;
    const GrainExtent extent = GrainExtremes(grain, 1);
    EXPECT_EQ(extent.left, (PixelPosition{9, 20}));
    EXPECT_EQ(extent.right, (PixelPosition{14, 30}));
    EXPECT_EQ(extent.minRow, (PixelPosition{10, 19}));
    EXPECT_EQ(extent.maxRow, (PixelPosition{10, 32}));
}

TEST_F(GrainEdgesTests, OfEmptyGrainsStayAsTheyWere) {
    field.findings.edges.EdgeLeft[1] = {77, 78};
    SetPixels(GrainAt(0), 50, 60, 1, 1);
    SetPixels(GrainAt(2), 80, 90, 1, 1);
    ComputeGrainEdges(field.grains, 2, field.findings.edges);
    EXPECT_EQ(field.findings.edges.EdgeLeft[0], (PixelPosition{196, 240}));
    EXPECT_EQ(field.findings.edges.EdgeLeft[1], (PixelPosition{77, 78}));
    EXPECT_EQ(field.findings.edges.EdgeLeft[2], PixelPosition{}) << "beyond the group count";
}

TEST_F(GrainEdgesTests, OfAnEmptyTableAreNotTouched) {
    ComputeGrainEdges(field.grains, 0, field.findings.edges);
    EXPECT_EQ(field.findings.edges.EdgeLeft[0], PixelPosition{});
}

} // namespace
} // namespace tessaro
