#include "analysis/candidates.h"
#include "app/current_field.h"
#include "app/services.h"
#include "support/drawn_frames.h"
#include "tests/app/program_fixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <memory>

namespace tessaro {
namespace {

/// The steps of an analysis on the program's globals: a substrate with a square of a single layer.
class CurrentFieldTest : public ProgramTest {
protected:
    CurrentFieldTest() {
        globals->grainTable = std::make_unique<GrainTable>();
        FramePainter painter;
        painter.Fill(substrate100);
        painter.Rectangle(440, 428, 40, 40, singleLayer100); // on the corner of four background blocks
        std::copy_n(painter.frame.Data(), framePixelCount * bytesPerPixel,
                    globals->camera.workingFrame.Data());
    }

    /// What the step before would have left.
    void PutALoneCandidate() {
        globals->analyzer.candidates[0] = {1, 100, 100};
        globals->analyzer.candidateCount = 1;
        globals->analyzer.candidateMap.Set(100, 100, 1);
    }

    CurrentField& Field() { return services->currentField; }

    std::unique_ptr<Services> services =
        std::make_unique<Services>(*globals, ui.Adapters(), Devices{cameras, serial});
};

TEST_F(CurrentFieldTest, TakesTheImageIntoTheWorkingFrame) {
    const FrameBuffer before = globals->camera.workingFrame;
    Field().GrabFrame(1); // the test pattern: there is no camera
    EXPECT_FALSE(
        std::equal(before.Data(), before.Data() + framePixelCount * bytesPerPixel, globals->frame.pixels));
}

TEST_F(CurrentFieldTest, LeavesInTheGlobalsWhatEachStepFinds) {
    Field().ComputeFrameStatistics();
    EXPECT_EQ(globals->frame.bgPeak, (std::array<double, channelCount>{100.0, 100.0, 100.0}));
    Field().FindCandidates(false);
    EXPECT_EQ(globals->analyzer.candidateCount, 100) << "10 x 10 reduced pixels";
    Field().RejectNoise();
    EXPECT_EQ(LiveCandidates(globals->analyzer), 100);
    Field().GroupGrains();
    EXPECT_EQ(globals->findings.groupCount, 1);
    EXPECT_GT(globals->grainTable->grains[0].count, 0);
    EXPECT_EQ(globals->findings.reducedPixels[0], 0);
    testing::internal::CaptureStderr(); // its images fail: there is nothing on the screen
    Field().DecideSingleLayers();
    testing::internal::GetCapturedStderr();
    EXPECT_EQ(globals->findings.reducedPixels[0], 100) << "of the grain that was decided";
    EXPECT_EQ(ui.drawing.contextsHeld, 0);
}

TEST_F(CurrentFieldTest, AnalysesNothingWithoutTheGrainTable) {
    globals->grainTable.reset();
    Field().ComputeFrameStatistics();
    EXPECT_EQ(globals->frame.bgPeak[0], 100.0) << "which does not need it";
    PutALoneCandidate();
    Field().FindCandidates(true);
    EXPECT_EQ(globals->analyzer.candidateCount, 1) << "as it was";
    globals->findings.groupCount = 7;
    Field().GroupGrains();
    EXPECT_EQ(globals->findings.groupCount, 7);
    Field().DecideSingleLayers();
    EXPECT_EQ(globals->findings.totalFound, 0);
    EXPECT_TRUE(Images().empty()) << "though the stage stands at the origin";
}

TEST_F(CurrentFieldTest, RejectsNoiseWithoutTheGrainTableToo) {
    globals->grainTable.reset();
    PutALoneCandidate();
    Field().RejectNoise();
    EXPECT_EQ(LiveCandidates(globals->analyzer), 0);
}

} // namespace
} // namespace tessaro
