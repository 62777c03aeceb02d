#include "tests/stage/stage_fixture.h"

namespace tessaro {
namespace {

using Position = std::array<double, 3>;

class StageQuery : public StageFixture {
protected:
    StageQuery() {
        BeOnline();
        stage.position = {1.0, 2.0, 3.0};
    }
};

TEST_F(StageQuery, AsksEachAxisByItsLetter) {
    line.Expect("p", Answered("1600"));
    line.Expect("P", Answered("-8"));
    line.Expect("Q", Answered("1"));
    EXPECT_EQ(stage.QueryPosition(axisX), 1000.0);
    EXPECT_EQ(stage.QueryPosition(axisY), -5.0);
    EXPECT_EQ(stage.QueryPosition(axisZ), 0.625);
    EXPECT_EQ(stage.position, (Position{1000.0, -5.0, 0.625}));
    EXPECT_EQ(stage.bytesTransferred, 2U);
    EXPECT_EQ(stage.lastResult, 1);
}

TEST_F(StageQuery, ReturnsAsSoonAsTheReplyIsFollowedBySilence) {
    line.Expect("p", Answered("1600"));
    stage.QueryPosition(axisX);
    EXPECT_EQ(ui.clock.now, 5U + 10U);
}

TEST_F(StageQuery, WaitsNoLongerThan150Milliseconds) {
    line.Expect("p");
    EXPECT_EQ(stage.QueryPosition(axisX), 1.0);
    EXPECT_EQ(ui.clock.now, 150U);
    EXPECT_EQ(stage.bytesTransferred, 0U);
    EXPECT_EQ(stage.lastResult, 1) << "silence is no failure";
}

TEST_F(StageQuery, OfflineAnswersFromMemory) {
    stage.offline = 1;
    EXPECT_EQ(stage.QueryPosition(axisY), 2.0);
    EXPECT_TRUE(line.calls.empty());
}

TEST_F(StageQuery, WithoutALineIsZero) {
    stage.hComm = SerialHandle::Invalid;
    EXPECT_EQ(stage.QueryPosition(axisY), 0.0);
    EXPECT_EQ(stage.position[1], 2.0);
    EXPECT_EQ(line.calls, Texts{"Write P"}) << "nothing is read";
}

TEST_F(StageQuery, IsZeroAndStoresNothingWhenTheLineCannotBeRead) {
    line.Expect("Q");
    line.FailAt("Read");
    EXPECT_EQ(stage.QueryPosition(axisZ), 0.0);
    EXPECT_EQ(stage.position, (Position{1.0, 2.0, 3.0}));
    EXPECT_EQ(stage.lastResult, 0);
    EXPECT_EQ(stage.offline, 0);
}

TEST_F(StageQuery, GoesOfflineWhenTheLineHangsUp) {
    line.HangUp();
    EXPECT_EQ(stage.QueryPosition(axisX), 0.0);
    EXPECT_EQ(stage.offline, 1);
    EXPECT_STREQ(stage.commandText.data(), "Error for p: 31");
    EXPECT_EQ(stage.QueryPosition(axisX), 1.0) << "from memory";
}

TEST_F(StageQuery, AfterAMoveCommandSilenceChangesNothing) {
    line.Expect("m16000");
    line.Expect("p");
    stage.StartMove(axisX, 10000.0);
    EXPECT_EQ(stage.QueryPosition(axisX), 1.0);
    EXPECT_EQ(stage.position[0], 1.0);
}

TEST_F(StageQuery, AfterASpeedCommandSilenceChangesNothing) {
    line.Expect("T2400");
    line.Expect("Q");
    stage.SetSpeed(axisZ, 1500);
    EXPECT_EQ(stage.QueryPosition(axisZ), 3.0);
}

TEST_F(StageQuery, AfterANumberSilenceCountsItOnceMoreEvenForAnotherAxis) {
    line.Expect("p", Answered("1600"));
    line.Expect("p");
    line.Expect("Q");
    stage.QueryPosition(axisX);
    stage.SetStoredPosition(axisX, 0.0);
    EXPECT_EQ(stage.QueryPosition(axisX), 1000.0);
    EXPECT_EQ(stage.QueryPosition(axisZ), 1000.0);
    EXPECT_EQ(stage.position, (Position{1000.0, 2.0, 1000.0}));
}

TEST_F(StageQuery, ReadsAReplyWithoutTerminatorTogetherWithOlderBytes) {
    line.Expect("m1600");
    line.Expect("p", {{5, "25"}});
    stage.StartMove(axisX, 1000.0);
    EXPECT_EQ(stage.QueryPosition(axisX), 25600 * 0.625) << "of the command, 600 was left";
}

TEST_F(StageQuery, JoinsPiecesWithLessThanTenMillisecondsBetweenThem) {
    line.Expect("p", {{5, "1"}, {14, "6"}, {23, "00"}, {32, Terminated("")}});
    EXPECT_EQ(stage.QueryPosition(axisX), 1000.0);
}

TEST_F(StageQuery, LeavesThePieceAfterTenMillisecondsToTheNextRead) {
    line.Expect("p", {{5, "16"}, {15, Terminated("00")}});
    line.Expect("P", {{5, Terminated("7")}});
    EXPECT_EQ(stage.QueryPosition(axisX), 10.0);
    EXPECT_EQ(stage.QueryPosition(axisY), 0.0) << "the rest, and the new reply behind its terminator";
}

TEST_F(StageQuery, TakesALateReplyForThatOfTheNextQuery) {
    line.Expect("p", {{160, Terminated("1600")}});
    line.Expect("P", {{40, Terminated("3200")}});
    EXPECT_EQ(stage.QueryPosition(axisX), 1.0);
    EXPECT_EQ(stage.QueryPosition(axisY), 1000.0);
}

TEST_F(StageQuery, ReadsNoMoreThanTenBytes) {
    line.Expect("p", Answered("1600 and more"));
    stage.QueryPosition(axisX);
    EXPECT_EQ(stage.bytesTransferred, 10U);
    EXPECT_EQ(stage.ioBuffer[9], 'm');
    EXPECT_EQ(stage.ioBuffer[10], '\0');
}

TEST_F(StageQuery, OfAnAxisThatDoesNotExistSendsAndStoresNothing) {
    line.Arrive(0, Terminated("1600"));
    EXPECT_EQ(stage.QueryPosition(3), 1000.0) << "whatever comes";
    line.Arrive(20, "?");
    EXPECT_EQ(stage.QueryPosition(-1), 0.0);
    stage.offline = 1;
    EXPECT_EQ(stage.QueryPosition(3), 0.0);
    EXPECT_EQ(stage.position, (Position{1.0, 2.0, 3.0}));
    EXPECT_TRUE(line.writes.empty());
}

struct ReplyCase {
    const char* name;
    std::string bytes;
    double position; // 1.0: left as it was
};

class StageReply : public StageQuery, public testing::WithParamInterface<ReplyCase> {};

TEST_P(StageReply, IsReadAsANumberAtItsStart) {
    line.Expect("p", {{5, GetParam().bytes}});
    EXPECT_EQ(stage.QueryPosition(axisX), GetParam().position);
    EXPECT_EQ(stage.position[0], GetParam().position);
}

INSTANTIATE_TEST_SUITE_P(
    Replies, StageReply,
    testing::Values(ReplyCase{"Zero", {"0", 2}, 0.0}, ReplyCase{"Negative", {"-8", 3}, -5.0},
                    ReplyCase{"Plus", {"+8", 3}, 5.0}, ReplyCase{"BlanksBefore", {" \t8", 4}, 5.0},
                    ReplyCase{"LineFeedBehind", "8\n", 5.0}, ReplyCase{"JunkBehind", {"8x9", 4}, 5.0},
                    ReplyCase{"LetterBefore", {"p8", 3}, 1.0}, ReplyCase{"SignAlone", {"-", 2}, 1.0},
                    ReplyCase{"TwoSigns", {"+-8", 4}, 1.0},
                    ReplyCase{"NulBefore",
                              {"\0"
                               "8",
                               3},
                              1.0},
                    ReplyCase{"NulAlone", {"", 1}, 1.0}, ReplyCase{"HighBytes", {"\xFF\xFE", 3}, 1.0},
                    ReplyCase{"Largest", "2147483647", 1342177279.375},
                    ReplyCase{"OneTooLarge", "2147483648", 1.0},
                    ReplyCase{"TooManyDigits", "9999999999", 1.0},
                    ReplyCase{"TooSmall", "-999999999", -624999999.375}),
    [](const auto& reply) { return reply.param.name; });

} // namespace
} // namespace tessaro
