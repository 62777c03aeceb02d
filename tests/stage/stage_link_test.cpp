#include "platform/fake/scripted_serial_port.h"
#include "stage/stage_link.h"

#include <gtest/gtest.h>

namespace tessaro {
namespace {

using Writes = std::vector<std::string>;

std::string Terminated(std::string text) {
    text.push_back('\0');
    return text;
}

class StageLinkTest : public testing::Test {
protected:
    StageLinkTest() {
        stage.machine.serial = &port;
        stage.hComm = port.Open("line 3");
        port.TakeAnyWrite();
    }

    VirtualClock clock;
    ScriptedSerialPorts port{clock};
    StageLink stage;
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
    EXPECT_EQ(port.writes, Writes{Terminated("M1600")});
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
    port.FailAt("Write", 1, 31);
    testing::internal::CaptureStdout();
    EXPECT_EQ(stage.WriteText("m-4"), 0);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(stage.offline, 1);
    EXPECT_EQ(stage.lastResult, 0);
    EXPECT_STREQ(stage.commandText.data(), "Error for m-4: 31");
}

TEST_F(StageLinkTest, WritesNothingWhileOffline) {
    stage.offline = 1;
    stage.lastResult = 1;
    EXPECT_EQ(stage.WriteText("n"), 0);
    EXPECT_TRUE(port.writes.empty());
    EXPECT_EQ(stage.lastResult, 1);
    EXPECT_EQ(stage.commandText[0], '\0');
}

TEST_F(StageLinkTest, StaysOfflineWhenTheLineComesBack) {
    port.FailAt("Write");
    stage.WriteText("n");
    EXPECT_EQ(stage.WriteText("n"), 0);
    EXPECT_TRUE(port.writes.empty());
}

TEST(StageLink, WithoutALineGoesOfflineAtTheFirstText) {
    StageLink stage;
    EXPECT_EQ(stage.WriteText("n"), 0);
    EXPECT_EQ(stage.offline, 1);
    EXPECT_STREQ(stage.commandText.data(), "Error for n: 6");
}

TEST_F(StageLinkTest, CutsAReasonThatIsTooLong) {
    port.HangUp();
    stage.WriteText(std::string(200, 'x'));
    EXPECT_EQ(std::string(stage.commandText.data()), "Error for " + std::string(89, 'x'));
}

TEST_F(StageLinkTest, SendsCommandsByWayOfItsBuffer) {
    stage.SendCommand("S2400");
    EXPECT_EQ(port.writes, Writes{Terminated("S2400")});
    EXPECT_STREQ(stage.ioBuffer.data(), "S2400");
    stage.SendCommand("n");
    EXPECT_EQ(port.writes.back(), Terminated("n"));
    EXPECT_STREQ(stage.ioBuffer.data(), "n");
}

TEST_F(StageLinkTest, SendsAnEmptyCommandAsItsTerminatorAlone) {
    stage.SendCommand("");
    EXPECT_EQ(port.writes, Writes{Terminated("")});
}

TEST_F(StageLinkTest, CutsACommandThatDoesNotFitItsBuffer) {
    stage.SendCommand(std::string(150, 'm'));
    EXPECT_EQ(port.writes, Writes{Terminated(std::string(99, 'm'))});
}

TEST_F(StageLinkTest, FillsItsBufferEvenWhileOffline) {
    stage.offline = 1;
    stage.SendCommand("O");
    EXPECT_STREQ(stage.ioBuffer.data(), "O");
    EXPECT_TRUE(port.writes.empty());
}

TEST_F(StageLinkTest, StopsEachAxisByItsLetter) {
    stage.StopAxis(axisX);
    stage.StopAxis(axisY);
    stage.StopAxis(axisZ);
    EXPECT_EQ(port.writes, (Writes{Terminated("n"), Terminated("N"), Terminated("O")}));
}

TEST_F(StageLinkTest, StopsNoAxisThatDoesNotExist) {
    stage.StopAxis(-1);
    stage.StopAxis(3);
    EXPECT_TRUE(port.writes.empty());
    EXPECT_EQ(stage.ioBuffer[0], '\0');
}

TEST_F(StageLinkTest, StopsTheOtherAxesInVainWhenTheLineBreaksAtTheFirst) {
    port.HangUp();
    for (const int axis : {axisX, axisY, axisZ})
        stage.StopAxis(axis);
    EXPECT_STREQ(stage.commandText.data(), "Error for n: 31");
    EXPECT_STREQ(stage.ioBuffer.data(), "O");
}

} // namespace
} // namespace tessaro
