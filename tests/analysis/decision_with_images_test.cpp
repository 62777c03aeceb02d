#include "analysis/candidates.h"
#include "analysis/decision_with_images.h"
#include "analysis/frame_statistics.h"
#include "analysis/grouping.h"
#include "support/drawn_frames.h"
#include "support/imaging_fixture.h"

#include <memory>

namespace tessaro {
namespace {

class DecisionWithImages : public ImagingFixture {
protected:
    DecisionWithImages() {
        screen.SetUp();
        painter.Fill(substrate100);
        field.frame.pixels = painter.frame.Data();
        settings.scoreThreshold = 60;
        ui.clock.localTime = {2024, 3, 15, 14, 7};
        scan.originX = 1000;
        scan.originY = -2000;
        stage.position = {5000.0, 6000.0, 0.0};
    }

    void DrawFlake() { painter.Rectangle(200, 200, 40, 40, singleLayer100); }

    int Decide() {
        ComputeFrameStatistics(field.frame, field.frame, field.measured);
        FindCandidates(field, false);
        RejectNoise(field.analyzer);
        GroupGrains(field);
        return DecideAndSaveSingleLayers(field, painter.frame, images, folders, stage, scan);
    }

    std::vector<std::string> SavedFiles() const {
        std::vector<std::string> names;
        for (const auto& [path, bytes] : ui.folders.files)
            names.push_back(path.lexically_relative(folders.desktop).string());
        return names;
    }

    FramePainter painter;
    Settings settings;
    std::unique_ptr<AnalysisMemory> memory = std::make_unique<AnalysisMemory>();
    FieldAnalysis field = memory->Bind(settings);
};

using Names = std::vector<std::string>;

TEST_F(DecisionWithImages, SavesBothImagesOfAFieldWithASingleLayer) {
    DrawFlake();
    EXPECT_EQ(Decide(), 1);
    EXPECT_EQ(SavedFiles(), (Names{"Image_Data/240315_14-07/(500,600).jpg",
                                   "Image_Detail/240315_14-07/(500,600)detail.jpg"}));
    const auto frames = ui.drawing.memorySurface.All<RecordingSurface::Frame>();
    ASSERT_EQ(frames.size(), 2U) << "the flake and the scale bar";
    EXPECT_EQ(frames[0].colour, (Colour{255, 0, 0}));
}

TEST_F(DecisionWithImages, SavesNothingOfAFieldWithout) {
    EXPECT_EQ(Decide(), 0);
    EXPECT_TRUE(ui.folders.files.empty());
    EXPECT_EQ(folders.sessionMade, 0);
}

TEST_F(DecisionWithImages, SavesTheFieldAtTheScanOriginEvenWithout) {
    stage.position = {1000.0, -2000.0, 55.0};
    EXPECT_EQ(Decide(), 0);
    EXPECT_EQ(SavedFiles(), (Names{"Image_Data/240315_14-07/(100,-200).jpg",
                                   "Image_Detail/240315_14-07/(100,-200)detail.jpg"}));
}

TEST_F(DecisionWithImages, TakesForTheOriginOnlyWhatIsExactlyThere) {
    stage.position = {1000.0, -2000.5, 0.0};
    Decide();
    stage.position = {1000.001, -2000.0, 0.0};
    Decide();
    EXPECT_TRUE(ui.folders.files.empty());
}

TEST_F(DecisionWithImages, SavesOnceAtTheOriginWithASingleLayer) {
    stage.position = {1000.0, -2000.0, 0.0};
    DrawFlake();
    EXPECT_EQ(Decide(), 1);
    EXPECT_EQ(ui.folders.files.size(), 2U);
}

TEST_F(DecisionWithImages, KeepsTheSessionThatThereIs) {
    images.MakeSessionFolders(0);
    ui.clock.localTime.minute = 59;
    ui.calls.clear();
    DrawFlake();
    Decide();
    EXPECT_EQ(ui.calls, (Names{"write (500,600).jpg", "write (500,600)detail.jpg"})) << "no folder is made";
    EXPECT_EQ(folders.sessionName, "240315_14-07");
    EXPECT_TRUE(ui.folders.files.contains(folders.plainSession / "(500,600).jpg"));
}

} // namespace
} // namespace tessaro
