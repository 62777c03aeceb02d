#include "app/resource_ids.h"
#include "platform/fake/scripted_camera.h"
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
