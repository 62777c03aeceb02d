#include "app/resource_ids.h"
#include "platform/fake/scripted_camera.h"
#include "support/drawn_frames.h"
#include "tests/app/program_fixture.h"

namespace tessaro {
namespace {

TEST_F(ProgramTest, StartsAndEndsInThisOrder) {
    EXPECT_EQ(RunUntil(started), 0);
    EXPECT_EQ(ui.calls, (Texts{"create Image_Data", "register Tessaro", "register popup_controller",
                               "register popup_controller", "make Tessaro", "dialog 137", "show Tessaro",
                               "make popup_controller", "show popup_controller", "bitmap", "memory context",
                               "accelerators 109", "read Config.txt", "write Config.txt"}));
}

TEST_F(ProgramTest, MakesItsWindowsAtTheirPlaces) {
    At(started, [&] {
        ASSERT_EQ(ui.windows.windows.size(), 2U);
        const FakeWindowSystem::Window& window = ui.windows.windows.at(mainWindow);
        EXPECT_EQ(window.description.className, "Tessaro");
        EXPECT_EQ(window.title, "Tessaro Searching");
        EXPECT_EQ(window.description.style, WindowStyle::Overlapped);
        EXPECT_EQ(window.description.x, 0);
        EXPECT_EQ(window.description.y, 0);
        EXPECT_EQ(window.description.width, 1242);
        EXPECT_EQ(window.description.height, 1108);
        EXPECT_EQ(window.description.owner, WindowHandle::None);
        EXPECT_EQ(window.windowClass.menuResource, 109);
        EXPECT_EQ(window.windowClass.iconResource, 136);
        EXPECT_TRUE(window.shown);
        EXPECT_TRUE(window.painted);
        const FakeWindowSystem::Window& popup = ui.windows.windows.at(popupWindow);
        EXPECT_EQ(popup.description.className, "popup_controller");
        EXPECT_EQ(popup.title, "Motor Controller");
        EXPECT_EQ(popup.description.style, WindowStyle::ToolPopup);
        EXPECT_EQ(popup.description.x, 900);
        EXPECT_EQ(popup.description.y, 700);
        EXPECT_EQ(popup.description.width, 400);
        EXPECT_EQ(popup.description.height, 400);
        EXPECT_EQ(popup.description.owner, mainWindow);
        EXPECT_EQ(popup.windowClass.menuResource, 0);
        EXPECT_EQ(popup.windowClass.iconResource, 136);
        EXPECT_TRUE(popup.shown);
        EXPECT_EQ(globals->windows.main, mainWindow);
        EXPECT_EQ(globals->windows.motorController, popupWindow);
    });
    RunUntil(started);
}

TEST_F(ProgramTest, OpensTheControlPanelBesideTheMainWindow) {
    At(started, [&] {
        const auto& dialog = ui.dialogs.dialogs.at(globals->windows.controlPanel);
        EXPECT_EQ(dialog.owner, mainWindow);
        EXPECT_TRUE(dialog.shown);
        EXPECT_EQ(PanelText(panel::positionX), "0") << "shown by the first paint";
    });
    RunUntil(started);
    EXPECT_TRUE(ui.dialogs.dialogs.empty());
    EXPECT_EQ(globals->windows.controlPanel, WindowHandle::None);
}

TEST_F(ProgramTest, ReadsTheSettingsBeforeItWaitsForTheStageAndLooksForACameraAfterwards) {
    At(60, [&] {
        EXPECT_TRUE(HasCall("read Config.txt"));
        EXPECT_EQ(Information(), Texts{"No camera detected"}) << "of the first paint";
    });
    At(started, [&] { EXPECT_EQ(Information(), Texts(3, "No camera detected")); });
    RunUntil(started);
}

TEST_F(ProgramTest, ShowsWhatACameraSeesOnceItIsAdjusted) {
    ScriptedCamera camera([](const std::string& breach) { ADD_FAILURE() << breach; });
    camera.features["PixelFormat"] = {ScriptedFeature::Enumeration{"Mono8", {"Mono8", "BayerRG8"}}};
    for (const int level : {80, 90}) // at 310 and 410 ms
        camera.ThenImage(sensorWidth, sensorHeight,
                         ScriptedCamera::Samples(sensorByteCount, static_cast<std::uint8_t>(level)));
    At(350, [&] { EXPECT_EQ(*ui.drawing.windows.at(mainWindow).Pixel(600, 500), 80); });
    ui.messages.PostAt(450, {mainWindow, MessageKind::Close});
    EXPECT_EQ(RunProgram(*globals, ui.Adapters(), {camera, serial}), 0);
    EXPECT_EQ(globals->camera.workingFrame.Data()[1000], 90);
    EXPECT_EQ(globals->camera.testPatternPhase, 0U);
    EXPECT_EQ(Information(), (Texts{"No camera detected", "Camera Opening", "Camera Auto Gain Control",
                                    "Camera Auto Exposure "}))
        << "the first paint comes before the camera is looked for";
    EXPECT_EQ(camera.held, 0) << "the last image went";
}

TEST_F(ProgramTest, LetsGoOfTheCameraWhenItEnds) {
    ScriptedCamera camera([](const std::string& breach) { ADD_FAILURE() << breach; });
    At(started, [&] { EXPECT_NE(globals->camera.camera, nullptr); });
    ui.messages.PostAt(started, {mainWindow, MessageKind::Close});
    RunProgram(*globals, ui.Adapters(), {camera, serial});
    EXPECT_EQ(globals->camera.camera, nullptr);
    EXPECT_EQ(globals->camera.present, 0);
    EXPECT_TRUE(HasCall("write Config.txt"));
}

TEST_F(ProgramTest, HoldsTwoGrainTablesFromBeforeItsWindowsUntilItsEnd) {
    int seen = 0;
    ui.windows.onCall = [&](const std::string& call) {
        if (call != "make Tessaro" && call != "accelerators 109")
            return;
        ++seen;
        EXPECT_NE(globals->grainTable, nullptr);
        EXPECT_NE(globals->spareGrainTable, nullptr);
        EXPECT_EQ(globals->grainTable->grains[299].count, 0);
    };
    RunUntil(started);
    EXPECT_EQ(seen, 2);
    EXPECT_EQ(globals->grainTable, nullptr);
    EXPECT_EQ(globals->spareGrainTable, nullptr);
}

TEST_F(ProgramTest, WithoutAMainWindowReturnsZeroAndTouchesNoSettings) {
    ui.windows.failMaking = {"Tessaro"};
    ui.folders.Put(globals->folders.settings, "5,-20.5\n");
    EXPECT_EQ(RunProgram(*globals, ui.Adapters(), {cameras, serial}), 0);
    EXPECT_FALSE(HasCall("read Config.txt"));
    EXPECT_FALSE(HasCall("write Config.txt"));
    EXPECT_FALSE(HasCall("make popup_controller"));
    EXPECT_FALSE(HasCall("bitmap"));
    EXPECT_EQ(Config(), "5,-20.5\n");
    EXPECT_EQ(globals->settings.portNumber, 3);
    EXPECT_EQ(ui.clock.now, 0U);
}

TEST_F(ProgramTest, GoesOnWithoutAMotorController) {
    ui.windows.failMaking = {"popup_controller"};
    EXPECT_EQ(RunUntil(started + 350), 0);
    EXPECT_EQ(globals->windows.motorController, WindowHandle::None);
    EXPECT_EQ(globals->camera.testPatternPhase, 3U * 50U) << "the live view runs";
    EXPECT_EQ(Config(), defaultLine);
}

TEST_F(ProgramTest, ReturnsTheExitCodeOfTheQuitMessage) {
    At(started + 1, [&] { ui.messages.PostQuit(7); });
    EXPECT_EQ(RunProgram(*globals, ui.Adapters(), {cameras, serial}), 7);
    EXPECT_EQ(Config(), defaultLine);
}

TEST_F(ProgramTest, DispatchesWhatIsLeftBeforeItQuits) {
    At(started + 1, [&] {
        ui.messages.PostQuit(0);
        ChooseAt(started + 1, command::information);
    });
    RunProgram(*globals, ui.Adapters(), {cameras, serial});
    EXPECT_EQ(ui.dialogs.modalResources, std::vector<int>{103});
}

TEST_F(ProgramTest, LeavesTheDefaultSettingsBehind) {
    RunUntil(started);
    EXPECT_EQ(Config(), defaultLine);
}

TEST_F(ProgramTest, TakesTheSettingsOfTheFileAndWritesThemBack) {
    constexpr const char* line = "5,-20.500000,1.250000,2.000000,7.500000,12,14,80,1,35.000000\n";
    ui.folders.Put(globals->folders.settings, line);
    At(started, [&] {
        EXPECT_EQ(globals->stage.portNumber, 5);
        EXPECT_EQ(globals->settings.scoreThreshold, 35.0F);
        EXPECT_EQ(PanelText(panel::xRange), "12");
        EXPECT_EQ(PanelText(panel::yRange), "14");
    });
    RunUntil(started);
    EXPECT_EQ(Config(), line);
}

TEST_F(ProgramTest, WritesWhatChangedDuringTheRun) {
    ui.folders.Put(globals->folders.settings, "5,-20.5\n");
    At(started, [&] {
        globals->stage.portNumber = 9;
        globals->settings.minimumFlakeArea = 42;
    });
    RunUntil(started);
    EXPECT_EQ(Config(), "9,-20.500000,-8.000000,-2.000000,6.000000,10,10,42,4,70.000000\n");
}

TEST_F(ProgramTest, EndsWellWhenTheSettingsCannotBeWritten) {
    ui.folders.failWriting = true;
    EXPECT_EQ(RunUntil(started), 0);
    EXPECT_EQ(Config(), "");
}

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
    RunUntil(started + 450);
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

TEST_F(ProgramTest, DoesNothingForPauseAndStopOutsideAPump) {
    ChooseAt(250, command::pauseResume);
    ChooseAt(251, command::stop);
    At(252, [&] { EXPECT_EQ(globals->stage.ioBuffer[0], '\0') << "no stop was even tried"; });
    RunUntil(300);
    EXPECT_EQ(globals->scan.paused, 0);
    EXPECT_EQ(Information(), Texts(3, "No camera detected"));
}

TEST_F(ProgramTest, PausesAndStopsInsideAPump) {
    ChooseAt(250, command::redImage);
    ChooseAt(300, command::pauseResume);
    ChooseAt(310, command::stop);
    At(320, [&] { EXPECT_STREQ(globals->stage.ioBuffer.data(), "O") << "the last of the three stops"; });
    RunUntil(2300);
    EXPECT_EQ(globals->scan.paused, 1);
    EXPECT_EQ(Information().back(), "Paused...");
}

TEST_F(ProgramTest, NeverTriesTheStageForThereIsNoLine) {
    At(started, [&] { EXPECT_EQ(globals->stage.offline, 1); });
    RunUntil(started);
}

TEST_F(ProgramTest, EndsByTheMenu) {
    ChooseAt(250, command::exit);
    EXPECT_EQ(RunProgram(*globals, ui.Adapters(), {cameras, serial}), 0);
    EXPECT_FALSE(ui.messages.waitedForEver);
    EXPECT_EQ(ui.clock.now, 350U) << "100 ms for the stage";
    EXPECT_TRUE(ui.windows.windows.empty());
    EXPECT_TRUE(ui.messages.timers.empty());
}

TEST_F(ProgramTest, ShowsWhatItIs) {
    ChooseAt(250, command::information);
    RunUntil(300);
    EXPECT_EQ(ui.dialogs.modalResources, std::vector<int>{103});
}

TEST_F(ProgramTest, OpensTheControlPanelAgainAndNeverTwice) {
    ChooseAt(250, command::controlPanel);
    At(260, [&] {
        EXPECT_EQ(ui.dialogs.dialogs.size(), 1U);
        ui.dialogs.Notify(globals->windows.controlPanel, commandCancel, Notification::Clicked);
        EXPECT_TRUE(ui.dialogs.dialogs.empty());
    });
    ChooseAt(270, command::controlPanel);
    At(280, [&] { EXPECT_EQ(ui.dialogs.dialogs.size(), 1U); });
    RunUntil(300);
}

TEST_F(ProgramTest, OnlyHidesTheMotorControllerWhenItIsClosed) {
    ui.messages.PostAt(250, {popupWindow, MessageKind::Close});
    At(260, [&] {
        ASSERT_TRUE(ui.windows.windows.contains(popupWindow));
        EXPECT_FALSE(ui.windows.windows.at(popupWindow).shown);
    });
    RunUntil(300);
    EXPECT_TRUE(ui.windows.windows.empty()) << "it goes with the main window";
}

TEST_F(ProgramTest, GivesTheKeyboardToTheWindowUnderThePointer) {
    ui.messages.PostAt(250, {mainWindow, MessageKind::MouseMove});
    RunUntil(300);
    EXPECT_EQ(ui.windows.focused, mainWindow);
}

TEST_F(ProgramTest, DoesNotAnalyseWithoutMemoryForTheGrains) {
    At(240, [&] { globals->grainTable.reset(); });
    ChooseAt(250, command::findSingleLayers);
    ChooseAt(251, command::grouping);
    ChooseAt(252, command::discernContrast);
    EXPECT_EQ(RunUntil(300), 0);
    EXPECT_EQ(globals->analyzer.candidateCount, 0);
}

TEST_F(ProgramTest, MayBeClosedWhileItStarts) {
    EXPECT_EQ(RunUntil(60), 0);
    EXPECT_FALSE(ui.messages.waitedForEver);
    EXPECT_EQ(Config(), defaultLine);
}

TEST(GlobalState, StartsAsTheProgramDoes) {
    MemoryFolders folders;
    const auto globals = std::make_unique<Globals>(folders);
    EXPECT_EQ(globals->focusValue, 10.0F);
    EXPECT_EQ(globals->scan.scanning, 0);
    EXPECT_EQ(globals->scan.stopRequested, 0);
    EXPECT_EQ(globals->frame.pixels, globals->camera.workingFrame.Data());
    EXPECT_EQ(globals->screen.screenBitmap, BitmapHandle::None);
    EXPECT_EQ(globals->grainTable, nullptr);
    EXPECT_TRUE(folders.folders.contains(globals->folders.working));
}

} // namespace
} // namespace tessaro
