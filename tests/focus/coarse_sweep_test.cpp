#include "tests/focus/search_fixture.h"

#include <algorithm>
#include <limits>

namespace tessaro {
namespace {

/// A range of 150 um at 50 um/s: up takes 1.5 s, down 6 s, of which the wait of 2 s leaves 4 s for the
/// samples, one every 62 ms (40 for the frame, 12 to ask where Z is, 10 to pump), which is one every 3.1 um.
class CoarseSweepTest : public SearchFixture {
protected:
    static constexpr std::int32_t range = 150;
    static constexpr std::int32_t speed = 50;
    static constexpr std::size_t heightsBeforeSweep =
        4;                                             // asked for: start, after the lift (2), after the wait
    static constexpr std::uint64_t sweepBegins = 4000; // about; the samples last until 10 s at most

    void Sweep() { autoFocus.CoarseFocus(autoFocus.Hint(), range, speed); }

    void BePeaked() {
        Be([](double z) { return 0.05 + Peak(3.0, 4.0, z); }, [](double) { return 5.0; });
    }
    /// What the search takes for sample i's Z.
    std::int32_t SampleZ(std::size_t i) const {
        return static_cast<std::int32_t>(line.toldZ.at(heightsBeforeSweep + i) * 0.625);
    }
    static std::string MoveTo(double um) { return "L" + std::to_string(static_cast<std::int32_t>(um * 1.6)); }
    static Texts InformationOfSteps(int steps) {
        Texts texts = {"Course Focusing has started", "Stage lifting", "Stage going down"};
        for (int i = 0; i < steps; ++i)
            texts.push_back("Course Focusing step:" + std::to_string(i));
        texts.emplace_back("Course Focusing Completed");
        return texts;
    }
    bool StaysWhereItIs() {
        const double before = Z();
        ui.clock.Sleep(10'000);
        return Z() == before;
    }
};

TEST_F(CoarseSweepTest, GoesUpAtTheDoubleSpeedAndDownAtItsOwn) {
    BeFlat(1.0F, 5.0F);
    Sweep();
    const Texts commands = line.Commands();
    EXPECT_EQ(Texts(commands.begin(), commands.begin() + 4), (Texts{"T160", "L240", "T80", "L-240"}));
}

TEST_F(CoarseSweepTest, EndsTwentyMicrometresAboveThePeak) {
    BePeaked();
    Sweep();
    const Texts commands = line.Commands();
    ASSERT_EQ(commands.size(), 7U);
    EXPECT_EQ(commands[4], "T160");
    EXPECT_EQ(commands[6], "T160");
    EXPECT_NEAR(Z(), 20.0, 4.0) << "samples are 3.1 um apart, and Z goes on for 2 um while a frame is taken";
    EXPECT_NEAR(stage.position[2], Z(), 0.625);
    EXPECT_FALSE(line.Moves(axisZ));
    const auto samples = static_cast<int>(Information().size()) - 4;
    EXPECT_LT(samples, 60) << "it did not look farther";
    EXPECT_EQ(Information(), InformationOfSteps(samples));
}

TEST_F(CoarseSweepTest, ThatNeverMeetsThePeakTakesNinetySamplesAndGoesToTheLargestCurvature) {
    // Only sample 29 stands out, by too little for a peak: a curvature of 0.2 beside a score of 1.1.
    view.sharpness = [this] {
        return FocusFigures{0.0F, 0.0F, CallsOf("grab") == 2 + 30 ? 1.1F : 1.0F, 5.0F};
    };
    Sweep();
    EXPECT_EQ(Information(), InformationOfSteps(90));
    EXPECT_EQ(CallsOf("grab"), 1 + 1 + 90);
    EXPECT_EQ(CallsOf("score"), 1 + 90);
    EXPECT_EQ(CallsOf("measures"), 0);
    const Texts commands = line.Commands();
    ASSERT_EQ(commands.size(), 7U);
    EXPECT_EQ(commands[5], MoveTo(SampleZ(29) + 20)) << "largest one sample later";
}

TEST_F(CoarseSweepTest, OfAFlatCurveGoesAboveTheMiddleOfItsFirstThreeSamples) {
    BeFlat(1.0F, 5.0F);
    Sweep();
    EXPECT_EQ(Information(), InformationOfSteps(90));
    EXPECT_EQ(line.Commands().at(5), MoveTo(SampleZ(1) + 20));
}

TEST_F(CoarseSweepTest, ReturnsToWhereItStartedWhenNoScoreWasAboveAHundredth) {
    motion.MoveAxisTo(axisZ, 13.0); // 20 steps, 12.5 um
    line.writes.clear();
    BeFlat(0.0001F, 5.0F);
    Sweep();
    EXPECT_EQ(Information(), InformationOfSteps(90));
    EXPECT_EQ(line.Commands().at(5), "L19") << "12 um";
    EXPECT_EQ(Z(), 19 * 0.625);
}

TEST_F(CoarseSweepTest, ThatIsSharpAlreadyStaysWhereItIs) {
    BeFlat(10.5F, 5.0F);
    Sweep();
    EXPECT_EQ(Information(), InformationOfSteps(2)) << "the third sample is judged";
    EXPECT_EQ(line.Commands(), (Texts{"T160", "L240", "T80", "L-240", "O", "T160"}));
    EXPECT_EQ(CallsOf("score"), 1 + 3);
    EXPECT_TRUE(StaysWhereItIs());
    EXPECT_NEAR(stage.position[2], Z(), 0.625);
    EXPECT_GT(Z(), 20.0);
}

TEST_F(CoarseSweepTest, StopsTheLiveViewAndTellsOthersThatItIsBusy) {
    scan.stopRequested = 1; // of an earlier scan
    BeFlat(1.0F, 5.0F);
    At(sweepBegins, [this] {
        EXPECT_FALSE(LiveTimerRuns());
        EXPECT_EQ(liveTimer.on, 0);
        EXPECT_EQ(focus.focusBusy, 1);
        EXPECT_EQ(scan.stopRequested, 0);
    });
    Sweep();
    EXPECT_EQ(Information().size(), 4U + 90U) << "what was asked for before did not stop it";
    EXPECT_TRUE(LiveTimerRuns());
    EXPECT_EQ(liveTimer.on, 1);
    EXPECT_EQ(focus.focusBusy, 0);
}

TEST_F(CoarseSweepTest, LeavesALiveViewOffThatWasOff) {
    liveTimer.on = 0;
    BeFlat(10.5F, 5.0F);
    Sweep();
    EXPECT_FALSE(LiveTimerRuns());
    EXPECT_EQ(liveTimer.on, 0);
}

TEST_F(CoarseSweepTest, DoesNotLookAtTheHint) {
    BeFlat(10.5F, 5.0F);
    autoFocus.CoarseFocus(nullptr, range, speed);
    EXPECT_EQ(line.Commands().at(1), "L240");
}

TEST_F(CoarseSweepTest, KeepsToTheSpeedsOfTheStage) {
    struct Case {
        std::int32_t speed;
        const char* up;
        const char* down;
    };
    using Limits = std::numeric_limits<std::int32_t>;
    for (const Case& example :
         {Case{200, "T640", "T320"}, Case{3000, "T8000", "T4800"}, Case{Limits::max(), "T8000", "T8000"},
          Case{1, "T3", "T1"}, Case{0, "T1", "T1"}, Case{-5, "T1", "T1"}, Case{Limits::min(), "T1", "T1"}}) {
        line.writes.clear();
        BeFlat(10.5F, 5.0F);
        autoFocus.CoarseFocus(autoFocus.Hint(), range, example.speed);
        const Texts commands = line.Commands();
        ASSERT_EQ(commands.size(), 6U) << example.speed;
        EXPECT_EQ(commands[0], example.up) << example.speed;
        EXPECT_EQ(commands[2], example.down) << example.speed;
        EXPECT_EQ(commands[5], example.up) << example.speed;
    }
}

TEST_F(CoarseSweepTest, GoesOnWhenAClickOutsideAScanHasStoppedTheAxes) {
    BeFlat(1.0F, 5.0F);
    ClickAt(5000);
    Sweep();
    EXPECT_EQ(Information(), InformationOfSteps(90));
    EXPECT_TRUE(ui.boxes.questions.empty());
    const Texts commands = line.Commands();
    ASSERT_EQ(commands.size(), 10U);
    EXPECT_EQ(Texts(commands.begin() + 4, commands.begin() + 7), (Texts{"n", "N", "O"}));
    EXPECT_EQ(line.toldZ.at(60), line.toldZ.at(40)) << "it has sampled where the click has left Z";
    EXPECT_EQ(commands[8], MoveTo(SampleZ(1) + 20));
}

/// Of what is asked for elsewhere, in the middle of a pump for example, only the pumps before the samples
/// take notice.
TEST_F(CoarseSweepTest, MindsAStopFromElsewhereOnlyBeforeItSamples) {
    BeFlat(1.0F, 5.0F);
    At(sweepBegins + 1000, [this] { scan.stopRequested = 1; });
    Sweep();
    EXPECT_EQ(Information(), InformationOfSteps(90));
    EXPECT_EQ(scan.stopRequested, 1);
    ui.dialogs.textsSet.clear();
    At(ui.clock.now + 500, [this] { scan.stopRequested = 1; });
    Sweep();
    EXPECT_EQ(Information(),
              (Texts{"Course Focusing has started", "Stage lifting", "Course Focusing Completed"}));
}

TEST_F(CoarseSweepTest, GoesOnWhenTheQuestionIsAnsweredWithNo) {
    scan.scanning = 1;
    ui.boxes.answers = {false};
    BeFlat(1.0F, 5.0F);
    ClickAt(5000);
    Sweep();
    EXPECT_EQ(ui.boxes.questions.size(), 1U);
    EXPECT_EQ(Information(), InformationOfSteps(90));
}

/// A sweep that the operator, or the end of the program, breaks off at a time.
class BrokenOffSweep : public CoarseSweepTest {
public:
    enum class Way { Stop, Quit };

    BrokenOffSweep(Way way, std::uint64_t time) : m_way(way), m_time(time) {}

    void TestBody() override {
        BePeaked();
        if (m_way == Way::Stop)
            StopScanAt(m_time);
        else
            QuitAt(m_time);
        Sweep();
        EXPECT_EQ(scan.stopRequested, 1);
        EXPECT_EQ(scan.scanning, m_way == Way::Stop ? 1 : 0) << "whoever scans ends it";
        EXPECT_EQ(ui.boxes.questions.size(), m_way == Way::Stop ? 1U : 0U);
        EXPECT_EQ(Information().back(), "Course Focusing Completed");
        EXPECT_EQ(focus.focusBusy, 0);
        EXPECT_EQ(liveTimer.on, 1);
        EXPECT_TRUE(LiveTimerRuns());
        const Texts commands = line.Commands();
        EXPECT_EQ(commands.back(), "T160");
        wasOnItsWayBack = commands.size() > 5 && commands[5][0] == 'L';
        hadMoved = commands.size() > 1;
        if (wasOnItsWayBack)
            return;
        EXPECT_LT(ui.clock.now, m_time + 250) << "a read, two queries, two pumps";
        EXPECT_EQ(std::count(commands.begin(), commands.end(), "O"), hadMoved ? 1 : 0);
        EXPECT_TRUE(StaysWhereItIs());
        EXPECT_NEAR(stage.position[2], Z(), 1.0);
    }

    bool hadMoved = false;
    bool wasOnItsWayBack = false;

private:
    Way m_way;
    std::uint64_t m_time;
};

class CoarseSweepAtAnyTime : public testing::TestWithParam<BrokenOffSweep::Way> {};

TEST_P(CoarseSweepAtAnyTime, EndsAtOnceAndLeavesZWhereItIs) {
    int before = 0;
    int onTheWayBack = 0;
    for (std::uint64_t time = 5; time < 5430; time += 13) {
        SCOPED_TRACE(time);
        BrokenOffSweep sweep(GetParam(), time);
        sweep.TestBody();
        before += sweep.hadMoved ? 0 : 1;
        onTheWayBack += sweep.wasOnItsWayBack ? 1 : 0;
        if (testing::Test::HasFailure())
            return;
    }
    EXPECT_EQ(before, 1) << "5 ms: in the first pump";
    EXPECT_GT(onTheWayBack, 5) << "in the final move too";
}

INSTANTIATE_TEST_SUITE_P(BrokenOff, CoarseSweepAtAnyTime,
                         testing::Values(BrokenOffSweep::Way::Stop, BrokenOffSweep::Way::Quit));

TEST_F(CoarseSweepTest, StoppedInItsFinalMoveLeavesZOnItsWay) {
    motion.MoveAxisTo(axisZ, 0.0);
    BeFlat(0.0001F, 5.0F); // it goes back to where it started
    line.onCall = [this](std::string_view call) {
        const Texts commands = line.Commands();
        if (call == "Read" && !commands.empty() && commands.back() == "L0" && commands.size() > 2 &&
            ui.boxes.answers.empty() && ui.boxes.questions.empty())
            StopScanAt(ui.clock.now);
    };
    Sweep();
    EXPECT_EQ(ui.boxes.questions.size(), 1U);
    EXPECT_EQ(Information(), InformationOfSteps(90));
    EXPECT_TRUE(line.Moves(axisZ)) << "only a sweep without its final move is stopped";
    EXPECT_EQ(Outcomes(), Texts{"stopped on the final move"});
    ui.clock.Sleep(5000);
    EXPECT_EQ(Z(), 0.0);
}

TEST_F(CoarseSweepTest, StoppedAfterItsFinalMoveEndsAtOnce) {
    BeFlat(1.0F, 5.0F);
    std::uint64_t stopped = 0;
    line.onCall = [&](std::string_view call) {
        const Texts commands = line.Commands();
        if (call == "Read" && stopped == 0 && commands.size() == 6 && !line.Moves(axisZ)) {
            stopped = ui.clock.now + 150; // its arrival, where Z is and a pump last 50 ms; 300 ms follow
            StopScanAt(stopped);
        }
    };
    Sweep();
    EXPECT_EQ(Information(), InformationOfSteps(90));
    EXPECT_EQ(Outcomes(), Texts{"stopped on the final move"});
    EXPECT_EQ(ui.boxes.questions.size(), 1U);
    EXPECT_LT(ui.clock.now, stopped + 50) << "where Z is";
    EXPECT_EQ(line.Commands().back(), "T160");
    EXPECT_EQ(focus.focusBusy, 0);
    EXPECT_TRUE(LiveTimerRuns());
}

/// The operator presses "Coarse" while one is under way: nothing keeps the one from running in the other.
TEST_F(CoarseSweepTest, MayRunWithinAnother) {
    BeFlat(1.0F, 5.0F);
    At(sweepBegins + 1000, [this] { Sweep(); });
    Sweep();
    EXPECT_EQ(CallsOf("score"), 2 * 91);
    EXPECT_EQ(focus.focusBusy, 0);
    EXPECT_EQ(liveTimer.on, 1);
    EXPECT_EQ(std::count(ui.messages.timerCalls.begin(), ui.messages.timerCalls.end(), "set 1 every 100"), 1)
        << "the inner one found it off";
}

TEST_F(CoarseSweepTest, WithASilentControllerEndsInItsTime) {
    line.silent = true;
    BeFlat(1.0F, 5.0F);
    Sweep();
    EXPECT_EQ(Information(), InformationOfSteps(90));
    EXPECT_EQ(line.Commands(), (Texts{"T160", "L240", "T80", "L-480", "T160", "L32", "T160"}))
        << "as far as it knows Z never left 0";
    const Texts progress = Progress();
    EXPECT_EQ(progress.front(), "ReadFile error: 10/1000");
    EXPECT_EQ(progress.back(), "time passed: 2090/1000, Fail to read:13/13");
    // A wait: 10 ms, 13 times 150 and 10 ms, 150 ms for where Z is, 10 ms. Before, between and after: 10 + 40
    // + 150; 10 + 150; 10 + 40; 90 samples of 40 + 150 + 10; 150; 300 + 150.
    EXPECT_EQ(ui.clock.now, 3 * 2250U + 200 + 160 + 50 + 90 * 200 + 150 + 450);
}

TEST_F(CoarseSweepTest, EndsWhenTheLineHangsUp) {
    line.HangUpAt(5000);
    BeFlat(1.0F, 5.0F);
    Sweep();
    EXPECT_EQ(stage.offline, 1);
    EXPECT_EQ(Information(), InformationOfSteps(90));
    EXPECT_EQ(stage.position[2], SampleZ(1) + 20.0) << "the stage in memory";
    EXPECT_LT(ui.clock.now, 15'000U);
    EXPECT_EQ(focus.focusBusy, 0);
}

/// And "focus" in the middle of a sweep, which then samples where the climb has left Z.
TEST_F(CoarseSweepTest, MayHaveAClimbWithin) {
    BeFlat(1.0F, 2.0F);
    int result = 0;
    At(sweepBegins + 1000, [&] {
        EXPECT_EQ(focus.focusBusy, 1);
        result = autoFocus.FineFocus(autoFocus.Hint(), 1);
        EXPECT_EQ(focus.focusBusy, 0) << "nor is the sweep any more";
        EXPECT_EQ(liveTimer.on, 0) << "the sweep goes on";
        EXPECT_FALSE(LiveTimerRuns());
    });
    Sweep();
    EXPECT_EQ(result, 1);
    EXPECT_EQ(ClimbSteps().size(), 4U + 8U);
    EXPECT_EQ(CallsOf("score"), 91);
    EXPECT_EQ(Outcomes(), (Texts{"best of the second pass", "all samples taken"}));
    EXPECT_EQ(line.toldZ.at(line.toldZ.size() - 5), line.toldZ.at(line.toldZ.size() - 10));
    EXPECT_EQ(focus.focusBusy, 0);
    EXPECT_EQ(liveTimer.on, 1);
    EXPECT_TRUE(LiveTimerRuns());
}

TEST_F(CoarseSweepTest, EndsWithALineThatWasGoneBefore) {
    line.HangUp();
    BeFlat(1.0F, 5.0F);
    Sweep();
    EXPECT_EQ(Information(), InformationOfSteps(90));
    EXPECT_EQ(stage.position[2], -130.0) << "up 150, down 300, then above the second sample";
}

TEST_F(CoarseSweepTest, WithoutAnyLineEndsAtTheLowerEndOfASimulatedStage) {
    stage.hComm = SerialHandle::Invalid;
    stage.offline = 1;
    BeFlat(1.0F, 5.0F);
    Sweep();
    EXPECT_EQ(Information(), InformationOfSteps(90));
    EXPECT_EQ(stage.position[2], -130.0);
    EXPECT_TRUE(line.writes.empty());
    EXPECT_TRUE(Progress().empty());
}

TEST_F(CoarseSweepTest, ThatMeetsALimitOnEitherSideGoesOn) {
    line.limit = 80; // steps, 50 um
    BeFlat(1.0F, 5.0F);
    Sweep();
    EXPECT_EQ(line.Commands(), (Texts{"T160", "L240", "T80", "L-400", "T160", "L-48", "T160"}))
        << "300 um below the 50 that it has come to; 20 above -50";
    EXPECT_EQ(Information(), InformationOfSteps(90));
    EXPECT_EQ(Z(), -30.0);
}

TEST_F(CoarseSweepTest, WorksWithAClosedPanel) {
    ClosePanel();
    BePeaked();
    Sweep();
    EXPECT_NEAR(Z(), 20.0, 4.0);
    EXPECT_TRUE(ui.dialogs.textsSet.empty());
}

} // namespace
} // namespace tessaro
