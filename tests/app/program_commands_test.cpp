// The whole program at its live view, its images and its analysis.

#include "app/resource_ids.h"
#include "support/drawn_frames.h"
#include "tests/app/program_fixture.h"

namespace tessaro {
namespace {

TEST_F(ProgramTest, RunsTheLiveViewEvery100Milliseconds) {
    EXPECT_EQ(TickTimes(started + 450), (std::vector<std::uint64_t>{210, 310, 410, 510}));
    EXPECT_EQ(globals->camera.testPatternPhase, 4U * 50U);
}

TEST_F(ProgramTest, ShowsAndMeasuresEveryLiveFrame) {
    At(started + 120, [&] {
        // Byte 0 of the buffer is blue of the bottom left pixel: 50 / 3.
        EXPECT_EQ(*ui.drawing.windows.at(mainWindow).Pixel(0, 1027), 16);
        EXPECT_GT(globals->frame.bgPeakSum, 0.0);
        EXPECT_NE(globals->focusValue, 10.0F);
    });
    RunUntil(started + 150);
}

TEST_F(ProgramTest, PausesTheLiveViewDuringAScanWithoutStoppingItsTimer) {
    At(started + 10, [&] { globals->scan.scanning = 1; });
    int ticks = 0;
    ui.messages.onDispatch = [&, look = ui.messages.onDispatch](const Message& message) {
        ticks += message.kind == MessageKind::Timer ? 1 : 0;
        look(message);
    };
    RunUntil(started + 450);
    EXPECT_EQ(ticks, 4);
    EXPECT_EQ(globals->camera.testPatternPhase, 0U);
}

TEST_F(ProgramTest, StopsAndStartsTheLiveViewByTheMenu) {
    ChooseAt(250, command::stopStartGrabbing);
    ChooseAt(555, command::stopStartGrabbing);
    EXPECT_EQ(TickTimes(800), (std::vector<std::uint64_t>{210, 655, 755}));
}

TEST_F(ProgramTest, StandsStillForTwoSecondsWithAChannelView) {
    ChooseAt(250, command::redImage);
    EXPECT_EQ(TickTimes(2400), (std::vector<std::uint64_t>{210, 2350}));
}

TEST_F(ProgramTest, ShowsOneChannelOfANewFrame) {
    ChooseAt(150, command::blueImage);
    At(1000, [&] {
        const std::uint8_t* pixel = ui.drawing.windows.at(mainWindow).Pixel(0, 1027);
        EXPECT_EQ(pixel[0], 16); // 50 / 3
        EXPECT_EQ(pixel[1], 0);
        EXPECT_EQ(pixel[2], 0);
    });
    RunUntil(2300);
}

TEST_F(ProgramTest, LetsTheLiveViewComeBackAfterTheConfiguration) {
    ChooseAt(250, command::configuration);
    EXPECT_EQ(TickTimes(500), (std::vector<std::uint64_t>{210, 350, 450}));
}

TEST_F(ProgramTest, ImportsThePictureThatWasChosenAndKeepsItOnTheScreen) {
    OfferEvenPicture(77);
    ChooseAt(250, command::importImage);
    EXPECT_EQ(TickTimes(900), std::vector<std::uint64_t>{210});
    EXPECT_EQ(ui.chooser.asked, 1);
    EXPECT_EQ(Information().back(), "File:/pictures/even.png");
    EXPECT_EQ(globals->frame.bgPeak, (std::array<double, 3>{77.0, 77.0, 77.0}));
    EXPECT_EQ(globals->camera.workingFrame.Data()[1000], 77);
}

TEST_F(ProgramTest, ImportsNothingWhenNothingWasEverChosen) {
    ChooseAt(250, command::importImage);
    EXPECT_EQ(TickTimes(900), std::vector<std::uint64_t>{210}) << "the live view is off all the same";
    EXPECT_EQ(Information(), Texts(3, "No camera detected"));
}

TEST_F(ProgramTest, ImportsTheEarlierFileAgainWhenTheChoiceIsCancelled) {
    OfferEvenPicture(77);
    ChooseAt(250, command::importImage);
    At(300, [&] {
        OfferEvenPicture(88); // the file has changed
        ui.chooser.choice.reset();
    });
    ChooseAt(350, command::importImage);
    RunUntil(400);
    EXPECT_EQ(ui.chooser.asked, 2);
    EXPECT_EQ(Information().size(), 4U) << "the file is named once";
    EXPECT_EQ(globals->frame.bgPeak[0], 88.0);
}

TEST_F(ProgramTest, ImportsWhiteInsteadOfAFileThatIsNoPicture) {
    ui.folders.Put("/pictures/text.png", "no picture");
    ui.chooser.choice = "/pictures/text.png";
    ChooseAt(250, command::importImage);
    testing::internal::CaptureStderr();
    RunUntil(300);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "/pictures/text.png: not a fake picture\n");
    EXPECT_EQ(globals->frame.bgPeak[1], 255.0);
}

class AnalysisOfAnImport : public ProgramTest {
protected:
    AnalysisOfAnImport() {
        FramePainter painter;
        painter.Fill(substrate100);
        painter.Rectangle(200, 200, 40, 40, singleLayer100);
        PutPicture("/pictures/flake.png", painter.frame);
        ui.chooser.choice = "/pictures/flake.png";
        ui.folders.Put(globals->folders.settings, "3,-12,-8,-2,6,10,10,100,4,60\n");
        ui.clock.localTime = {2024, 3, 15, 14, 7};
        ChooseAt(250, command::importImage);
    }
};

TEST_F(AnalysisOfAnImport, FindsAndPaintsCandidates) {
    ChooseAt(260, command::findSingleLayers);
    RunUntil(300);
    EXPECT_EQ(globals->analyzer.candidateCount, 100) << "40 x 40 pixels are 10 x 10 reduced ones";
    EXPECT_FALSE(ui.drawing.windowSurface.All<RecordingSurface::Pixel>().empty());
}

TEST_F(AnalysisOfAnImport, DecidesFramesCountsAndSaves) {
    ChooseAt(260, command::findSingleLayers);
    ChooseAt(261, command::noiseRejection);
    ChooseAt(262, command::grouping);
    At(263, [&] {
        EXPECT_EQ(globals->findings.groupCount, 1);
        EXPECT_EQ(globals->findings.edges.EdgeLeft[0].x, 196) << "one reduced pixel beside the flake";
    });
    ChooseAt(264, command::discernContrast);
    At(265, [&] { EXPECT_EQ(PanelText(panel::totalFound), "1"); });
    RunUntil(300);
    EXPECT_EQ(Information().back(), "1 single layer detected!");
    EXPECT_EQ(Images(),
              (Texts{"Image_Data/240315_14-07/(0,0).jpg", "Image_Detail/240315_14-07/(0,0)detail.jpg"}));
}

TEST_F(AnalysisOfAnImport, GroupsByTheMinimumFlakeAreaOfTheSettings) {
    ui.folders.Put(globals->folders.settings, "3,-12,-8,-2,6,10,10,1000,4,60\n");
    ChooseAt(260, command::findSingleLayers);
    ChooseAt(261, command::noiseRejection);
    ChooseAt(262, command::grouping); // 1000 / 2.56 = 390 reduced pixels; the flake has 100
    At(263, [&] {
        for (const Grain& grain : globals->grainTable->grains)
            EXPECT_EQ(grain.count, 0);
    });
    RunUntil(300);
}

TEST_F(AnalysisOfAnImport, ShowsTheMeasuredBackground) {
    ChooseAt(260, command::showBackground);
    RunUntil(300);
    EXPECT_EQ(globals->screen.screenCopy[0], 100);
    EXPECT_EQ(globals->screen.screenCopy[3], 0);
}

TEST_F(AnalysisOfAnImport, TakesThePixelUnderAClickAsTargetUntilTheNextRun) {
    ui.folders.Put(globals->folders.settings, "3,-30,1,2,15,10,10,100,0,60\n");
    ui.boxes.answers = {true};
    ui.messages.PostAt(260, {mainWindow, MessageKind::LeftButtonPress, 0, PackPosition(220, 1028 - 220)});
    RunUntil(300);
    ASSERT_EQ(ui.boxes.questions.size(), 1U);
    EXPECT_EQ(ui.boxes.questions[0].owner, mainWindow);
    EXPECT_EQ(ui.boxes.questions[0].caption, "Pixel Analysis at Position: (220,220)");
    EXPECT_EQ(Config(), "3,-12.000000,-8.000000,-2.000000,6.000000,10,10,100,4,60.000000\n");
}

TEST_F(ProgramTest, SavesBothImagesOnEnterAndOnSaveImage) {
    ui.clock.localTime = {2024, 12, 1, 9, 5};
    globals->stage.position = {-15.7, 1234.0, 0.0};
    PressAt(250, key::enter);
    At(251, [&] { ui.clock.localTime.minute = 6; }); // still the same session
    PressAt(300, key::enter);
    ChooseAt(350, command::saveImage);
    RunUntil(400);
    EXPECT_EQ(Images(),
              (Texts{"Image_Data/241201_09-05/(-1,123).jpg", "Image_Data/241201_09-05/(-1,123)_0.jpg",
                     "Image_Data/241201_09-05/(-1,123)_1.jpg", "Image_Detail/241201_09-05/(-1,123)detail.jpg",
                     "Image_Detail/241201_09-05/(-1,123)detail_0.jpg",
                     "Image_Detail/241201_09-05/(-1,123)detail_1.jpg"}));
    EXPECT_EQ(std::count(ui.dialogs.textsSet.begin(), ui.dialogs.textsSet.end(),
                         std::pair<int, std::string>(panel::information, "Image saved.")),
              2);
}

TEST_F(ProgramTest, ShowsNoiseAndFocusAfterAnyKey) {
    PressAt(250, 65);
    RunUntil(300);
    const Texts progress = ui.dialogs.TextsOf(panel::progress);
    ASSERT_EQ(progress.size(), 1U);
    EXPECT_EQ(progress[0].substr(0, 6), "Noise:");
    EXPECT_NE(progress[0].find("  Focus:"), std::string::npos);
}

} // namespace
} // namespace tessaro
