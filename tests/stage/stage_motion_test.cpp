#include "tests/stage/stage_fixture.h"

#include <cmath>
#include <limits>
#include <utility>

namespace tessaro {
namespace {

using Position = std::array<double, 3>;

class Motion : public StageFixture {
protected:
    Motion() { BeOnline(); }

    /// What arrives ends the wait; then the axis is asked for.
    void ArrivesAndAnswers(const char* query, const std::string& steps) {
        line.Arrive(ui.clock.now + 30, Terminated("X"));
        line.Expect(query, Answered(steps));
    }
};

TEST_F(Motion, SendsTheTargetAndWaits) {
    line.Expect("m1600");
    ArrivesAndAnswers("p", "1600");
    motion.MoveAxisTo(axisX, 1000.0);
    EXPECT_EQ(stage.position, (Position{1000.0, 0.0, 0.0}));
    EXPECT_EQ(Progress(), Texts{"arrived : 10/1000"});
}

TEST_F(Motion, MovesByADistanceFromTheStoredPosition) {
    stage.position[2] = 10.0;
    line.Expect("L20"); // 20.8 steps
    ArrivesAndAnswers("Q", "20");
    motion.MoveAxisBy(axisZ, 3.0);
    EXPECT_EQ(stage.position[2], 12.5);
}

TEST_F(Motion, MovesNoAxisThatDoesNotExist) {
    motion.MoveAxisTo(3, 10.0);
    motion.MoveAxisTo(-1, 10.0);
    motion.MoveAxisBy(3, 10.0);
    EXPECT_TRUE(line.calls.empty());
    EXPECT_TRUE(Progress().empty());
}

TEST_F(Motion, WaitsForXWhereItNeedsLonger) {
    line.Expect("M160");
    line.Expect("m1600");
    ArrivesAndAnswers("p", "1600");
    motion.MoveXY(1000.0, 100.0);
    EXPECT_EQ(stage.position, (Position{1000.0, 0.0, 0.0})) << "nobody has asked for Y";
}

TEST_F(Motion, WaitsForYWhereItNeedsLonger) {
    line.Expect("m160");
    line.Expect("M1600");
    ArrivesAndAnswers("P", "1600");
    motion.MoveXY(100.0, 1000.0);
    EXPECT_EQ(stage.position, (Position{0.0, 1000.0, 0.0}));
}

TEST_F(Motion, WaitsForYWhereBothNeedTheSame) {
    line.Expect("m-160");
    line.Expect("M160");
    ArrivesAndAnswers("P", "160");
    motion.MoveXY(-100.0, 100.0);
}

TEST_F(Motion, ComparesTimesInWholeMillisecondsAtTheSpeedOfEachAxis) {
    stage.speed = {1000, 500, 1500};
    stage.position = {10.0, 20.0, 0.0};
    line.Expect("m1616"); // 1000 ms, and not a part of one more
    line.Expect("M832");  // 1000 ms
    ArrivesAndAnswers("P", "832");
    motion.MoveXY(1010.0009, 520.0);
}

TEST_F(Motion, ComparesTimesThatNoClockCanTell) {
    constexpr double infinite = std::numeric_limits<double>::infinity();
    line.Expect("m-2147483648");
    line.Expect("M2147483647");
    ArrivesAndAnswers("P", "0");
    motion.MoveXY(-infinite, 1e300);
}

TEST_F(Motion, TheOtherAxisIsWhereTheProgressSaysThatItIs) {
    line.Expect("M160", {{40, Terminated("P80")}});
    line.Expect("m1600", {{60, Terminated("p800")}, {90, Terminated("X")}});
    line.Expect("p", Answered("1600"));
    motion.MoveXY(1000.0, 100.0);
    EXPECT_EQ(stage.position, (Position{1000.0, 50.0, 0.0}));
}

TEST_F(Motion, OnABrokenLineSimulatesTheMoveAndSaysThatItDidNotArrive) {
    line.HangUp();
    motion.MoveXY(1000.0, 100.0);
    EXPECT_EQ(stage.position, (Position{1000.0, 100.0, 0.0}));
    EXPECT_EQ(Progress().back(), "time passed: 2000/1000, Fail to read:199/199");
    EXPECT_EQ(PanelText(panel::positionX), "1000");
}

TEST_F(Motion, WithoutALineMovesAtOnceAndSaysNothing) {
    stage.hComm = SerialHandle::Invalid;
    stage.offline = 1;
    motion.MoveXY(1000.0, 100.0);
    motion.MoveAxisBy(axisZ, 3.0);
    EXPECT_EQ(stage.position, (Position{1000.0, 100.0, 3.0}));
    EXPECT_TRUE(Progress().empty());
    EXPECT_EQ(ui.clock.now, 0U);
}

TEST_F(Motion, AMoveMayBeginInsideAnother) {
    ui.messages.PostAt(5, {windows.main, MessageKind::Other});
    bool begun = false;
    ui.messages.onDispatch = [&](const Message& message) {
        if (message.kind == MessageKind::Other && !std::exchange(begun, true))
            motion.MoveAxisTo(axisZ, 10.0);
    };
    line.Expect("m1600", {{200, Terminated("X")}});
    line.Expect("L16", {{30, Terminated("Z")}});
    line.Expect("Q", Answered("16"));
    line.Expect("p", Answered("1600"));
    motion.MoveAxisTo(axisX, 1000.0);
    EXPECT_EQ(stage.position, (Position{1000.0, 0.0, 10.0}));
    EXPECT_EQ(Progress(), (Texts{"arrived : 10/1000", "arrived : 70/1000"}));
}

class MotionTogether : public Motion {
protected:
    void ExpectStart(const Texts& commands) {
        for (const std::string& command : commands)
            line.Expect(command);
    }
    void ExpectQueries(const std::string& x, const std::string& y) {
        line.Expect("p", Answered(x));
        line.Expect("P", Answered(y));
    }
};

TEST_F(MotionTogether, ScalesTheSpeedOfTheShorterWay) {
    ExpectStart({"s640", "S320", "m640", "M320"}); // 400 um at 400 um/s; 200 um at 200 um/s
    ExpectQueries("320", "160");
    ExpectQueries("638", "319"); // 1.25 um off, and 200 um before
    ExpectQueries("638", "319");
    motion.MoveXYTogether(400.0, 200.0, 400);
    EXPECT_EQ(stage.speed, (std::array<std::int32_t, 3>{400, 200, 1500}));
    EXPECT_EQ(stage.position, (Position{400.0, 200.0, 0.0})) << "as if they stood there";
    EXPECT_EQ(Progress(), Texts{"Dist. to move 400.0um"});
    EXPECT_EQ(Information(), Texts{"Started    "});
    EXPECT_EQ(PanelText(panel::positionX), "400");
}

TEST_F(MotionTogether, ScalesXWhereYIsTheLongerWay) {
    ExpectStart({"s212", "S640", "m160", "M480"}); // 300 um in 750 ms; 100 um at 133.3 um/s
    ExpectQueries("160", "479");
    motion.MoveXYTogether(100.0, 300.0, 400);
    EXPECT_EQ(stage.speed, (std::array<std::int32_t, 3>{133, 400, 1500})) << "212.8 steps/s are 212";
}

TEST_F(MotionTogether, TreatsEqualWaysAsIfYWereTheLonger) {
    stage.position = {50.0, 50.0, 0.0};
    ExpectStart({"s160", "S160", "m0", "M160"});
    ExpectQueries("999", "160"); // X is not looked at
    motion.MoveXYTogether(0.0, 100.0, 100);
    EXPECT_EQ(stage.position, (Position{0.0, 100.0, 0.0}));
}

TEST_F(MotionTogether, IsNoFasterThan800MicrometresASecond) {
    ExpectStart({"s1280", "S1", "m1280", "M0"}); // no way takes the least speed
    ExpectQueries("1280", "0");
    motion.MoveXYTogether(800.0, 0.0, 5000);
    EXPECT_EQ(stage.speed[0], 800);
}

TEST_F(MotionTogether, EndsWhenItsTimeIsUpAndIsNotEndedByAClick) {
    line.TakeAnyWrite();
    ui.messages.PostAt(305, {WindowHandle::None, MessageKind::LeftButtonPress});
    scan.scanning = 1;
    ui.boxes.answers = {true};
    motion.MoveXYTogether(800.0, 0.0, 800);
    // 1000 ms; two silent queries and a pump take 310 ms a turn, and the stop cuts one pump short.
    EXPECT_EQ(ui.clock.now, 4 * 310U - 5U);
    EXPECT_EQ(stage.position[0], 800.0);
    EXPECT_EQ(scan.stopRequested, 1);
}

TEST_F(MotionTogether, WithoutSpeedMovesNothing) {
    motion.MoveXYTogether(100.0, 200.0, 0);
    motion.MoveXYTogether(100.0, 200.0, -5);
    EXPECT_TRUE(line.calls.empty());
    EXPECT_EQ(stage.position, (Position{}));
}

TEST_F(MotionTogether, WithoutAWayNeedsNoTime) {
    ExpectStart({"s640", "S640", "m0", "M0"});
    motion.MoveXYTogether(0.0, 0.0, 400);
    EXPECT_EQ(ui.clock.now, 0U);
    EXPECT_EQ(stage.speed[1], 400);
}

TEST_F(MotionTogether, DoesNotWaitForWaysThatNoStageHas) {
    line.TakeAnyWrite();
    for (const double target : {1e300, std::numeric_limits<double>::infinity(), std::nan("")})
        motion.MoveXYTogether(target, 1.0, 1);
    EXPECT_EQ(ui.clock.now, 0U);
}

TEST_F(MotionTogether, OfflineIsThereAtOnce) {
    stage.offline = 1;
    motion.MoveXYTogether(400.0, 200.0, 400);
    EXPECT_EQ(stage.position, (Position{400.0, 200.0, 0.0}));
    EXPECT_EQ(ui.clock.now, 0U);
    EXPECT_TRUE(line.calls.empty());
}

} // namespace
} // namespace tessaro
