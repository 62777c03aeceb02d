#include "platform/fake/scripted_serial_port.h"
#include "tests/app/program_fixture.h"

namespace tessaro {
namespace {

/// The program with a stage on its line, or without.
class ProgramStage : public ProgramTest {
protected:
    ProgramStage() { serialPorts = &line; }

    void ExpectOpening(const char* x = "0", const char* y = "0") {
        line.Expect("z");
        line.Expect("p", ScriptedSerialPorts::Answered(x));
        line.Expect("P", ScriptedSerialPorts::Answered(y));
        line.Expect("Q", ScriptedSerialPorts::Answered("160"));
        line.Expect("S2400");
        line.Expect("T2400");
    }

    void ExpectReturnToOrigin() {
        line.Expect("m0");
        line.Expect("M0", ScriptedSerialPorts::Answered("Y"));
        line.Expect("P", ScriptedSerialPorts::Answered("0"));
    }

    static constexpr std::uint64_t running = 500; // it is in its message loop by then
    ScriptedSerialPorts line{ui.clock, [](const std::string& breach) { ADD_FAILURE() << breach; }};
};

TEST_F(ProgramStage, SaysThisToTheControllerWhenItStartsAndNothingElse) {
    ExpectOpening();
    ExpectReturnToOrigin();
    At(running, [&] {
        EXPECT_EQ(line.writes, (Texts{{"z", 2}, {"p", 2}, {"P", 2}, {"Q", 2}, {"S2400", 6}, {"T2400", 6}}));
        EXPECT_EQ(globals->stage.offline, 0);
    });
    RunUntil(running);
    EXPECT_TRUE(ui.boxes.warnings.empty());
}

TEST_F(ProgramStage, OpensTheStage100MillisecondsBeforeItLooksForACamera) {
    class TimedCameras : public AbsentCameras {
    public:
        explicit TimedCameras(const VirtualClock& clock) : m_clock(clock) {}
        void Initialize() override { calledAt = m_clock.now; }
        std::uint64_t calledAt = 0;

    private:
        const VirtualClock& m_clock;
    };
    TimedCameras timed{ui.clock};
    std::uint64_t stageReadyAt = 0; // when the last command of its opening went out
    line.onCall = [&](std::string_view call) {
        if (call == "Write" && line.WritesLeft() == 1)
            stageReadyAt = ui.clock.now;
    };
    ExpectOpening();
    At(running, [&] { line.TakeAnyWrite(); });
    ui.messages.PostAt(running, {mainWindow, MessageKind::Close});
    RunProgram(*globals, ui.Adapters(), {timed, line});
    EXPECT_EQ(stageReadyAt, 10U + 100U + 3 * 15U) << "main window, settling, three queries";
    EXPECT_EQ(timed.calledAt, stageReadyAt + 100U);
}

TEST_F(ProgramStage, ComesOnlineAfterAMoveThatWasAskedForBeforeItWasOpened) {
    PressAt(5, key::pageUp); // while the main window is being made
    ExpectOpening();
    At(2500, [&] {
        Texts expected = {"Write L4"};
        expected.insert(expected.end(), 199, "Read 10"); // 10 ms each, for two seconds
        expected.emplace_back("Open line 3");
        ASSERT_GE(line.calls.size(), expected.size());
        EXPECT_EQ(Texts(line.calls.begin(), line.calls.begin() + 201), expected)
            << "in vain, until the opening";
        EXPECT_EQ(globals->stage.offline, 0);
        EXPECT_EQ(globals->stage.position[2], 100.0) << "where the controller says";
    });
    ExpectReturnToOrigin();
    RunUntil(2500);
    EXPECT_TRUE(ui.boxes.warnings.empty());
}

TEST_F(ProgramStage, StoresWhereTheStageStandsAndDoesNotShowItYet) {
    ExpectOpening("1600", "800");
    At(running, [&] {
        EXPECT_EQ(globals->stage.position, (std::array<double, 3>{1000.0, 500.0, 100.0}));
        EXPECT_EQ(PanelText(panel::positionX), "0") << "of the first paint, before the stage was asked";
    });
    line.Expect("M0"); // to the origin; X needs longer
    line.Expect("m0", ScriptedSerialPorts::Answered("X"));
    line.Expect("p", ScriptedSerialPorts::Answered("0"));
    RunUntil(running);
}

TEST_F(ProgramStage, GoesToTheScanOriginAtTheEnd) {
    ExpectOpening();
    At(running, [&] {
        globals->scan.originX = 100;
        globals->scan.originY = -250;
    });
    line.Expect("m160");
    line.Expect("M-400", {{40, ScriptedSerialPorts::Terminated("P-200")},
                          {90, ScriptedSerialPorts::Terminated("X")},
                          {140, ScriptedSerialPorts::Terminated("Y")}});
    line.Expect("P", ScriptedSerialPorts::Answered("-400"));
    RunUntil(running);
    EXPECT_EQ(globals->stage.position[1], -250.0);
    EXPECT_EQ(Config(), defaultLine);
}

TEST_F(ProgramStage, OpensThePortOfTheSettingsAndWritesItBack) {
    ui.folders.Put(globals->folders.settings, "12,-20.5\n");
    ExpectOpening();
    ExpectReturnToOrigin();
    RunUntil(running);
    EXPECT_EQ(line.calls.front(), "Open line 12");
    EXPECT_EQ(Config().substr(0, 14), "12,-20.500000,");
}

TEST_F(ProgramStage, WarnsOnceOfAMissingPortAndWorksWithoutIt) {
    line.present = false;
    At(running, [&] {
        ASSERT_EQ(ui.boxes.warnings.size(), 1U);
        EXPECT_EQ(ui.boxes.warnings[0].owner, mainWindow);
        EXPECT_EQ(ui.boxes.warnings[0].text, "Error in  opening serial port");
        EXPECT_EQ(globals->stage.offline, 1);
        globals->scan.originX = 300;
    });
    EXPECT_EQ(RunUntil(running), 0);
    EXPECT_EQ(ui.boxes.warnings.size(), 1U);
    EXPECT_EQ(line.calls, Texts{"Open line 3"});
    EXPECT_EQ(globals->stage.position[0], 300.0) << "the stage in memory went to the origin";
    EXPECT_EQ(Config(), defaultLine);
}

TEST_F(ProgramStage, StartsWithAControllerThatSaysNothing) {
    line.TakeAnyWrite();
    At(1000, [&] { EXPECT_EQ(globals->stage.offline, 0); });
    EXPECT_EQ(RunUntil(1000), 0);
    EXPECT_EQ(ui.boxes.warnings.size(), 0U);
    EXPECT_EQ(line.writes.size(), 6U + 3U);
}

TEST_F(ProgramStage, MayBeClosedUnderTheWarningOfAMissingPort) {
    line.present = false;
    globals->scan.originX = 300;
    ui.boxes.whileWarning = [this] { ui.messages.Dispatch({mainWindow, MessageKind::Close}); };
    EXPECT_EQ(RunProgram(*globals, ui.Adapters(), {*cameraRuntime, *serialPorts}), 0);
    EXPECT_TRUE(ui.windows.windows.empty());
    EXPECT_TRUE(ui.dialogs.dialogs.empty());
    EXPECT_EQ(globals->stage.position[0], 300.0) << "the stage in memory went to the origin";
    EXPECT_EQ(Config(), defaultLine);
}

TEST_F(ProgramStage, MayBeClosedWhileItWaitsForTheStage) {
    ExpectOpening();
    ExpectReturnToOrigin();
    std::uint64_t closedAt = 0;
    line.onCall = [&](std::string_view call) {
        if (call != "Write" || line.WritesLeft() != 4) // the opening's last command is on its way
            return;
        closedAt = ui.clock.now;
        ui.messages.Post({mainWindow, MessageKind::Close});
    };
    EXPECT_EQ(RunProgram(*globals, ui.Adapters(), {*cameraRuntime, *serialPorts}), 0);
    EXPECT_EQ(closedAt, 10U + 100U + 3 * 15U) << "main window, settling, three queries";
    EXPECT_TRUE(ui.windows.windows.empty());
    EXPECT_EQ(Config(), defaultLine);
}

TEST_F(ProgramStage, EndsWhenTheLineHangsUpMeanwhile) {
    ExpectOpening("1600", "0");
    At(running, [&] { line.HangUp(); });
    EXPECT_EQ(RunUntil(running), 0);
    EXPECT_EQ(globals->stage.offline, 1);
    EXPECT_EQ(globals->stage.position[0], 0.0) << "the stage in memory went to the origin";
}

} // namespace
} // namespace tessaro
