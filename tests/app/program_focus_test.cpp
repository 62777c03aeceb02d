#include "focus/focus_curve.h"
#include "platform/fake/scripted_camera.h"
#include "support/travelling_port.h"
#include "tests/app/program_fixture.h"

#include <algorithm>
#include <sstream>
#include <string>

namespace tessaro {
namespace {

constexpr std::uint32_t autoFocusing = 32811;
constexpr int coarseButton = 1016;
constexpr int focusButton = 1023;

/// The program with a stage that travels and the moving test pattern: whatever Z is, its focus value is about
/// 3.7, and so each step 2 um.
class ProgramFocus : public ProgramTest {
protected:
    ProgramFocus() {
        travelling.Close(travelling.line); // the program opens it
        serialPorts = &travelling;
        globals->focusControl.focusSpeed = 200;
    }

    void PressAtTime(std::uint64_t time, int button) {
        At(time, [this, button] {
            ui.dialogs.Notify(globals->windows.controlPanel, button, Notification::Clicked);
        });
    }
    /// What Z was told.
    Texts ZCommands() const {
        Texts commands;
        for (const std::string& command : travelling.Commands())
            if (command[0] == 'L' || command[0] == 'O')
                commands.push_back(command);
        return commands;
    }
    Texts ClimbSteps() const {
        Texts steps;
        for (const std::string& text : ui.dialogs.TextsOf(panel::progress))
            if (text.starts_with("Focusing step:"))
                steps.push_back(text);
        return steps;
    }

    static constexpr std::uint64_t running = 600; // it is in its message loop by then
    static constexpr std::uint64_t done = 5500;   // so is a climb

    TravellingPort travelling{ui.clock};
};

TEST_F(ProgramFocus, FocusesByTheMenuAndGoesUpFirstWhereTheSampleRisesAlongX) {
    At(running, [this] {
        globals->focusControl.xTilt = 0.5F;
        globals->focusControl.yTilt = -1.0F;
    });
    ChooseAt(running + 1, autoFocusing);
    At(done, [this] {
        EXPECT_EQ(ClimbSteps().size(), 4U + 8U) << "the pattern is equally sharp everywhere";
        EXPECT_EQ(Information().back(), "Focusing completed.");
        EXPECT_EQ(globals->focusControl.focusBusy, 0);
        EXPECT_EQ(globals->liveTimer.on, 1);
    });
    RunUntil(done + 1);
    EXPECT_EQ(ZCommands().front(), "L3") << "2 um";
    EXPECT_TRUE(ui.boxes.warnings.empty());
}

TEST_F(ProgramFocus, GoesDownFirstAsLongAsNoTiltIsKnown) {
    ChooseAt(running, autoFocusing);
    RunUntil(done);
    EXPECT_EQ(ZCommands().front(), "L-3");
}

TEST_F(ProgramFocus, RecordsWhatItSawWhereThatIsWanted) {
    std::ostringstream out;
    FocusCurve curve(out, ui.clock, true);
    ChooseAt(running, autoFocusing);
    ui.messages.PostAt(done, {mainWindow, MessageKind::Close});
    RunProgram(*globals, ui.Adapters(), {*cameraRuntime, *serialPorts}, {&curve});
    const std::string written = out.str();
    EXPECT_EQ(std::count(written.begin(), written.end(), '\n'), 1 + 13 + 1);
    EXPECT_NE(written.find(",best of the second pass\n"), std::string::npos);
}

TEST_F(ProgramFocus, TakesTheFocusSpeedOfTheProgramsState) {
    globals->focusControl.focusSpeed = 350;
    PressAtTime(running, coarseButton);
    RunUntil(running + 5000);
    EXPECT_EQ(travelling.Commands().at(3), "T1120") << "700 um/s, after the opening's three";
}

TEST_F(ProgramFocus, RecordsTheDepthAtTheOriginByItsButton) {
    globals->scan.zOrigin = 77;
    PressAtTime(running, focusButton);
    At(done, [this] {
        EXPECT_EQ(globals->scan.zOrigin, -5) << "the first of equals in the second pass";
        EXPECT_EQ(PanelText(panel::depthAtOrigin), "-5");
    });
    RunUntil(done + 1);
}

struct ClosingCase {
    int button;
    std::uint64_t after; // ms
};

class ProgramClosed : public ProgramFocus, public testing::WithParamInterface<ClosingCase> {};

TEST_P(ProgramClosed, InTheMiddleOfASearchEndsSoonAndLeavesZWhereItIs) {
    const std::uint64_t closing = running + GetParam().after;
    std::size_t told = 0;
    bool busy = false;
    PressAtTime(running, GetParam().button);
    At(closing - 1, [&] {
        busy = globals->focusControl.focusBusy == 1;
        told = ZCommands().size();
    });
    EXPECT_EQ(RunUntil(closing), 0);
    EXPECT_TRUE(busy);
    EXPECT_LT(ui.clock.now, closing + 1000);
    const Texts commands = ZCommands();
    for (std::size_t i = told; i < commands.size(); ++i)
        EXPECT_EQ(commands[i], "O") << "it is sent nowhere any more";
    EXPECT_FALSE(travelling.Moves(axisZ));
    EXPECT_EQ(globals->focusControl.focusBusy, 0);
    EXPECT_EQ(Config(), defaultLine) << "what the end of the program writes is written";
}

/// The last frame is judged all the same, and no box of a program that is told to quit is waited for.
TEST_F(ProgramFocus, ClosedOverAnEvenFieldEndsSoonAndSaysThatItIsNotSharp) {
    ScriptedCamera camera([](const std::string& breach) { ADD_FAILURE() << breach; });
    camera.features["PixelFormat"] = {ScriptedFeature::Enumeration{"Mono8", {"Mono8", "BayerRG8"}}};
    camera.onCall = [&camera](const std::string& call) {
        if (camera.StepsLeft() == 0 && (call.starts_with("RetrieveResult") || call.starts_with("GrabOne")))
            camera.ThenImage(sensorWidth, sensorHeight,
                             ScriptedCamera::Samples(sensorByteCount, std::uint8_t{90}));
    };
    cameraRuntime = &camera;
    constexpr std::uint64_t closing = running + 500;
    std::size_t warned = 0;
    PressAtTime(running, focusButton);
    At(closing - 1, [&] {
        EXPECT_EQ(globals->focusControl.focusBusy, 1);
        EXPECT_EQ(globals->camera.testPatternPhase, 0U);
        warned = ui.boxes.warnings.size();
    });
    EXPECT_EQ(RunUntil(closing), 0);
    EXPECT_LT(ui.clock.now, closing + 1000);
    EXPECT_EQ(warned, 1U) << "that there is nothing to see";
    ASSERT_EQ(ui.boxes.warnings.size(), 2U);
    EXPECT_EQ(ui.boxes.warnings.back().text, "Please, adjust the sample position");
    EXPECT_TRUE(ui.boxes.questions.empty());
    EXPECT_LT(globals->focusValue, 0.7F);
    EXPECT_EQ(globals->focusControl.focusBusy, 0);
    EXPECT_EQ(Config(), defaultLine);
}

INSTANTIATE_TEST_SUITE_P(Coarse, ProgramClosed,
                         testing::Values(ClosingCase{coarseButton, 5}, ClosingCase{coarseButton, 1000},
                                         ClosingCase{coarseButton, 3000}, ClosingCase{coarseButton, 4700}));
INSTANTIATE_TEST_SUITE_P(Fine, ProgramClosed,
                         testing::Values(ClosingCase{focusButton, 5}, ClosingCase{focusButton, 100},
                                         ClosingCase{focusButton, 220}, ClosingCase{focusButton, 1100},
                                         ClosingCase{focusButton, 2000}));

} // namespace
} // namespace tessaro
