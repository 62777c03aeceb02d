#include "app/live_view.h"
#include "support/shell_fixture.h"

namespace tessaro {
namespace {

using LiveViewTest = ShellFixture;
using Calls = std::vector<std::string>;

TEST(LiveTimerRecord, StartsAsIfTheLiveViewHadAlwaysRun) {
    const LiveTimer fresh;
    EXPECT_EQ(fresh.on, 1);
    EXPECT_EQ(fresh.previous, 1);
    EXPECT_EQ(fresh.saved, 1);
}

TEST_F(LiveViewTest, SwitchedOnTicksEvery100Milliseconds) {
    EXPECT_EQ(liveView.Switch(1), 0);
    EXPECT_EQ(ui.messages.timerCalls, Calls{"set 1 every 100"});
    EXPECT_TRUE(LiveTimerRuns());
}

TEST_F(LiveViewTest, SwitchedOffStopsItsTimer) {
    liveView.Switch(1);
    EXPECT_EQ(liveView.Switch(0), 0);
    EXPECT_EQ(ui.messages.timerCalls, (Calls{"set 1 every 100", "kill 1"}));
    EXPECT_FALSE(LiveTimerRuns());
}

TEST_F(LiveViewTest, RemembersWhatItWasBeforeEachSwitch) {
    liveView.Switch(0);
    EXPECT_EQ(liveTimer.previous, 1);
    EXPECT_EQ(liveTimer.on, 0);
    liveView.Switch(0);
    EXPECT_EQ(liveTimer.previous, 0);
    liveView.Switch(1);
    EXPECT_EQ(liveTimer.previous, 0);
    EXPECT_EQ(liveTimer.on, 1);
}

TEST_F(LiveViewTest, RunsForTheValueOneOnly) {
    liveView.Switch(1);
    liveView.Switch(2);
    EXPECT_EQ(liveTimer.on, 2);
    EXPECT_FALSE(LiveTimerRuns());
}

TEST_F(LiveViewTest, SuspendedAndResumedRunsAgainWithoutHavingBeenSwitched) {
    liveView.Switch(1);
    liveView.Suspend();
    EXPECT_FALSE(LiveTimerRuns());
    EXPECT_EQ(liveTimer.on, 1);
    EXPECT_EQ(liveTimer.saved, 1);
    liveView.Resume();
    EXPECT_TRUE(LiveTimerRuns());
    EXPECT_EQ(liveTimer.on, 1);
    EXPECT_EQ(liveTimer.previous, 1);
    EXPECT_EQ(ui.messages.timerCalls, (Calls{"set 1 every 100", "kill 1", "set 1 every 100"}));
}

TEST_F(LiveViewTest, ThatWasOffStaysOffWhenResumed) {
    liveView.Switch(0);
    liveView.Suspend();
    EXPECT_EQ(liveTimer.saved, 0);
    liveView.Resume();
    EXPECT_FALSE(LiveTimerRuns());
    EXPECT_EQ(ui.messages.timerCalls, (Calls{"kill 1", "kill 1"}));
}

TEST_F(LiveViewTest, IsResumedByWhatWasSavedEvenIfSwitchedOffMeanwhile) {
    liveView.Suspend();
    liveView.Switch(0);
    liveView.Resume();
    EXPECT_EQ(liveTimer.on, 0);
    EXPECT_TRUE(LiveTimerRuns());
}

} // namespace
} // namespace tessaro
