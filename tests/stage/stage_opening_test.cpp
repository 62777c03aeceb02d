#include "tests/stage/stage_fixture.h"

namespace tessaro {
namespace {

constexpr auto owner = static_cast<WindowHandle>(77);
constexpr SerialSettings asTheDriverHasThem = {1200, 7, 1, 2};
const Texts setUp = {"GetSettings", "SetSettings 9600 8 0 0", "GetSettings", "SetTimeouts 10 10 50 10 50",
                     "GetTimeouts"};

class StageOpening : public StageFixture {
protected:
    void ExpectWaking() {
        line.Expect("z");
        line.Expect("p", Answered("1600"));
        line.Expect("P", Answered("-8"));
        line.Expect("Q", Answered("1"));
        line.Expect("S2400");
        line.Expect("T2400");
    }

    int Open() {
        testing::internal::CaptureStdout();
        const int result = stage.Open(owner);
        output = testing::internal::GetCapturedStdout();
        return result;
    }

    std::string output;
};

TEST_F(StageOpening, SetsTheLineUpAndWakesTheControllerInThisOrder) {
    ExpectWaking();
    EXPECT_EQ(Open(), 1);
    Texts calls = {"Open line 3"};
    calls.insert(calls.end(), setUp.begin(), setUp.end());
    for (const char* call : {"Write z", "Write p", "Read 10", "Write P", "Read 10", "Write Q", "Read 10",
                             "Write S2400", "Write T2400"})
        calls.emplace_back(call);
    EXPECT_EQ(line.calls, calls);
    EXPECT_EQ(stage.offline, 0);
    EXPECT_EQ(stage.lastResult, 1);
    EXPECT_TRUE(ui.boxes.warnings.empty());
}

TEST_F(StageOpening, PutsThisOnTheWireAndNothingElse) {
    ExpectWaking();
    Open();
    EXPECT_EQ(line.writes, (Texts{{"z", 2}, {"p", 2}, {"P", 2}, {"Q", 2}, {"S2400", 6}, {"T2400", 6}}));
}

TEST_F(StageOpening, StoresWhereTheAxesAre) {
    ExpectWaking();
    Open();
    EXPECT_EQ(stage.position, (std::array<double, 3>{1000.0, -5.0, 0.625}));
}

TEST_F(StageOpening, SaysHowTheLineWasSetAndWhatItSends) {
    ExpectWaking();
    Open();
    EXPECT_EQ(output, "\nBaudRate = 1200, ByteSize = 7, Parity = 1, StopBits = 2\n"
                      "\"z\" was sent.\n\"p\" was sent.\n\"P\" was sent.\n\"Q\" was sent.\n"
                      "\"S2400\" was sent.\n\"T2400\" was sent.\n");
}

TEST_F(StageOpening, LetsTheLineSettleFor100MillisecondsBeforeItSpeaks) {
    ExpectWaking();
    std::uint64_t setUpAt = 0;
    std::uint64_t spokeAt = 0;
    line.onCall = [&](std::string_view call) {
        if (call == "GetTimeouts")
            setUpAt = ui.clock.now;
        if (call == "Write" && spokeAt == 0)
            spokeAt = ui.clock.now;
    };
    Open();
    EXPECT_EQ(spokeAt - setUpAt, 100U);
}

TEST_F(StageOpening, TakesTheNumberOfThePort) {
    stage.portNumber = 17;
    line.present = false;
    Open();
    EXPECT_EQ(line.calls, Texts{"Open line 17"});
}

TEST_F(StageOpening, SendsTheStoredSpeedsOfYAndZAlone) {
    stage.speed = {100, 200, 9000};
    stage.portNumber = 4000; // follows the speeds, where an axis 3 would have its own
    line.TakeAnyWrite();
    Open();
    EXPECT_EQ(line.writes, (Texts{{"z", 2}, {"p", 2}, {"P", 2}, {"Q", 2}, {"S320", 5}, {"T8000", 6}}));
    EXPECT_EQ(stage.speed, (std::array<std::int32_t, 3>{100, 200, 5000}));
    EXPECT_EQ(stage.portNumber, 4000);
}

TEST_F(StageOpening, WithoutAControllerTakesHalfASecondAndKeepsThePositions) {
    stage.position = {1.0, 2.0, 3.0};
    line.TakeAnyWrite();
    EXPECT_EQ(Open(), 1);
    EXPECT_EQ(ui.clock.now, 100U + 3 * 150U);
    EXPECT_EQ(stage.position, (std::array<double, 3>{1.0, 2.0, 3.0}));
    EXPECT_EQ(stage.offline, 0);
}

TEST_F(StageOpening, WarnsOnceOfAPortThatIsNotThereAndGoesOffline) {
    line.present = false;
    EXPECT_EQ(Open(), 0);
    ASSERT_EQ(ui.boxes.warnings.size(), 1U);
    EXPECT_EQ(ui.boxes.warnings[0].owner, owner);
    EXPECT_EQ(ui.boxes.warnings[0].text, "Error in  opening serial port");
    EXPECT_EQ(ui.boxes.warnings[0].caption, "Warning");
    EXPECT_EQ(stage.hComm, SerialHandle::Invalid);
    EXPECT_EQ(stage.offline, 1);
    EXPECT_EQ(output, "");
    EXPECT_EQ(ui.clock.now, 0U);
}

TEST_F(StageOpening, WithoutAPortAnswersAndMovesFromMemoryAlone) {
    line.present = false;
    stage.position = {4.0, 5.0, 6.0};
    Open();
    EXPECT_EQ(stage.QueryPosition(axisY), 5.0);
    stage.StartMove(axisY, 123.4);
    EXPECT_EQ(stage.position, (std::array<double, 3>{4.0, 123.4, 6.0}));
    EXPECT_EQ(stage.QueryPosition(axisY), 123.4);
    EXPECT_EQ(line.calls, Texts{"Open line 3"}) << "nothing was written or read";
    EXPECT_EQ(ui.boxes.warnings.size(), 1U);
}

TEST_F(StageOpening, OpensNothingAndWarnsOfNothingWhereNoLineIsWanted) {
    line.wanted = false;
    EXPECT_EQ(Open(), 0);
    EXPECT_TRUE(line.calls.empty());
    EXPECT_TRUE(ui.boxes.warnings.empty());
    EXPECT_EQ(stage.hComm, SerialHandle::Invalid);
    EXPECT_EQ(stage.offline, 1);
}

struct FailingStep {
    const char* name;
    const char* call;
    int occurrence;
    int result;
    const char* output;
    std::size_t callsDone; // of the set-up, the failing one included
    int lastResult;
};

class StageOpeningFault : public StageOpening, public testing::WithParamInterface<FailingStep> {};

TEST_P(StageOpeningFault, EndsThereWithTheLineOpenAndNothingSent) {
    const FailingStep& step = GetParam();
    line.FailAt(step.call, step.occurrence);
    EXPECT_EQ(Open(), step.result);
    EXPECT_EQ(output, step.output);
    EXPECT_EQ(Texts(line.calls.begin() + 1, line.calls.end()),
              Texts(setUp.begin(), setUp.begin() + static_cast<std::ptrdiff_t>(step.callsDone)));
    EXPECT_EQ(stage.lastResult, step.lastResult);
    EXPECT_EQ(stage.offline, 0);
    EXPECT_NE(stage.hComm, SerialHandle::Invalid);
    EXPECT_TRUE(ui.boxes.warnings.empty());
    EXPECT_EQ(ui.clock.now, 0U);
}

constexpr const char* settingsLine = "\nBaudRate = 1200, ByteSize = 7, Parity = 1, StopBits = 2\n";
constexpr const char* noTimeouts = "\nBaudRate = 1200, ByteSize = 7, Parity = 1, StopBits = 2\n"
                                   "Error to Setting Time outs\n";

INSTANTIATE_TEST_SUITE_P(
    Steps, StageOpeningFault,
    testing::Values(FailingStep{"FirstSettings", "GetSettings", 1, 2, "fail in GetCommState\n", 1, 0},
                    FailingStep{"SettingTheLine", "SetSettings", 1, 0, settingsLine, 2, 1},
                    FailingStep{"SecondSettings", "GetSettings", 2, 0, settingsLine, 3, 0},
                    FailingStep{"SettingTheTimeouts", "SetTimeouts", 1, 0, noTimeouts, 4, 1}),
    [](const auto& step) { return std::string(step.param.name); });

TEST_F(StageOpening, ChangesNothingOfALineWhoseSettingsItCannotRead) {
    line.FailAt("GetSettings");
    Open();
    EXPECT_EQ(line.driverSettings, asTheDriverHasThem);
}

TEST_F(StageOpening, GoesOnWithoutKnowingTheTimeOutsInForce) {
    line.FailAt("GetTimeouts");
    ExpectWaking();
    EXPECT_EQ(Open(), 1);
    EXPECT_EQ(output.substr(std::string(settingsLine).size(), 26), "Error in Get Comm Timeout\n");
}

TEST_F(StageOpening, GoesOfflineWhenTheControllerCannotBeWoken) {
    line.FailAt("Write", 1, 5);
    stage.position = {1.0, 2.0, 3.0};
    EXPECT_EQ(Open(), 1);
    EXPECT_EQ(stage.offline, 1);
    EXPECT_TRUE(line.writes.empty());
    EXPECT_EQ(stage.position, (std::array<double, 3>{1.0, 2.0, 3.0}));
    EXPECT_STREQ(stage.commandText.data(), "T2400") << "the last speed that it would have sent";
}

TEST_F(StageOpening, ClosesAnOpenLineBeforeItOpensItAgain) {
    BeOnline();
    line.TakeAnyWrite();
    EXPECT_EQ(Open(), 1);
    ASSERT_GE(line.calls.size(), 2U);
    EXPECT_EQ(line.calls[0], "Close");
    EXPECT_EQ(line.calls[1], "Open line 3");
    EXPECT_TRUE(ui.boxes.warnings.empty());
}

TEST_F(StageOpening, ComesBackOnlineAfterABrokenWrite) {
    BeOnline();
    line.HangUp();
    EXPECT_EQ(stage.WriteText("n"), 0);
    EXPECT_EQ(stage.offline, 1);
    EXPECT_EQ(line.calls, Texts{"Write n"}) << "the line is left open";
    line.calls.clear();
    ExpectWaking();
    EXPECT_EQ(Open(), 1);
    EXPECT_EQ(line.calls[0], "Close");
    EXPECT_EQ(stage.offline, 0);
    EXPECT_EQ(stage.position[0], 1000.0);
}

TEST_F(StageOpening, ComesBackOnlineAfterAPortThatWasNotThere) {
    line.present = false;
    Open();
    line.present = true;
    ExpectWaking();
    EXPECT_EQ(Open(), 1);
    EXPECT_EQ(stage.offline, 0);
    EXPECT_EQ(ui.boxes.warnings.size(), 1U);
}

TEST_F(StageOpening, ClosingGoesOffline) {
    BeOnline();
    EXPECT_EQ(stage.Close(), 0);
    EXPECT_EQ(stage.offline, 1);
    EXPECT_EQ(line.calls, Texts{"Close"});
    EXPECT_EQ(stage.Close(), 0);
    EXPECT_EQ(line.calls, Texts{"Close"}) << "not twice";
}

TEST_F(StageOpening, ClosingWithoutALineDoesNothing) {
    stage.hComm = SerialHandle::Invalid;
    EXPECT_EQ(stage.Close(), 0);
    EXPECT_EQ(stage.offline, 0);
    EXPECT_TRUE(line.calls.empty());
}

TEST_F(StageOpening, OpensAgainAfterClosing) {
    BeOnline();
    stage.Close();
    line.calls.clear();
    ExpectWaking();
    EXPECT_EQ(Open(), 1);
    EXPECT_EQ(line.calls.front(), "Open line 3") << "what is closed is not closed once more";
    EXPECT_EQ(stage.offline, 0);
    EXPECT_EQ(stage.position[0], 1000.0);
}

TEST_F(StageOpening, KeepsAPositionThatCannotBeRead) {
    stage.position = {1.0, 2.0, 3.0};
    ExpectWaking();
    line.FailAt("Read", 1);
    EXPECT_EQ(Open(), 1);
    EXPECT_EQ(stage.position[0], 1.0) << "though the query says 0";
    EXPECT_EQ(stage.position[1], 1000.0) << "the reply to the query before";
    EXPECT_EQ(stage.offline, 0);
}

TEST_F(StageOpening, KeepsThePositionsWhereNoneCanBeRead) {
    stage.position = {1.0, 2.0, 3.0};
    line.TakeAnyWrite();
    for (const int read : {1, 2, 3})
        line.FailAt("Read", read);
    EXPECT_EQ(Open(), 1);
    EXPECT_EQ(stage.position, (std::array<double, 3>{1.0, 2.0, 3.0}));
}

} // namespace
} // namespace tessaro
