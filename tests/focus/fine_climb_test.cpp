#include "app/number_text.h"
#include "tests/focus/search_fixture.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>

namespace tessaro {
namespace {

/// A step of a few micrometres takes 291 ms: its move 41, settling 210, the frame 40.
class FineClimbTest : public SearchFixture {
protected:
    int Climb(float hint = 0.0F) {
        focus.xTilt = hint;
        return autoFocus.FineFocus(autoFocus.Hint(), 1);
    }

    void BeFocused(float value) { BeFlat(0.5F, value); }

    static Texts Steps(int firstPass, int secondPass) {
        Texts steps;
        for (int i = 0; i < firstPass; ++i)
            steps.push_back("Focusing step:0-" + std::to_string(i));
        for (int i = 0; i < secondPass; ++i)
            steps.push_back("Focusing step:1-" + std::to_string(i));
        return steps;
    }

    void ExpectWarnings(const Texts& texts) {
        ASSERT_EQ(ui.boxes.warnings.size(), texts.size());
        for (std::size_t i = 0; i < texts.size(); ++i) {
            EXPECT_EQ(ui.boxes.warnings[i].owner, windows.main);
            EXPECT_EQ(ui.boxes.warnings[i].text, texts[i]);
            EXPECT_EQ(ui.boxes.warnings[i].caption, "Error in focusing");
        }
    }
    void ExpectNotBusy() {
        EXPECT_EQ(focus.focusBusy, 0);
        EXPECT_EQ(liveTimer.on, 1);
        EXPECT_TRUE(LiveTimerRuns());
    }

    static constexpr const char* badStart = "Please, adjust the sample posion";
    static constexpr const char* badEnd = "Please, adjust the sample position";
    const Texts completed = {"Auto focusing has started.", "Focusing completed."};
    const Texts aborted = {"Auto focusing has started.", "Focusing Aborted."};
};

TEST_F(FineClimbTest, StartedInFocusMovesNothing) {
    BeFocused(10.25F);
    EXPECT_EQ(Climb(), 1);
    EXPECT_EQ(Information(), completed);
    EXPECT_TRUE(line.writes.empty());
    EXPECT_TRUE(Progress().empty());
    EXPECT_EQ(view.calls, (Texts{"grab", "measures", "measures"})) << "the last is the end's";
    ExpectNotBusy();
}

TEST_F(FineClimbTest, IsNotInFocusYetAtTen) {
    BeFocused(10.0F);
    Climb();
    EXPECT_FALSE(line.writes.empty());
}

TEST_F(FineClimbTest, OfAFlatCurveEndsItsPassesAfterFourAndEightSteps) {
    BeFocused(2.0F); // steps of 2.83 um, so of 2
    EXPECT_EQ(Climb(), 1);
    EXPECT_EQ(ClimbSteps(), Steps(4, 8));
    EXPECT_EQ(Information(), completed);
    // By 2 um from what was reached, in whole steps of 0.625 um; then to the first of equals in the second
    // pass, at -5 um.
    EXPECT_EQ(line.Commands(), (Texts{"L-3", "L-6", "L-9", "L-12", "L-8", "L-4", "L0", "L3", "L6", "L9",
                                      "L12", "L15", "L-8"}));
    EXPECT_EQ(stage.position[2], -5.0);
    EXPECT_EQ(CallsOf("grab"), 1 + 12);
    EXPECT_EQ(CallsOf("measures"), 1 + 12 + 1);
    EXPECT_EQ(CallsOf("score"), 0);
    ExpectNotBusy();
}

TEST_F(FineClimbTest, ReturnsToTheBestPositionOfTheSecondPass) {
    Be([](double) { return 0.5; }, [](double z) { return 8.0 - 0.5 * std::abs(z - 3.0); });
    EXPECT_EQ(Climb(), 1);
    // Steps of 1 um. Down once, to -0.625, where the value falls from 6.5 to 6.19. Up through 0, 0.625, 1.25,
    // 1.875, 2.5 and 3.125 with 7.94 to 3.75 with 7.63. The best is 3.125, kept as 3.
    EXPECT_EQ(line.Commands(), (Texts{"L-1", "L0", "L1", "L2", "L3", "L4", "L5", "L6", "L4"}));
    EXPECT_EQ(ClimbSteps(), Steps(1, 7));
}

TEST_F(FineClimbTest, ChoosesAmongTheSecondPassOnly) {
    // Up first, over the peak; the second pass falls when it has left it behind once more.
    Be([](double) { return 0.5; }, [](double z) { return 8.0 - 0.5 * std::abs(z - 3.0); });
    EXPECT_EQ(Climb(1.0F), 1);
    // Up: 0.625, 1.25, 1.875, 2.5, 3.125, 3.75, where it falls. Down: 2.75 is 4 steps, 2.5 um with 7.75, a
    // rise over the 7.63 of before; 1.5 is 2 steps, 1.25 um with 7.13. The best of the second pass is 2.5,
    // kept as 2.
    EXPECT_EQ(line.Commands(), (Texts{"L1", "L2", "L3", "L4", "L5", "L6", "L4", "L2", "L3"}));
    EXPECT_EQ(ClimbSteps(), Steps(6, 2));
}

TEST_F(FineClimbTest, TakesTenAndThenTwentyStepsAndStaysAtTheLastWhenItIsTheBest) {
    motion.MoveAxisTo(axisZ, 100.0); // 160 steps
    line.writes.clear();
    float value = 2.0F;
    view.sharpness = [&] {
        value += 0.125F;
        return FocusFigures{0.0F, 0.0F, 0.5F, value};
    };
    EXPECT_EQ(Climb(), 1);
    EXPECT_EQ(ClimbSteps(), Steps(10, 20));
    // Ten times 2 um down, which is 4 steps; up six times 2 um, 3 steps, and above a value of 4 fourteen
    // times 1 um, 1 step. The twentieth entry is 152 steps, 95 um; the one before is kept as 94.
    const Texts commands = line.Commands();
    ASSERT_EQ(commands.size(), 31U);
    EXPECT_EQ(commands[9], "L120");
    EXPECT_EQ(commands[28], "L151");
    EXPECT_EQ(commands[29], "L152");
    EXPECT_EQ(commands[30], "L152");
    EXPECT_EQ(stage.position[2], 95.0);
    EXPECT_EQ(Z(), 95.0);
}

TEST_F(FineClimbTest, KeepsZWhereItIsWhenTheSecondPassEndsAtItsFirstStep) {
    float value = 5.0F;
    view.sharpness = [&] {
        value -= 0.5F;
        return FocusFigures{0.0F, 0.0F, 0.5F, value};
    };
    EXPECT_EQ(Climb(), 1);
    EXPECT_EQ(ClimbSteps(), Steps(1, 1));
    EXPECT_EQ(line.Commands(), (Texts{"L-1", "L2"})) << "1 um down, and from -0.625 um 2 up";
    EXPECT_EQ(Information(), completed);
}

TEST_F(FineClimbTest, BeginsUpwardsOnlyForAHintAboveZero) {
    struct Case {
        float hint;
        const char* first;
    };
    const float none = std::numeric_limits<float>::quiet_NaN();
    for (const Case& example :
         {Case{1e-6F, "L3"}, Case{0.0F, "L-3"}, Case{-0.0F, "L-3"}, Case{-2.0F, "L-3"}, Case{none, "L-3"}}) {
        motion.MoveAxisTo(axisZ, 0.0);
        line.writes.clear();
        BeFocused(2.0F);
        Climb(example.hint);
        EXPECT_EQ(line.Commands().at(0), example.first) << example.hint;
    }
}

TEST_F(FineClimbTest, StopsZAndStaysWhenAStepIsInFocus) {
    Be([](double) { return 0.5; }, [](double z) { return z > 3.0 ? 10.5 : 9.0 + z / 4.0; });
    EXPECT_EQ(Climb(1.0F), 1);
    EXPECT_EQ(line.Commands(), (Texts{"L1", "L2", "L3", "L4", "L5", "O"}));
    EXPECT_EQ(ClimbSteps(), Steps(5, 0));
    EXPECT_EQ(Information(), completed);
}

TEST_F(FineClimbTest, SweepsByAThousandFirstWhereTheValueIsBelowOne) {
    focus.focusSpeed = 300;
    BeFocused(0.5F);
    EXPECT_EQ(Climb(), 0) << "no better at the end";
    const Texts commands = line.Commands();
    EXPECT_EQ(Texts(commands.begin(), commands.begin() + 3), (Texts{"T960", "L1600", "T480"}))
        << "600 and 300 um/s";
    EXPECT_EQ(commands.at(3), "L-1600") << "the lift of 1.7 s has arrived";
    const Texts information = Information();
    EXPECT_EQ(information.size(), 2U + 4U + 90U);
    EXPECT_EQ(information[0], "Auto focusing has started.");
    EXPECT_EQ(information[1], "Course Focusing has started");
    EXPECT_EQ(information[information.size() - 2], "Course Focusing Completed");
    EXPECT_EQ(information.back(), "Focusing completed.");
    EXPECT_EQ(ClimbSteps(), Steps(4, 8)) << "and climbs then";
}

TEST_F(FineClimbTest, SweepsFromAThousandthToBelowOne) {
    struct Case {
        float value;
        bool sweeps;
    };
    for (const Case& example : {Case{0.001F, true}, Case{std::nextafter(1.0F, 0.0F), true}, Case{1.0F, false},
                                Case{std::nextafter(0.001F, 0.0F), false}}) {
        line.writes.clear();
        BeFocused(example.value);
        Climb();
        EXPECT_EQ(line.Commands().at(0)[0] == 'T', example.sweeps) << example.value;
    }
}

TEST_F(FineClimbTest, WarnsOfAFieldWithNothingToSeeAndGoesOn) {
    scan.scanning = 1;
    BeFocused(0.0001F); // steps of 400 um
    EXPECT_EQ(Climb(), 0);
    ExpectWarnings({badStart, badEnd});
    EXPECT_EQ(ClimbSteps(), Steps(4, 8));
    EXPECT_EQ(line.Commands().at(0), "L-640");
    EXPECT_EQ(Information(), completed) << "aborted only after that was told";
    EXPECT_EQ(scan.scanning, 0);
    EXPECT_EQ(scan.stopRequested, 0);
    ExpectNotBusy();
}

TEST_F(FineClimbTest, EndsAScanWhoseImageIsNotSharp) {
    BeFocused(std::nextafter(0.7F, 0.0F));
    scan.scanning = 1;
    EXPECT_EQ(Climb(), 0);
    ExpectWarnings({badEnd});
    EXPECT_EQ(scan.scanning, 0);
}

TEST_F(FineClimbTest, LetsAScanGoOnFromSevenTenths) {
    BeFocused(0.7F);
    scan.scanning = 1;
    EXPECT_EQ(Climb(), 1);
    ExpectWarnings({});
    EXPECT_EQ(scan.scanning, 1);
}

TEST_F(FineClimbTest, JudgesTheLastFrameAgain) {
    BeFocused(2.0F);
    At(1000, [this] { focusValue = 11.0F; }); // somebody else measures in the middle
    EXPECT_EQ(Climb(), 1);
    EXPECT_EQ(focusValue, 2.0F);
}

TEST_F(FineClimbTest, KeepsTheLiveViewOffThroughASweepWithin) {
    BeFocused(0.5F);
    int looks = 0;
    for (const std::uint64_t time : {30U, 5000U, 11'500U, 12'500U})
        At(time, [&] {
            ++looks;
            EXPECT_FALSE(LiveTimerRuns()) << ui.clock.now;
            EXPECT_EQ(liveTimer.on, 0);
        });
    At(5000, [this] { EXPECT_EQ(focus.focusBusy, 1); });
    Climb();
    EXPECT_EQ(looks, 4);
    const Texts& calls = ui.messages.timerCalls;
    EXPECT_EQ(std::count(calls.begin(), calls.end(), "set 1 every 100"), 1);
    EXPECT_EQ(calls.back(), "set 1 every 100");
    ExpectNotBusy();
}

/// That is meant: a search ends its own busy time, and with it that of the one within which it ran.
TEST_F(FineClimbTest, IsNotBusyAnyMoreOnceItsSweepHasEnded) {
    BeFocused(0.5F);
    int climbing = 0;
    view.onGrab = [&] {
        ui.clock.Sleep(frameMs);
        climbing += ClimbSteps().empty() ? 0 : 1;
        EXPECT_EQ(focus.focusBusy, ClimbSteps().empty() ? 1 : 0);
    };
    Climb();
    EXPECT_EQ(climbing, 4 + 8);
    ExpectNotBusy();
}

/// The sweep looks at the score alone. It leaves Z where the value is 11, and the climb begins with the value
/// of before: by a step of 4 / sqrt(0.5), so of 5 um, 8 motor steps.
TEST_F(FineClimbTest, BeginsAfterItsSweepWithTheFocusValueOfBefore) {
    Be([](double z) { return 0.05 + Peak(3.0, 12.0, z + 300.0); },
       [](double z) { return std::abs(z + 300.0) < 60.0 ? 11.0 : 0.5; });
    EXPECT_EQ(Climb(), 1);
    EXPECT_EQ(Outcomes(), (Texts{"peak passed", "in focus"})) << "not in focus already";
    EXPECT_EQ(ClimbSteps(), Steps(1, 0));
    const Texts commands = line.Commands();
    ASSERT_EQ(commands.size(), 9U); // the last four: to the peak, the speed, the step, stopped there
    const auto steps = [&](std::size_t i) { return ParsedInteger(commands[i].substr(1)).value_or(0); };
    EXPECT_EQ(commands[5][0], 'L');
    EXPECT_NEAR(steps(5), -280 * 1.6, 40 * 1.6) << "in focus";
    EXPECT_NEAR(steps(7), steps(5) - 8, 1);
    EXPECT_EQ(commands[8], "O");
    EXPECT_EQ(focusValue, 11.0F);
}

TEST_F(FineClimbTest, LeavesALiveViewOffThatWasOff) {
    liveTimer.on = 0;
    BeFocused(0.5F);
    Climb();
    EXPECT_EQ(liveTimer.on, 0);
    EXPECT_FALSE(LiveTimerRuns());
}

TEST_F(FineClimbTest, EndsAtOnceWhenAStopWasAskedForBefore) {
    scan.stopRequested = 1;
    BeFocused(5.0F);
    EXPECT_EQ(Climb(), 1);
    EXPECT_TRUE(line.writes.empty());
    EXPECT_EQ(Information(), completed);
    EXPECT_EQ(scan.stopRequested, 1);
    ExpectNotBusy();
}

TEST_F(FineClimbTest, ForgetsAnEarlierStopWhereItSweeps) {
    scan.stopRequested = 1;
    BeFocused(0.75F);
    EXPECT_EQ(Climb(), 1);
    EXPECT_EQ(ClimbSteps(), Steps(4, 8));
}

struct StopCase {
    std::uint64_t time;
    bool aborts;
    int steps;
    const char* where;
};

/// On a flat curve of 2.0. The first frame lasts until 40, the pump until 50. Then for each step: a pump of
/// 10; a read that finds the arrival of 57 and 10 ms of silence; where Z is, 11; a pump of 10; 200; 10; 40
/// for the frame. So the first step's pumps are 50 to 60, 81 to 91, 91 to 291 and 291 to 301; the turn's 1214
/// to 1414. The second pass: 1414 to 1424, 1445 to 1455, 1455 to 1655 and 1655 to 1665; the turn's 3742 to
/// 3942. The way back is told at 3957: the move's pumps 3942 to 3952 and 3978 to 3988, the last one to 4288.
class FineClimbStopped : public FineClimbTest, public testing::WithParamInterface<StopCase> {};

TEST_P(FineClimbStopped, SaysAbortedOnlyInTheLongPumps) {
    const StopCase& example = GetParam();
    BeFocused(2.0F);
    StopScanAt(example.time);
    EXPECT_EQ(Climb(), example.aborts ? 0 : 1) << example.where;
    EXPECT_EQ(Information(), example.aborts ? aborted : completed) << example.where;
    EXPECT_EQ(ClimbSteps().size(), static_cast<std::size_t>(example.steps)) << example.where;
    EXPECT_EQ(ui.boxes.questions.size(), 1U);
    EXPECT_EQ(scan.stopRequested, 1);
    EXPECT_EQ(scan.scanning, 1) << "whoever scans ends it";
    EXPECT_LT(ui.clock.now, example.time + 350);
    ExpectNotBusy();
}

INSTANTIATE_TEST_SUITE_P(Times, FineClimbStopped,
                         testing::Values(StopCase{20, false, 0, "during the first frame"},
                                         StopCase{45, false, 0, "before the first step"},
                                         StopCase{55, false, 1, "as the move begins"},
                                         StopCase{85, false, 1, "as the move has ended"},
                                         StopCase{150, true, 1, "settling"},
                                         StopCase{295, false, 1, "after settling"},
                                         StopCase{1300, true, 4, "between the passes"},
                                         StopCase{1420, false, 5, "as the second pass begins"},
                                         StopCase{1460, true, 5, "settling in the second pass"},
                                         StopCase{1650, true, 5, "at the end of settling"},
                                         StopCase{1660, false, 5, "after settling in the second pass"},
                                         StopCase{3750, true, 12, "at the second turn"},
                                         StopCase{3935, true, 12, "at the end of the second turn"}));

/// In the move's first pump and in its last, and in the one after it.
class FineClimbStoppedAtItsEnd : public FineClimbTest, public testing::WithParamInterface<std::uint64_t> {};

TEST_P(FineClimbStoppedAtItsEnd, IsCompleteAndLetsZGoToTheBestPosition) {
    BeFocused(2.0F);
    StopScanAt(GetParam());
    EXPECT_EQ(Climb(), 1);
    EXPECT_EQ(Information(), completed);
    EXPECT_EQ(Outcomes(), Texts{"stopped on the final move"});
    EXPECT_EQ(line.Commands().back(), "L-8");
    EXPECT_EQ(ui.boxes.questions.size(), 1U);
    EXPECT_EQ(scan.stopRequested, 1);
    EXPECT_EQ(scan.scanning, 1);
    ExpectNotBusy();
    ui.clock.Sleep(1000);
    EXPECT_EQ(Z(), -5.0);
}

INSTANTIATE_TEST_SUITE_P(Times, FineClimbStoppedAtItsEnd, testing::Values(3947, 3983, 3995, 4280));

TEST_F(FineClimbTest, IsNotStoppedAnyMoreOnceItIsOver) {
    BeFocused(2.0F);
    StopScanAt(4295);
    EXPECT_EQ(Climb(), 1);
    EXPECT_EQ(Outcomes(), Texts{"best of the second pass"});
    EXPECT_EQ(ui.clock.now, 4288U);
    EXPECT_TRUE(ui.boxes.questions.empty());
}

/// The operator presses "focus" in the middle of one: nothing keeps the one from running in the other.
TEST_F(FineClimbTest, MayRunWithinAnother) {
    BeFocused(2.0F);
    int results = 0;
    At(500, [&] {
        results += Climb();
        EXPECT_EQ(focus.focusBusy, 0) << "nor is the outer one";
        EXPECT_EQ(liveTimer.on, 0) << "the outer one goes on";
    });
    results += Climb();
    EXPECT_EQ(results, 2);
    EXPECT_EQ(ClimbSteps().size(), 2U * 12U);
    EXPECT_EQ(Outcomes(), Texts(2, "best of the second pass"));
    EXPECT_EQ(std::count(ui.messages.timerCalls.begin(), ui.messages.timerCalls.end(), "set 1 every 100"), 1);
    ExpectNotBusy();
}

TEST_F(FineClimbTest, StoppedInItsSweepDoesNotClimb) {
    BeFocused(0.75F);
    StopScanAt(5000);
    EXPECT_EQ(Climb(), 1) << "not by a long pump";
    EXPECT_TRUE(ClimbSteps().empty());
    EXPECT_EQ(line.Commands().back(), "T640") << "of the sweep's end";
    EXPECT_EQ(*(line.Commands().end() - 2), "O");
    EXPECT_EQ(Information().back(), "Focusing completed.");
    ExpectNotBusy();
}

TEST_F(FineClimbTest, GoesOnWhenAClickOutsideAScanHasStoppedTheAxes) {
    BeFocused(2.0F);
    ClickAt(150);
    EXPECT_EQ(Climb(), 1);
    EXPECT_EQ(ClimbSteps(), Steps(4, 8));
    const Texts commands = line.Commands();
    EXPECT_EQ(Texts(commands.begin() + 1, commands.begin() + 4), (Texts{"n", "N", "O"}));
}

/// A climb, after a sweep or not, that the end of the program breaks off.
class FineClimbQuit : public FineClimbTest {
public:
    FineClimbQuit(float value, std::uint64_t time) : m_value(value), m_time(time) {}

    void TestBody() override {
        BeFocused(m_value);
        std::size_t sent = 0;
        At(m_time, [&] {
            ui.messages.PostQuit(0);
            sent = line.Commands().size();
        });
        Climb();
        reached = ui.messages.HasQuit();
        if (!reached)
            return;
        EXPECT_LT(ui.clock.now, m_time + 400);
        const Texts commands = line.Commands();
        for (std::size_t i = sent; i < commands.size(); ++i)
            EXPECT_NE(commands[i][0], 'L') << "it is sent nowhere any more";
        EXPECT_EQ(focus.focusBusy, 0);
        // It still says that the image is not sharp; that nobody has to answer is the boxes' part.
        ExpectWarnings(m_value < 0.7F ? Texts{badEnd} : Texts{});
        const auto way = std::find_if(commands.rbegin(), commands.rend(),
                                      [](const std::string& command) { return command[0] == 'L'; });
        const bool returns = way != commands.rend() && commands.size() > 5 && *std::next(way) == "T640";
        const double before = Z();
        ui.clock.Sleep(10'000);
        if (!returns) { // from a sweep, to where it has been sent
            EXPECT_NEAR(Z(), before, 6.0) << "a step under way at most";
        }
    }

    bool reached = false;

private:
    float m_value;
    std::uint64_t m_time;
};

TEST(FineClimbAtAnyTime, EndsWithTheProgramAndSendsZNowhereAnyMore) {
    for (const float value : {2.0F, 0.5F}) {
        int reached = 0;
        for (std::uint64_t time = 5; time < (value < 1.0F ? 15'000 : 4'000); time += 47) {
            SCOPED_TRACE(testing::Message() << value << " at " << time);
            FineClimbQuit climb(value, time);
            climb.TestBody();
            reached += climb.reached ? 1 : 0;
            if (testing::Test::HasFailure())
                return;
        }
        EXPECT_GT(reached, 80);
    }
}

TEST_F(FineClimbTest, WithASilentControllerEndsInItsTime) {
    line.silent = true;
    BeFocused(2.0F);
    EXPECT_EQ(Climb(), 1);
    EXPECT_EQ(ClimbSteps(), Steps(4, 8));
    Texts expected(4, "L-3");
    expected.insert(expected.end(), 8, "L3");
    expected.emplace_back("L0");
    EXPECT_EQ(line.Commands(), expected) << "as far as it knows Z never left 0";
    EXPECT_EQ(Progress().back(), "time passed: 2090/1000, Fail to read:13/13");
    // Each of 13 moves lasts 10 + 13 * 160 + 150 + 10 ms; each of 12 steps 200 + 10 + 40 more. 40 + 10
    // before, two turns of 200, 300 at the end.
    EXPECT_EQ(ui.clock.now, 13 * 2250U + 12 * 250 + 50 + 400 + 300);
}

TEST_F(FineClimbTest, EndsWhenTheLineHangsUp) {
    line.HangUpAt(1000);
    BeFocused(2.0F);
    EXPECT_EQ(Climb(), 1);
    EXPECT_EQ(stage.offline, 1);
    EXPECT_EQ(ClimbSteps(), Steps(4, 8));
    EXPECT_LT(ui.clock.now, 35'000U);
    ExpectNotBusy();
}

TEST_F(FineClimbTest, WithoutAnyLineClimbsInMemory) {
    stage.hComm = SerialHandle::Invalid;
    stage.offline = 1;
    BeFocused(2.0F);
    EXPECT_EQ(Climb(), 1);
    EXPECT_EQ(stage.position[2], -6.0) << "down to -8, up once";
    EXPECT_EQ(Progress(), Steps(4, 8));
}

TEST_F(FineClimbTest, AtALimitGoesOn) {
    line.limit = 4; // steps, 2.5 um
    BeFocused(2.0F);
    EXPECT_EQ(Climb(), 1);
    EXPECT_EQ(ClimbSteps(), Steps(4, 8));
    EXPECT_EQ(line.Commands(),
              (Texts{"L-3", "L-6", "L-7", "L-7", "L0", "L3", "L6", "L7", "L7", "L7", "L7", "L7", "L0"}));
    EXPECT_LT(ui.clock.now, 25'000U);
}

/// A camera without picture, a black and a saturated field all measure so: no cell counts, nothing deviates.
/// In single precision 0.0001 * 10 is less than 0.001.
TEST_F(FineClimbTest, OfAnEvenFieldClimbsInVainAndAsksTwiceToAdjustTheSample) {
    view.sharpness = [] { return FocusFigures{0.0F, 0.0001F, 0.0001F, 0.0001F * 10.0F}; };
    EXPECT_EQ(Climb(), 0);
    ExpectWarnings({badStart, badEnd});
    EXPECT_EQ(line.Commands().at(0), "L-201") << "126 um";
    EXPECT_EQ(ClimbSteps(), Steps(4, 8));
    EXPECT_EQ(Information(), completed);
}

TEST_F(FineClimbTest, WorksWithAClosedPanel) {
    ClosePanel();
    BeFocused(2.0F);
    EXPECT_EQ(Climb(), 1);
    EXPECT_EQ(line.Commands().size(), 13U);
    EXPECT_TRUE(ui.dialogs.textsSet.empty());
}

} // namespace
} // namespace tessaro
