// The stage over a real serial line, with the simulated microscope's controller at its other end and all that
// can go wrong with it. Time is real here.

#include "app/live_view.h"
#include "app/message_pump.h"
#include "app/resource_ids.h"
#include "app/status_lines.h"
#include "platform/fake/fake_dialogs.h"
#include "platform/fake/scripted_message_boxes.h"
#include "platform/qt/qt_serial_port.h"
#include "platform/standard/standard_clock.h"
#include "scan/control_panel_ids.h"
#include "stage/stage_link.h"
#include "stage/stage_motion.h"
#include "support/twin_stage.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <functional>
#include <optional>
#include <poll.h>
#include <string>
#include <utility>
#include <vector>

namespace tessaro {
namespace {

// A read and what a loaded machine adds to it; a test in virtual time knows the limits to the millisecond.
constexpr std::uint64_t longestStallMs = 350;
constexpr double nearUm = 2.0; // what counts as arrived

/// The messages of a program whose operator may do something at a time; knows how long nobody asked for any.
class WatchedMessages : public MessageLoop {
public:
    explicit WatchedMessages(Clock& clock) : m_clock(clock) {}

    bool TakeMessage(Message& message, std::uint32_t milliseconds) override {
        const std::uint64_t now = m_clock.TickMilliseconds();
        if (m_left.has_value())
            longestStall = std::max(longestStall, now - *m_left);
        const bool taken = clickAfterTakes > 0 && --clickAfterTakes == 0;
        if (taken)
            message = {mainWindow, MessageKind::LeftButtonPress};
        else
            poll(nullptr, 0, static_cast<int>(milliseconds));
        m_left = m_clock.TickMilliseconds();
        return taken;
    }
    bool WaitMessage(Message&) override { return false; }
    void Dispatch(const Message&) override { ++dispatched; }
    void SetTimer(WindowHandle, std::uint32_t, std::uint32_t) override {}
    void KillTimer(WindowHandle, std::uint32_t) override {}
    void PostQuit(int) override {}
    bool HasQuit() const override { return false; }
    int ExitCode() const override { return 0; }

    /// What happens between two operations is no stall.
    void Rest() { m_left.reset(); }

    static constexpr auto mainWindow = static_cast<WindowHandle>(1);
    int clickAfterTakes = 0; // 0: nobody clicks
    int dispatched = 0;
    std::uint64_t longestStall = 0; // ms

private:
    Clock& m_clock;
    std::optional<std::uint64_t> m_left;
};

class IgnoringDialog : public DialogProcedure {
public:
    void Initialize(WindowHandle) override {}
    void Command(WindowHandle, int, Notification) override {}
};

/// The stage's part of the operator's program, and the simulated microscope as a program beside it.
class StageOnTwin : public testing::Test {
protected:
    void SetUp() override {
        std::vector<std::string> options = controller.OptionsAlone();
        options.insert(options.end(),
                       {"--wafer-mm", "1", "--seed", "3", "--density", "1", "--at", "500,500,0", "--quiet"});
        twin.emplace(TESSARO_TWIN, options);
        ASSERT_TRUE(twin->IsReady()) << twin->Errors();
        windows.main = WatchedMessages::mainWindow;
        windows.controlPanel = dialogs.CreateModeless(resource::controlPanel, windows.main, m_ignoring);
        link.machine = {&serial, &boxes, &clock};
        ASSERT_EQ(link.Open(windows.main), stage_open::ready);
    }

    void Set(const std::string& fault) { ASSERT_EQ(twin->Say("fault " + fault), "ok"); }
    void Clear(const std::string& fault) { ASSERT_EQ(twin->Say("clear " + fault), "ok"); }

    std::string Progress() { return dialogs.ItemText(windows.controlPanel, panel::progress, 100); }
    bool SaysArrived() { return Progress().starts_with("arrived : "); }
    bool SaysTimePassed() { return Progress().starts_with("time passed: "); }

    /// A move to the target, and how long nobody looked at messages during it.
    void MoveTo(int axis, double target) {
        messages.Rest();
        motion.MoveAxisTo(axis, target);
        messages.Rest();
    }

    /// The stage stands, truly, at the target.
    bool StandsAt(int axis, double target) {
        return std::abs(TwinStage::Place(*twin)[static_cast<std::size_t>(axis)] - target) <= nearUm;
    }

    /// Opens the line anew and moves. What the controller said before may still be read at the first time.
    bool WorksAgain() {
        for (const double target : {700.0, 750.0}) {
            if (link.Open(windows.main) != stage_open::ready)
                return false;
            MoveTo(axisX, target);
            if (SaysArrived() && StandsAt(axisX, target))
                return true;
        }
        return false;
    }

    TemporaryFolder folder;
    TwinStage controller{folder.Path().string()};
    std::optional<RunningTwin> twin;
    StandardClock clock;
    WatchedMessages messages{clock};
    FakeDialogs dialogs;
    ScriptedMessageBoxes boxes;
    QtSerialPorts serial{controller.LinkPath()};
    ProgramWindows windows;
    ScanState scan;
    StageLink link;
    LiveTimer liveTimer{0, 0, 0};
    ShownPosition shownPosition;
    StatusLines status{dialogs, windows, link, shownPosition};
    LiveView liveView{liveTimer, messages, windows};
    MessagePump pump{clock, messages, boxes, liveView, status, scan, link, windows};
    StageMotion motion{link, pump, status, clock};

private:
    IgnoringDialog m_ignoring;
};

TEST_F(StageOnTwin, IsAskedWhereItIsAndToldTwoSpeedsAtOpening) {
    EXPECT_TRUE(Eventually([this] { return controller.Commands().size() >= 6; }));
    EXPECT_EQ(controller.Commands(), (std::vector<std::string>{"z", "p", "P", "Q", "S2400", "T2400"}));
    EXPECT_EQ(link.position, (std::array<double, 3>{500.0, 500.0, 0.0}));
}

TEST_F(StageOnTwin, GoesWhereItIsSentAndSaysSo) {
    MoveTo(axisX, 700.0);
    EXPECT_TRUE(SaysArrived()) << Progress();
    EXPECT_TRUE(StandsAt(axisX, 700.0));
    MoveTo(axisZ, -30.0);
    EXPECT_TRUE(StandsAt(axisZ, -30.0));
    EXPECT_LE(messages.longestStall, longestStallMs);
}

TEST_F(StageOnTwin, WaitsForTheLongerOfTwoWays) {
    messages.Rest();
    motion.MoveXY(900.0, 600.0);
    EXPECT_TRUE(SaysArrived()) << Progress();
    EXPECT_TRUE(StandsAt(axisX, 900.0));
    EXPECT_TRUE(StandsAt(axisY, 600.0));
}

TEST_F(StageOnTwin, WaitsForOneWayWhenTheOtherAxisIsThereAlready) {
    motion.MoveXY(900.0, 500.0);
    EXPECT_TRUE(SaysArrived()) << Progress();
    EXPECT_TRUE(StandsAt(axisX, 900.0));
}

/// What coarse focusing counts on: it looks at frames while Z still travels.
TEST_F(StageOnTwin, GivesUpALongWayAlongZWhileTheStageGoesOn) {
    link.SetSpeed(axisZ, 100);
    MoveTo(axisZ, -900.0); // 9 s
    EXPECT_TRUE(SaysTimePassed()) << Progress();
    EXPECT_TRUE(TwinStage::Moves(*twin));
    EXPECT_GT(link.position[axisZ], -800.0) << "it knows where Z is on the way";
    EXPECT_LT(link.position[axisZ], -100.0);
}

TEST_F(StageOnTwin, StopsAllAxesAtAClick) {
    messages.clickAfterTakes = 4;
    MoveTo(axisX, 30'000.0);
    EXPECT_EQ(messages.dispatched, 1);
    EXPECT_TRUE(SaysTimePassed()) << Progress();
    EXPECT_FALSE(StandsAt(axisX, 30'000.0));
    EXPECT_NEAR(TwinStage::Place(*twin)[0], link.position[0], nearUm)
        << "it rests, and the program knows where";
    const auto commands = controller.Commands();
    const std::vector<std::string> stops = {"n", "N", "O"};
    EXPECT_NE(std::search(commands.begin(), commands.end(), stops.begin(), stops.end()), commands.end());
}

constexpr const char* arrived = "arrived : ";
constexpr const char* timePassed = "time passed: ";

struct FaultCase {
    std::string name;
    std::string says; // at the end of a move; empty: one or the other
    // A byte that happens to be the letter of an axis is an arrival, and so is progress that breaks off
    // behind its letter: what follows in the buffer is the number of the command.
    bool canFakeAnArrival = false;

    friend void PrintTo(const FaultCase& fault, std::ostream* stream) { *stream << fault.name; }
};

class StageFaults : public StageOnTwin, public testing::WithParamInterface<FaultCase> {};

TEST_P(StageFaults, StallNothingAndEndNoMoveAsArrivedThatDidNot) {
    Set(GetParam().name);
    for (const double target : {650.0, 800.0}) {
        MoveTo(axisX, target);
        EXPECT_TRUE(Progress().starts_with(GetParam().says)) << Progress();
        EXPECT_TRUE(SaysArrived() || SaysTimePassed()) << Progress();
        if (!SaysArrived())
            continue;
        EXPECT_TRUE(GetParam().canFakeAnArrival || StandsAt(axisX, target)) << Progress();
    }
    EXPECT_LE(messages.longestStall, longestStallMs);
}

TEST_P(StageFaults, AreOverOnceTheyAreClearedAndTheLineIsOpenedAgain) {
    Set(GetParam().name);
    MoveTo(axisX, 650.0);
    Clear(GetParam().name);
    EXPECT_TRUE(WorksAgain()) << Progress();
}

INSTANTIATE_TEST_SUITE_P(Each, StageFaults,
                         testing::Values(FaultCase{"stage-silent", timePassed},
                                         FaultCase{"stage-no-arrival", timePassed},
                                         FaultCase{"stage-garbled", "", true},
                                         FaultCase{"stage-pieces", "", true}, FaultCase{"stage-late", ""},
                                         FaultCase{"stage-other-axis", arrived},
                                         FaultCase{"stage-junk", "", true}, FaultCase{"stage-impossible", ""},
                                         FaultCase{"stage-gone", timePassed}),
                         [](const auto& test) {
                             std::string name = test.param.name;
                             std::erase(name, '-');
                             return name;
                         });

TEST_F(StageOnTwin, SaysHowLongAControllerHasBeenSilent) {
    Set("stage-silent");
    MoveTo(axisX, 650.0);
    const std::vector<std::string> texts = dialogs.TextsOf(panel::progress);
    EXPECT_TRUE(std::ranges::any_of(
        texts, [](const std::string& text) { return text.starts_with("ReadFile error: "); }));
    int elapsed = 0;
    int limit = 0;
    int shortReads = 0;
    int loops = 0;
    ASSERT_EQ(std::sscanf(Progress().c_str(), "time passed: %d/%d, Fail to read:%d/%d", &elapsed, &limit,
                          &shortReads, &loops),
              4);
    EXPECT_GE(elapsed, 2000);
    EXPECT_EQ(limit, 1000);
    EXPECT_EQ(shortReads, loops);
}

TEST_F(StageOnTwin, IsOfflineAfterItsLineHasGoneUntilItIsOpenedAgain) {
    Set("stage-gone");
    MoveTo(axisX, 600.0);
    EXPECT_EQ(link.offline, 1);
    EXPECT_EQ(std::string(link.commandText.data()).substr(0, 15), "Error for m960:");
    EXPECT_EQ(link.position[0], 600.0) << "simulated";
    EXPECT_EQ(link.Open(windows.main), stage_open::failed);
    EXPECT_EQ(boxes.warnings.size(), 1U);
    Clear("stage-gone");
    EXPECT_TRUE(WorksAgain()) << Progress();
}

} // namespace
} // namespace tessaro

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv); // the adapter's library wants one
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
