#include "analysis/grain_edges.h"
#include "analysis/grain_outline.h"
#include "support/analysis_fixture.h"

namespace tessaro {
namespace {

class TracedOutline : public AnalysisFixture {
protected:
    /// The outline of these pixels of the frame in the box of their own extremes.
    void Trace(int left, int low, int width, int height) {
        SetPixels(GrainAt(0), left, low, width, height);
        StoreExtent(field.findings.edges, 0, GrainExtremes(GrainAt(0), 1));
        outline.Trace(GrainAt(0), BoxOf(field.findings.edges, 0));
    }

    static void ExpectSpan(const PixelSpan& span, int first, int last) {
        EXPECT_EQ(span.first, first);
        EXPECT_EQ(span.last, last);
    }

    GrainOutline& outline = field.scratch.outline;
};

TEST_F(TracedOutline, BeginsAtRowAndColumnZeroOfAGrainThatTouchesTheBorder) {
    Trace(0, 0, 4, 3); // box from -1 on, widened by two beyond the last pixel
    ExpectSpan(outline.Rows(), 0, 3);
    ExpectSpan(outline.Columns(), 0, 4);
    ExpectSpan(outline.AlongRow(0), 0, 3);
    ExpectSpan(outline.AlongColumn(0), 0, 2);
    EXPECT_TRUE(outline.AlongRow(3).Empty());
    EXPECT_TRUE(outline.AlongColumn(4).Empty());
}

TEST_F(TracedOutline, EndsAtTheFramesLastRowAndColumn) {
    Trace(frameWidth - 4, frameHeight - 3, 4, 3);
    ExpectSpan(outline.Rows(), frameHeight - 4, frameHeight - 1);
    ExpectSpan(outline.Columns(), frameWidth - 5, frameWidth - 1);
    ExpectSpan(outline.AlongRow(frameHeight - 1), frameWidth - 4, frameWidth - 1);
    ExpectSpan(outline.AlongColumn(frameWidth - 1), frameHeight - 3, frameHeight - 1);
    EXPECT_TRUE(outline.AlongRow(frameHeight - 4).Empty());
}

TEST_F(TracedOutline, ForgetsTheGrainThatWasTracedBefore) {
    Trace(0, 0, 4, 3);
    Trace(2, 1, 1, 1);
    EXPECT_TRUE(outline.AlongRow(0).Empty());
    ExpectSpan(outline.AlongRow(1), 2, 2);
    EXPECT_TRUE(outline.AlongColumn(1).Empty());
}

TEST_F(TracedOutline, LeavesOutPixelsBesideTheBox) {
    SetPixels(GrainAt(0), 0, 0, 4, 3);
    outline.Trace(GrainAt(0), {1, 1, 2, 1}); // columns 1 and 2, row 1
    ExpectSpan(outline.AlongRow(1), 1, 2);
    ExpectSpan(outline.AlongColumn(2), 1, 1);
}

} // namespace
} // namespace tessaro
