#include "stage/stage_units.h"
#include "tests/stage/stage_fixture.h"

#include <cmath>
#include <utility>

namespace tessaro {
namespace {

class StageLinkTest : public StageFixture {
protected:
    StageLinkTest() {
        BeOnline();
        line.TakeAnyWrite();
    }
};

TEST(StageLink, StartsAtTheOriginWithoutALine) {
    const StageLink stage;
    EXPECT_EQ(stage.hComm, SerialHandle::None);
    EXPECT_EQ(stage.offline, 0);
    EXPECT_EQ(stage.position, (std::array<double, 3>{0.0, 0.0, 0.0}));
    EXPECT_EQ(stage.speed, (std::array<std::int32_t, 3>{1500, 1500, 1500}));
    EXPECT_EQ(stage.portNumber, 3);
    EXPECT_EQ(stage.commandText[0], '\0');
    EXPECT_EQ(stage.ioBuffer[99], '\0');
}

TEST_F(StageLinkTest, SendsATextWithItsTerminator) {
    EXPECT_EQ(stage.WriteText("M1600"), 1);
    EXPECT_EQ(line.writes, Texts{Terminated("M1600")});
    EXPECT_EQ(stage.bytesTransferred, 6U);
    EXPECT_EQ(stage.lastResult, 1);
    EXPECT_EQ(stage.offline, 0);
}

TEST_F(StageLinkTest, SaysOnStandardOutputWhatWasSent) {
    testing::internal::CaptureStdout();
    stage.WriteText("z");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "\"z\" was sent.\n");
}

TEST_F(StageLinkTest, GoesOfflineWhenTheLineBreaksAndKeepsTheReason) {
    line.FailAt("Write", 1, 31);
    testing::internal::CaptureStdout();
    EXPECT_EQ(stage.WriteText("m-4"), 0);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(stage.offline, 1);
    EXPECT_EQ(stage.lastResult, 0);
    EXPECT_STREQ(stage.commandText.data(), "Error for m-4: 31");
}

TEST_F(StageLinkTest, TextsNothingWhileOffline) {
    stage.offline = 1;
    stage.lastResult = 1;
    EXPECT_EQ(stage.WriteText("n"), 0);
    EXPECT_TRUE(line.writes.empty());
    EXPECT_EQ(stage.lastResult, 1);
    EXPECT_EQ(stage.commandText[0], '\0');
}

TEST_F(StageLinkTest, StaysOfflineWhenTheLineComesBack) {
    line.FailAt("Write");
    stage.WriteText("n");
    EXPECT_EQ(stage.WriteText("n"), 0);
    EXPECT_TRUE(line.writes.empty());
}

TEST_F(StageLinkTest, WithoutALineGoesOfflineAtTheFirstText) {
    stage.hComm = SerialHandle::None;
    EXPECT_EQ(stage.WriteText("n"), 0);
    EXPECT_EQ(stage.offline, 1);
    EXPECT_STREQ(stage.commandText.data(), "Error for n: 6");
}

TEST_F(StageLinkTest, CutsAReasonThatIsTooLong) {
    line.HangUp();
    stage.WriteText(std::string(200, 'x'));
    EXPECT_EQ(std::string(stage.commandText.data()), "Error for " + std::string(89, 'x'));
}

TEST_F(StageLinkTest, SendsCommandsByWayOfItsBuffer) {
    stage.SendCommand("S2400");
    EXPECT_EQ(line.writes, Texts{Terminated("S2400")});
    EXPECT_STREQ(stage.ioBuffer.data(), "S2400");
    stage.SendCommand("n");
    EXPECT_EQ(line.writes.back(), Terminated("n"));
    EXPECT_STREQ(stage.ioBuffer.data(), "n");
}

TEST_F(StageLinkTest, SendsAnEmptyCommandAsItsTerminatorAlone) {
    stage.SendCommand("");
    EXPECT_EQ(line.writes, Texts{Terminated("")});
}

TEST_F(StageLinkTest, CutsACommandThatDoesNotFitItsBuffer) {
    stage.SendCommand(std::string(150, 'm'));
    EXPECT_EQ(line.writes, Texts{Terminated(std::string(99, 'm'))});
}

TEST_F(StageLinkTest, FillsItsBufferEvenWhileOffline) {
    stage.offline = 1;
    stage.SendCommand("O");
    EXPECT_STREQ(stage.ioBuffer.data(), "O");
    EXPECT_TRUE(line.writes.empty());
}

TEST_F(StageLinkTest, StopsEachAxisByItsLetter) {
    stage.StopAxis(axisX);
    stage.StopAxis(axisY);
    stage.StopAxis(axisZ);
    EXPECT_EQ(line.writes, (Texts{Terminated("n"), Terminated("N"), Terminated("O")}));
}

TEST_F(StageLinkTest, StopsNoAxisThatDoesNotExist) {
    stage.StopAxis(-1);
    stage.StopAxis(3);
    EXPECT_TRUE(line.writes.empty());
    EXPECT_EQ(stage.ioBuffer[0], '\0');
}

TEST_F(StageLinkTest, StopsTheOtherAxesInVainWhenTheLineBreaksAtTheFirst) {
    line.HangUp();
    for (const int axis : {axisX, axisY, axisZ})
        stage.StopAxis(axis);
    EXPECT_STREQ(stage.commandText.data(), "Error for n: 31");
    EXPECT_STREQ(stage.ioBuffer.data(), "O");
}

TEST_F(StageLinkTest, MovesEachAxisByItsLetterWithoutWaiting) {
    stage.StartMove(axisX, -2.5);
    stage.StartMove(axisY, 1000.0);
    stage.StartMove(axisZ, 13.0);
    EXPECT_EQ(line.writes, (Texts{Terminated("m-4"), Terminated("M1600"), Terminated("L20")}));
    EXPECT_EQ(ui.clock.now, 0U);
    EXPECT_EQ(stage.position, (std::array<double, 3>{})) << "the controller tells where it is";
}

TEST_F(StageLinkTest, MovesAtOnceWhileOffline) {
    stage.offline = 1;
    stage.StartMove(axisY, 12.34);
    EXPECT_EQ(stage.position, (std::array<double, 3>{0.0, 12.34, 0.0})) << "not in whole steps";
    EXPECT_TRUE(line.writes.empty());
}

TEST_F(StageLinkTest, MovesAtOnceWhenTheLineBreaksAtTheCommand) {
    line.HangUp();
    stage.StartMove(axisX, 50.0);
    EXPECT_EQ(stage.offline, 1);
    EXPECT_EQ(stage.position[0], 50.0);
}

TEST_F(StageLinkTest, SendsTheLastCommandOnceMoreForAnAxisThatDoesNotExist) {
    stage.StartMove(axisY, 1000.0);
    stage.StartMove(3, 5.0);
    stage.StartMove(-1, 5.0);
    EXPECT_EQ(line.writes, Texts(3, Terminated("M1600")));
    stage.offline = 1;
    stage.StartMove(3, 5.0);
    EXPECT_EQ(stage.position, (std::array<double, 3>{}));
}

TEST_F(StageLinkTest, TellsTheControllerTheNearestTargetThatItCanBeTold) {
    for (const double target : {1e300, -1e300, std::nan(""), 1342177279.375})
        stage.StartMove(axisX, target);
    EXPECT_EQ(line.writes, (Texts{Terminated("m2147483647"), Terminated("m-2147483648"), Terminated("m0"),
                                  Terminated("m2147483647")}));
}

struct SpeedCase {
    const char* name;
    int axis;
    std::int32_t speed; // um/s
    std::int32_t stored;
    const char* command;
};

class StageSpeed : public StageLinkTest, public testing::WithParamInterface<SpeedCase> {};

TEST_P(StageSpeed, IsClampedStoredAndSentInStepsPerSecond) {
    const SpeedCase& expected = GetParam();
    stage.SetSpeed(expected.axis, expected.speed);
    EXPECT_EQ(line.writes, Texts{Terminated(expected.command)});
    EXPECT_EQ(stage.speed[static_cast<std::size_t>(expected.axis)], expected.stored);
    EXPECT_STREQ(stage.commandText.data(), expected.command);
}

INSTANTIATE_TEST_SUITE_P(Speeds, StageSpeed,
                         testing::Values(SpeedCase{"FarTooFast", axisX, 9000, 5000, "s8000"},
                                         SpeedCase{"OneTooFast", axisX, 5001, 5000, "s8000"},
                                         SpeedCase{"OneBelowTheFastest", axisX, 4999, 4999, "s7998"},
                                         SpeedCase{"Zero", axisY, 0, 1, "S1"},
                                         SpeedCase{"FarBelowZero", axisY, -2147483647, 1, "S1"},
                                         SpeedCase{"Largest", axisY, 2147483647, 5000, "S8000"},
                                         SpeedCase{"Slowest", axisZ, 1, 1, "T1"},
                                         SpeedCase{"PartOfAStep", axisZ, 2, 2, "T3"},
                                         SpeedCase{"Usual", axisZ, 1500, 1500, "T2400"}),
                         [](const auto& speed) { return std::string(speed.param.name); });

TEST_F(StageLinkTest, SetsNoSpeedOfAnAxisThatDoesNotExist) {
    stage.SetSpeed(3, 100);
    stage.SetSpeed(-1, 100);
    EXPECT_TRUE(line.writes.empty());
    EXPECT_EQ(stage.commandText[0], '\0');
    EXPECT_EQ(stage.speed, (std::array<std::int32_t, 3>{1500, 1500, 1500}));
    EXPECT_EQ(stage.portNumber, 3);
}

TEST_F(StageLinkTest, StoresASpeedWhileOffline) {
    stage.offline = 1;
    stage.SetSpeed(axisX, 300);
    EXPECT_EQ(stage.speed[0], 300);
    EXPECT_TRUE(line.writes.empty());
}

TEST_F(StageLinkTest, CountsWhatWentOutOfATextThatDidNotFit) {
    line.room = 3;
    EXPECT_EQ(stage.WriteText("M1600"), 1) << "that the time was up is no failure";
    EXPECT_EQ(stage.bytesTransferred, 3U);
    EXPECT_EQ(stage.offline, 0);
}

TEST_F(StageLinkTest, StoresPositionsOfItsAxesWithoutSpeaking) {
    stage.SetStoredPosition(axisZ, 7.5);
    stage.SetStoredPosition(3, 9.0);
    stage.SetStoredPosition(-1, 9.0);
    EXPECT_EQ(stage.position, (std::array<double, 3>{0.0, 0.0, 7.5}));
    EXPECT_TRUE(line.writes.empty());
}

TEST(StageUnits, AreWholeStepsTowardZero) {
    const std::vector<std::pair<double, std::int32_t>> cases = {{0.0, 0},
                                                                {0.625, 1},
                                                                {0.624, 0},
                                                                {-0.5, 0},
                                                                {-0.625, -1},
                                                                {-2.5, -4},
                                                                {13.0, 20},
                                                                {1.25, 2},
                                                                {1.8749999999999998, 3},
                                                                {999.9, 1599},
                                                                {1000, 1600},
                                                                {1342177279.375, 2147483647},
                                                                {2e9, 2147483647},
                                                                {-2e9, -2147483647 - 1}};
    for (const auto& [um, steps] : cases)
        EXPECT_EQ(StepsOf(um), steps) << um;
}

TEST(StageUnits, AStepIsFiveEighthsOfAMicrometre) {
    const std::vector<std::pair<std::int32_t, double>> cases = {{0, 0.0},
                                                                {1, 0.625},
                                                                {-8, -5.0},
                                                                {1600, 1000.0},
                                                                {2147483647, 1342177279.375},
                                                                {-2147483647 - 1, -1342177280.0}};
    for (const auto& [steps, um] : cases)
        EXPECT_EQ(MicrometresOf(steps), um) << steps;
}

TEST(StageUnits, BringBackEveryPositionThatTheControllerTells) {
    for (std::int32_t steps = -200'000; steps <= 200'000; ++steps)
        ASSERT_EQ(StepsOf(MicrometresOf(steps)), steps);
}

} // namespace
} // namespace tessaro
