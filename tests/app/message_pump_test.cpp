#include "app/message_pump.h"
#include "support/shell_fixture.h"

namespace tessaro {
namespace {

using Texts = std::vector<std::string>;

const Texts allStops = {std::string("n\0", 2), std::string("N\0", 2), std::string("O\0", 2)};

class MessagePumpTest : public ShellFixture {
protected:
    Message Click() const { return {windows.main, MessageKind::LeftButtonPress, 0, PackPosition(5, 6)}; }
    Message Menu(std::uint32_t id) const { return {windows.main, MessageKind::Command, id}; }

    std::vector<MessageKind> Dispatched() const {
        std::vector<MessageKind> kinds;
        for (const Message& message : ui.messages.dispatched)
            kinds.push_back(message.kind);
        return kinds;
    }
};

TEST_F(MessagePumpTest, WaitsAsLongAsAsked) {
    EXPECT_EQ(pump.PumpMessages(200), 1);
    EXPECT_EQ(ui.clock.now, 200U);
}

TEST_F(MessagePumpTest, WaitsAsLongAsAskedAfterWeeksOfRunning) {
    ui.clock.now = 0xFFFFFFF0U; // 32 bits of milliseconds are about to be full
    EXPECT_EQ(pump.PumpMessages(200), 1);
    EXPECT_EQ(ui.clock.now, 0xFFFFFFF0U + std::uint64_t{200});
}

TEST_F(MessagePumpTest, WaitsOnWhenTheLoopWakesUpEarly) {
    ui.messages.longestWait = 7;
    ui.messages.PostAt(99, {windows.main, MessageKind::MouseMove});
    EXPECT_EQ(pump.PumpMessages(100), 1);
    EXPECT_EQ(ui.messages.dispatched.size(), 1U);
    EXPECT_EQ(ui.clock.now, 100U);
}

TEST_F(MessagePumpTest, DispatchesWhatArrivesWhileItWaitsAndWaitsOn) {
    ui.messages.PostAt(40, {windows.main, MessageKind::MouseMove});
    ui.messages.PostAt(90, {windows.main, MessageKind::KeyDown, key::left});
    std::vector<std::uint64_t> times;
    ui.messages.onDispatch = [&](const Message&) { times.push_back(ui.clock.now); };
    EXPECT_EQ(pump.PumpMessages(100), 1);
    EXPECT_EQ(Dispatched(), (std::vector{MessageKind::MouseMove, MessageKind::KeyDown}));
    EXPECT_EQ(times, (std::vector<std::uint64_t>{40, 90}));
    EXPECT_EQ(ui.clock.now, 100U);
}

TEST_F(MessagePumpTest, LeavesWhatComesAfterItsTimeInTheQueue) {
    ui.messages.PostAt(101, {windows.main, MessageKind::MouseMove});
    pump.PumpMessages(100);
    EXPECT_TRUE(ui.messages.dispatched.empty());
    EXPECT_EQ(pump.PumpMessages(1), 1);
    EXPECT_EQ(ui.messages.dispatched.size(), 1U);
}

TEST_F(MessagePumpTest, EmptiesTheQueueBeforeItReturnsEvenWhenItsTimeHasPassed) {
    for (int i = 0; i < 5; ++i)
        ui.messages.Post({windows.main, MessageKind::MouseMove});
    ui.messages.onDispatch = [&](const Message&) { ui.clock.now += 30; };
    EXPECT_EQ(pump.PumpMessages(50), 1);
    EXPECT_EQ(ui.messages.dispatched.size(), 5U);
    EXPECT_EQ(ui.clock.now, 150U);
}

TEST_F(MessagePumpTest, WithoutTimeDispatchesWhatIsThereAndReturnsAtOnce) {
    ui.messages.Post({windows.main, MessageKind::MouseMove});
    ui.messages.Post({windows.main, MessageKind::KeyDown, key::up});
    ui.messages.PostAt(1, {windows.main, MessageKind::MouseMove});
    EXPECT_EQ(pump.PumpMessages(0), 1);
    EXPECT_EQ(ui.messages.dispatched.size(), 2U);
    EXPECT_EQ(ui.clock.now, 0U);
}

TEST_F(MessagePumpTest, SuspendsTheLiveViewForAsLongAsItWaits) {
    liveView.Switch(1);
    bool running = true;
    ui.messages.PostAt(10, {windows.main, MessageKind::MouseMove});
    ui.messages.onDispatch = [&](const Message&) { running = LiveTimerRuns(); };
    pump.PumpMessages(500);
    EXPECT_FALSE(running);
    EXPECT_EQ(Dispatched(), std::vector{MessageKind::MouseMove}) << "no tick in between";
    EXPECT_TRUE(LiveTimerRuns());
    EXPECT_EQ(liveTimer.on, 1);
}

TEST_F(MessagePumpTest, StartsTheLiveTimerAnewWhenItsTimeHasPassed) {
    liveView.Switch(1);
    pump.PumpMessages(70);
    pump.PumpMessages(0);
    EXPECT_EQ(ui.messages.timers.begin()->second.due, 170U);
}

TEST_F(MessagePumpTest, LeavesALiveViewThatIsOffOff) {
    liveView.Switch(0);
    pump.PumpMessages(100);
    EXPECT_FALSE(LiveTimerRuns());
}

TEST_F(MessagePumpTest, StopsAllAxesOnAClickWhileNoScanRunsAndThenDispatchesIt) {
    ui.messages.Post(Click());
    Texts sentBefore;
    ui.messages.onDispatch = [&](const Message&) { sentBefore = port.writes; };
    EXPECT_EQ(pump.PumpMessages(10), 1);
    EXPECT_EQ(sentBefore, allStops);
    EXPECT_EQ(Dispatched(), std::vector{MessageKind::LeftButtonPress});
    EXPECT_EQ(ui.messages.dispatched[0].position, PackPosition(5, 6));
    EXPECT_TRUE(ui.boxes.questions.empty());
    EXPECT_EQ(scan.stopRequested, 0);
}

TEST_F(MessagePumpTest, StopsAllAxesOnTheStopCommandWhileNoScanRunsAndThenDispatchesIt) {
    ui.messages.Post(Menu(command::stop));
    EXPECT_EQ(pump.PumpMessages(10), 1);
    EXPECT_EQ(port.writes, allStops);
    EXPECT_EQ(Dispatched(), std::vector{MessageKind::Command});
}

TEST_F(MessagePumpTest, StopsOncePerClick) {
    ui.messages.Post(Click());
    ui.messages.Post({windows.main, MessageKind::LeftButtonRelease});
    ui.messages.Post(Click());
    pump.PumpMessages(10);
    EXPECT_EQ(port.writes.size(), 6U);
}

TEST_F(MessagePumpTest, TakesClicksOnAnyOtherWindowForAStop) {
    ui.messages.Post({windows.controlPanel, MessageKind::LeftButtonPress});
    ui.messages.Post({WindowHandle::None, MessageKind::LeftButtonPress});
    pump.PumpMessages(10);
    EXPECT_EQ(port.writes.size(), 6U);
}

TEST_F(MessagePumpTest, TakesNoOtherMessageForAStop) {
    for (const MessageKind kind :
         {MessageKind::Close, MessageKind::Paint, MessageKind::KeyDown, MessageKind::Command,
          MessageKind::Timer, MessageKind::MouseMove, MessageKind::LeftButtonRelease, MessageKind::Other})
        ui.messages.Post({windows.motorController, kind, 32801});
    pump.PumpMessages(10);
    EXPECT_TRUE(port.writes.empty());
    EXPECT_EQ(ui.messages.dispatched.size(), 8U);
}

class StopWordTest : public MessagePumpTest, public testing::WithParamInterface<MessageKind> {};

TEST_P(StopWordTest, StopsTheStageWhateverTheKindOfTheMessage) {
    ui.messages.Post({windows.main, GetParam(), 32802});
    ui.messages.Post({windows.main, GetParam(), 0x00018022}); // 32802 below other bits
    EXPECT_EQ(pump.PumpMessages(10), 1);
    EXPECT_EQ(port.writes.size(), 6U);
    EXPECT_EQ(Dispatched(), (std::vector{GetParam(), GetParam()}));
}

TEST_P(StopWordTest, AsksDuringAScanWhateverTheKindOfTheMessage) {
    scan.scanning = 1;
    ui.boxes.answers = {true};
    ui.messages.Post({windows.main, GetParam(), 0xFFFF8022});
    EXPECT_EQ(pump.PumpMessages(10), 0);
    EXPECT_EQ(ui.boxes.questions.size(), 1U);
}

TEST_P(StopWordTest, TogglesThePauseWhateverTheKindOfTheMessageUnlessItIsAPress) {
    ui.messages.Post({windows.main, GetParam(), 0x0001802C}); // 32812 below other bits
    pump.PumpMessages(10);
    EXPECT_EQ(scan.paused, GetParam() == MessageKind::LeftButtonPress ? 0 : 1);
}

INSTANTIATE_TEST_SUITE_P(Kinds, StopWordTest,
                         testing::Values(MessageKind::KeyDown, MessageKind::Command, MessageKind::Timer,
                                         MessageKind::MouseMove, MessageKind::LeftButtonPress,
                                         MessageKind::LeftButtonRelease, MessageKind::Other));

TEST_F(MessagePumpTest, DoesNotTakeTheHighWordForTheStopCommand) {
    ui.messages.Post({windows.main, MessageKind::Command, 0x80220000});
    pump.PumpMessages(10);
    EXPECT_TRUE(port.writes.empty());
}

TEST_F(MessagePumpTest, LeavesPressesAndCommandsOfTheMotorControllerAlone) {
    ui.messages.Post({windows.motorController, MessageKind::LeftButtonPress});
    ui.messages.Post({windows.motorController, MessageKind::Command, 32802});
    EXPECT_EQ(pump.PumpMessages(10), 1);
    scan.scanning = 1;
    ui.messages.Post({windows.motorController, MessageKind::LeftButtonPress});
    EXPECT_EQ(pump.PumpMessages(10), 1);
    EXPECT_TRUE(port.writes.empty());
    EXPECT_TRUE(ui.boxes.questions.empty());
    EXPECT_EQ(ui.messages.dispatched.size(), 3U);
}

TEST_F(MessagePumpTest, WithoutAMotorControllerTakesEveryPressForAStop) {
    windows.motorController = WindowHandle::None;
    ui.messages.Post({WindowHandle::None, MessageKind::LeftButtonPress});
    pump.PumpMessages(10);
    EXPECT_EQ(port.writes, allStops);
}

TEST_F(MessagePumpTest, AsksDuringAScanWhetherToStopIt) {
    scan.scanning = 1;
    ui.boxes.answers = {false};
    ui.messages.Post(Click());
    pump.PumpMessages(10);
    ASSERT_EQ(ui.boxes.questions.size(), 1U);
    EXPECT_EQ(ui.boxes.questions[0].owner, windows.main);
    EXPECT_EQ(ui.boxes.questions[0].text, "Do you want to stop, now ?");
    EXPECT_EQ(ui.boxes.questions[0].caption, "Warning");
    EXPECT_TRUE(port.writes.empty()) << "the stage is not stopped while a scan runs";
}

TEST_F(MessagePumpTest, AnsweredYesReturnsAtOnceWithoutDispatchingAndWithTheLiveViewSuspended) {
    liveView.Switch(1);
    scan.scanning = 1;
    ui.boxes.answers = {true};
    ui.messages.PostAt(30, Click());
    ui.messages.PostAt(30, {windows.main, MessageKind::MouseMove});
    EXPECT_EQ(pump.PumpMessages(100), 0);
    EXPECT_EQ(scan.stopRequested, 1);
    EXPECT_EQ(scan.scanning, 1) << "the scan ends itself";
    EXPECT_EQ(ui.clock.now, 30U);
    EXPECT_TRUE(ui.messages.dispatched.empty());
    EXPECT_FALSE(LiveTimerRuns());
    EXPECT_EQ(liveTimer.on, 1);
}

TEST_F(MessagePumpTest, AnsweredNoDispatchesTheClickAndWaitsOn) {
    liveView.Switch(1);
    scan.scanning = 1;
    ui.boxes.answers = {false};
    ui.messages.PostAt(30, Click());
    EXPECT_EQ(pump.PumpMessages(100), 1);
    EXPECT_EQ(scan.stopRequested, 0);
    EXPECT_EQ(Dispatched(), std::vector{MessageKind::LeftButtonPress});
    EXPECT_EQ(ui.clock.now, 100U);
    EXPECT_TRUE(LiveTimerRuns());
}

TEST_F(MessagePumpTest, AnsweredNoKeepsAStopThatWasRequestedBefore) {
    scan.scanning = 1;
    scan.stopRequested = 1;
    ui.boxes.answers = {false};
    ui.messages.Post(Click());
    pump.PumpMessages(10);
    EXPECT_EQ(scan.stopRequested, 1);
}

TEST_F(MessagePumpTest, AsksAgainForEveryClick) {
    scan.scanning = 1;
    ui.boxes.answers = {false, false, true};
    for (int i = 0; i < 4; ++i)
        ui.messages.Post(Click());
    EXPECT_EQ(pump.PumpMessages(10), 0);
    EXPECT_EQ(ui.boxes.questions.size(), 3U);
    EXPECT_EQ(ui.messages.dispatched.size(), 2U);
}

TEST_F(MessagePumpTest, SaysThatTheScanIsPausedAndResumed) {
    scan.scanning = 1;
    ui.messages.PostAt(10, Menu(command::pauseResume));
    ui.messages.PostAt(20, Menu(command::pauseResume));
    std::vector<int> paused;
    ui.messages.onDispatch = [&](const Message&) { paused.push_back(scan.paused); };
    EXPECT_EQ(pump.PumpMessages(50), 1);
    EXPECT_EQ(Information(), (Texts{"Paused...", "Scanning resumed..."}));
    EXPECT_EQ(paused, (std::vector{1, 0})) << "toggled before the command is dispatched";
    EXPECT_EQ(ui.clock.now, 50U) << "nothing halts";
    EXPECT_EQ(scan.scanning, 1);
    EXPECT_TRUE(port.writes.empty());
}

TEST_F(MessagePumpTest, TogglesThePauseWithoutAScanAndFromTheMotorControllerToo) {
    ui.messages.Post({windows.motorController, MessageKind::Command, 32812});
    pump.PumpMessages(10);
    EXPECT_EQ(scan.paused, 1);
    EXPECT_EQ(Information(), Texts{"Paused..."});
}

TEST_F(MessagePumpTest, TogglesThePauseWithAClosedPanel) {
    ClosePanel();
    ui.messages.Post(Menu(command::pauseResume));
    EXPECT_EQ(pump.PumpMessages(10), 1);
    EXPECT_EQ(scan.paused, 1);
    EXPECT_TRUE(ui.dialogs.textsSet.empty());
}

TEST_F(MessagePumpTest, WithAPressThatCarriesThePauseWordStopsAndDoesNotPause) {
    ui.messages.Post({windows.main, MessageKind::LeftButtonPress, 32812});
    pump.PumpMessages(10);
    EXPECT_EQ(port.writes, allStops);
    EXPECT_EQ(scan.paused, 0);
}

TEST_F(MessagePumpTest, NestedInAMessageHasItsOwnTimeAndTheOuterOneGoesOn) {
    liveView.Switch(1);
    int inner = -1;
    bool resumedByInner = false;
    ui.messages.PostAt(20, {windows.main, MessageKind::KeyDown, key::up});
    ui.messages.PostAt(30, {windows.main, MessageKind::MouseMove});
    ui.messages.onDispatch = [&](const Message& message) {
        if (message.kind != MessageKind::KeyDown)
            return;
        inner = pump.PumpMessages(40);
        resumedByInner = LiveTimerRuns();
    };
    EXPECT_EQ(pump.PumpMessages(100), 1);
    EXPECT_EQ(inner, 1);
    EXPECT_TRUE(resumedByInner);
    EXPECT_EQ(Dispatched(), (std::vector{MessageKind::KeyDown, MessageKind::MouseMove}));
    EXPECT_EQ(ui.clock.now, 100U);
}

TEST_F(MessagePumpTest, NestedLongerThanTheOuterOneEndsBoth) {
    ui.messages.PostAt(20, {windows.main, MessageKind::KeyDown, key::up});
    ui.messages.onDispatch = [&](const Message&) { pump.PumpMessages(500); };
    EXPECT_EQ(pump.PumpMessages(100), 1);
    EXPECT_EQ(ui.clock.now, 520U);
}

TEST_F(MessagePumpTest, NestedAndAnsweredYesEndsTheInnerWaitOnly) {
    scan.scanning = 1;
    ui.boxes.answers = {true};
    int inner = -1;
    ui.messages.PostAt(20, {windows.main, MessageKind::KeyDown, key::up});
    ui.messages.PostAt(30, Click());
    ui.messages.onDispatch = [&](const Message& message) {
        if (message.kind == MessageKind::KeyDown)
            inner = pump.PumpMessages(40);
    };
    EXPECT_EQ(pump.PumpMessages(100), 1);
    EXPECT_EQ(inner, 0);
    EXPECT_EQ(scan.stopRequested, 1);
    EXPECT_EQ(ui.clock.now, 100U);
}

TEST_F(MessagePumpTest, CanBeEnteredWhileTheStopQuestionIsOpen) {
    scan.scanning = 1;
    ui.boxes.answers = {true, false};
    std::vector<int> results;
    ui.messages.Post(Click());
    ui.boxes.whileAsking = [&] {
        if (ui.boxes.questions.size() > 1)
            return;
        ui.messages.Post(Click());
        results.push_back(pump.PumpMessages(10));
    };
    results.push_back(pump.PumpMessages(100));
    EXPECT_EQ(ui.boxes.questions.size(), 2U);
    EXPECT_EQ(results, (std::vector{0, 1})) << "the inner question came last and was answered first";
    EXPECT_EQ(scan.stopRequested, 1);
}

TEST_F(MessagePumpTest, SendsNoStopToAnOfflineStageAndStillDispatches) {
    stage.offline = 1;
    ui.messages.Post(Click());
    EXPECT_EQ(pump.PumpMessages(10), 1);
    EXPECT_TRUE(port.writes.empty());
    EXPECT_EQ(ui.messages.dispatched.size(), 1U);
}

} // namespace
} // namespace tessaro
