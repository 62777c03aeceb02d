// The stage that tessaro-twin serves, under a client that has nothing of the operator's program: its line,
// its log, its commands and faults.

#include "support/arv_client.h"
#include "support/program.h"
#include "support/running_twin.h"
#include "support/stage_host.h"
#include "support/temporary_folder.h"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <string>
#include <vector>

namespace tessaro {
namespace {

using Options = std::vector<std::string>;
using Clock = std::chrono::steady_clock;

class TwinStage : public testing::Test {
protected:
    std::string Link() const { return (m_folder.Path() / "stage").string(); }
    std::string LogPath() const { return (m_folder.Path() / "log").string(); }

    /// A bare wafer of a millimetre, with the stage in its middle.
    Options With(const Options& more) const {
        Options options = {"--wafer-mm",   "1",    "--density",   "0",      "--at", "500,500,0",
                           "--stage-link", Link(), "--stage-log", LogPath()};
        options.insert(options.end(), more.begin(), more.end());
        return options;
    }

    bool IsLinked() const { return std::filesystem::exists(std::filesystem::symlink_status(Link())); }

    /// What is said of the line that the link leads to now.
    std::string ReadyLine() const {
        return "tessaro-twin: stage is ready at " + std::filesystem::read_symlink(Link()).string() + "\n";
    }

    /// The commands of the log, without their times.
    std::string Logged() const {
        std::string commands;
        std::ifstream file(LogPath());
        for (std::string time, command; file >> time >> command;)
            commands += command + " ";
        return commands;
    }

    /// All replies up to one of these letters.
    static std::vector<std::string> RepliesUntil(const StageHost& host, char letter) {
        std::vector<std::string> replies;
        do
            replies.push_back(host.Receive());
        while (!replies.back().empty() && replies.back().front() != letter);
        return replies;
    }

private:
    TemporaryFolder m_folder;
};

/// The mean of some samples in the middle.
double LevelInTheMiddle(const ReceivedFrame& frame) {
    double sum = 0.0;
    for (std::size_t i = 0; i < 1000; ++i)
        sum += frame.bytes[frame.bytes.size() / 2 + i];
    return sum / 1000.0;
}

TEST_F(TwinStage, MovesTheWaferUnderTheCamera) {
    RunningTwin twin(TESSARO_TWIN, With({"--time-factor", "10"}));
    ASSERT_TRUE(twin.IsReady()) << twin.Errors();
    ArvClient camera("127.0.0.1");
    camera.Start();
    const ReceivedFrame before = camera.Next();
    ASSERT_TRUE(before.complete);
    EXPECT_GT(LevelInTheMiddle(before), 100.0);
    const StageHost host(Link());
    ASSERT_TRUE(host.Send("z"));
    EXPECT_EQ(host.Ask("p"), "800");
    ASSERT_TRUE(host.Send("m-8000"));
    EXPECT_EQ(RepliesUntil(host, 'X').back(), "X");
    EXPECT_EQ(twin.Say("where"), "ok -5000.000,500.000,0.000 standing");
    EXPECT_TRUE(Eventually([&] {
        const ReceivedFrame frame = camera.Next();
        return frame.complete && LevelInTheMiddle(frame) < 60.0;
    })) << "beside the wafer there is only its dark holder";
    EXPECT_EQ(Logged(), "z p m-8000 ");
}

TEST_F(TwinStage, TellsTheWayThatTheCameraSees) {
    RunningTwin twin(TESSARO_TWIN, With({}));
    ASSERT_TRUE(twin.IsReady()) << twin.Errors();
    const StageHost host(Link());
    ASSERT_TRUE(host.Send("M1600"));
    const std::vector<std::string> replies = RepliesUntil(host, 'Y');
    ASSERT_GE(replies.size(), 3U) << "0.48 s on the way";
    int last = 800;
    for (std::size_t i = 0; i + 1 < replies.size(); ++i) {
        ASSERT_EQ(replies[i].front(), 'P') << replies[i];
        const int step = std::stoi(replies[i].substr(1));
        EXPECT_GT(step, last);
        EXPECT_LT(step, 1600);
        last = step;
    }
    EXPECT_EQ(host.Ask("P"), "1600");
}

TEST_F(TwinStage, TellsNothingOnItsWayAlongZUnlessToldTo) {
    {
        RunningTwin twin(TESSARO_TWIN, With({}));
        ASSERT_TRUE(twin.IsReady()) << twin.Errors();
        const StageHost host(Link());
        ASSERT_TRUE(host.Send("L-800"));
        EXPECT_EQ(RepliesUntil(host, 'Z'), std::vector<std::string>{"Z"});
    }
    RunningTwin twin(TESSARO_TWIN, With({"--progress", "Z"}));
    ASSERT_TRUE(twin.IsReady()) << twin.Errors();
    const StageHost host(Link());
    ASSERT_TRUE(host.Send("L-800"));
    const std::vector<std::string> replies = RepliesUntil(host, 'Z');
    ASSERT_GE(replies.size(), 3U) << "0.48 s on the way";
    EXPECT_EQ(replies.front().substr(0, 2), "Q-");
}

TEST_F(TwinStage, IsAskedWhereItIsWhileItMoves) {
    RunningTwin twin(TESSARO_TWIN, With({"--limits", "-9000:9000,0:1000,-10:10"}));
    ASSERT_TRUE(twin.IsReady()) << twin.Errors();
    const StageHost host(Link());
    ASSERT_TRUE(host.Send("m14400"));
    EXPECT_TRUE(Eventually([&] { return twin.Say("where").ends_with(" moving"); }));
    EXPECT_EQ(twin.Say("move 1,2.5,11"), "error: that is beyond the stage's limits");
    EXPECT_EQ(twin.Say("move 1.25,2.5,-5"), "ok");
    EXPECT_EQ(twin.Say("where"), "ok 1.250,2.500,-5.000 standing") << "pushed: the motion is over";
    host.ReadUntilSilence();
    EXPECT_EQ(host.Ask("Q"), "-8");
}

TEST_F(TwinStage, GoesNoFartherThanItsLimits) {
    RunningTwin twin(TESSARO_TWIN, With({"--limits", "400:600,400:600,-10:10", "--time-factor", "100"}));
    ASSERT_TRUE(twin.IsReady()) << twin.Errors();
    const StageHost host(Link());
    ASSERT_TRUE(host.Send("m1600"));
    EXPECT_TRUE(Eventually([&] { return twin.Say("where") == "ok 600.000,500.000,0.000 standing"; }));
    EXPECT_EQ(host.Receive(500), "") << "that is no arrival";
}

TEST_F(TwinStage, MovesSoManyTimesAsFast) {
    RunningTwin twin(TESSARO_TWIN, With({"--time-factor", "100"}));
    ASSERT_TRUE(twin.IsReady()) << twin.Errors();
    const StageHost host(Link());
    const auto begun = Clock::now();
    ASSERT_TRUE(host.Send("m72800")); // 30 s at the usual pace
    EXPECT_EQ(RepliesUntil(host, 'X').back(), "X");
    const std::chrono::duration<double> took = Clock::now() - begun;
    EXPECT_GE(took.count(), 0.3);
    EXPECT_LT(took.count(), 20.0);
}

TEST_F(TwinStage, LogsWhatCameWithItsTime) {
    RunningTwin twin(TESSARO_TWIN, With({"--quiet"}));
    ASSERT_TRUE(twin.IsReady()) << twin.Errors();
    const StageHost host(Link());
    ASSERT_TRUE(host.Send("z") && host.Send("a b\\\r") && host.Send("m-5"));
    ASSERT_TRUE(Eventually([&] { return Logged() == "z a\\x20b\\x5c\\x0d m-5 "; })) << ReadText(LogPath());
    std::ifstream file(LogPath());
    double last = 0.0;
    for (std::string time, command; file >> time >> command; last = std::stod(time))
        EXPECT_GT(std::stod(time), last) << "ms";
    EXPECT_GT(last, 0.0);
}

TEST_F(TwinStage, RemovesItsLinkAtTheEnd) {
    RunningTwin twin(TESSARO_TWIN, With({}));
    ASSERT_TRUE(twin.IsReady()) << twin.Errors();
    const StageHost host(Link());
    ASSERT_TRUE(host.Send("m7000")); // in the middle of a move
    twin.Signal(SIGTERM);
    EXPECT_EQ(twin.ExitStatus(), 0);
    EXPECT_FALSE(IsLinked());
}

TEST_F(TwinStage, TakesThePlaceOfATwinThatWasKilled) {
    {
        RunningTwin killed(TESSARO_TWIN, With({}));
        ASSERT_TRUE(killed.IsReady()) << killed.Errors();
        killed.Signal(SIGKILL);
        killed.ExitStatus();
        ASSERT_TRUE(IsLinked());
    }
    RunningTwin twin(TESSARO_TWIN, With({}));
    ASSERT_TRUE(twin.IsReady()) << twin.Errors();
    EXPECT_EQ(StageHost(Link()).Ask("p"), "800");
}

TEST_F(TwinStage, SaysWhyItCannotBeServed) {
    std::ofstream(Link()) << "precious";
    const ProgramRun taken = RunProgram(TESSARO_TWIN, With({}));
    EXPECT_EQ(taken.exitStatus, 1);
    EXPECT_EQ(taken.errors,
              "tessaro-twin: cannot link the stage's line at '" + Link() + "': something else is there\n");
    EXPECT_EQ(ReadText(Link()), "precious");
    std::filesystem::remove(Link());
    const ProgramRun log = RunProgram(TESSARO_TWIN, With({"--stage-log", "/none/log"}));
    EXPECT_EQ(log.exitStatus, 1);
    EXPECT_EQ(log.errors,
              "tessaro-twin: cannot write the stage's log '/none/log': No such file or directory\n");
    EXPECT_FALSE(IsLinked());
    const ProgramRun beyond = RunProgram(TESSARO_TWIN, With({"--limits", "0:400,0:400,0:1"}));
    EXPECT_EQ(beyond.exitStatus, 2);
}

TEST_F(TwinStage, HasFaultsThatCanBeCleared) {
    RunningTwin twin(TESSARO_TWIN, With({"--fault", "stage-silent"}));
    ASSERT_TRUE(twin.IsReady()) << twin.Errors();
    const StageHost host(Link());
    ASSERT_TRUE(host.Send("p"));
    EXPECT_EQ(host.Receive(300), "");
    EXPECT_EQ(twin.Say("clear stage-silent"), "ok");
    EXPECT_EQ(host.Ask("p"), "800");
    EXPECT_EQ(twin.Say("fault stage-impossible"), "ok");
    EXPECT_NE(host.Ask("p"), "800");
    EXPECT_EQ(twin.Say("clear stage-impossible"), "ok");
    EXPECT_EQ(twin.Say("fault stage-other-axis"), "ok");
    ASSERT_TRUE(host.Send("m800"));
    EXPECT_EQ(host.Receive(), "Y");
    EXPECT_EQ(twin.Say("clear stage-other-axis"), "ok");
    EXPECT_EQ(twin.Say("fault stage-no-arrival"), "ok");
    ASSERT_TRUE(host.Send("m800"));
    EXPECT_EQ(host.Receive(300), "");
    EXPECT_EQ(twin.Say("clear stage-no-arrival"), "ok");
    EXPECT_EQ(twin.Say("fault stage-pieces=2"), "ok");
    EXPECT_EQ(host.Ask("p"), "800");
    EXPECT_EQ(twin.Say("clear stage-pieces"), "ok");
}

TEST_F(TwinStage, RepliesLateWhenTold) {
    RunningTwin twin(TESSARO_TWIN, With({"--fault", "stage-late=400"}));
    ASSERT_TRUE(twin.IsReady()) << twin.Errors();
    const StageHost host(Link());
    const auto begun = Clock::now();
    EXPECT_EQ(host.Ask("p"), "800");
    EXPECT_GE(Clock::now() - begun, std::chrono::milliseconds(400));
}

TEST_F(TwinStage, SendsJunkOnce) {
    RunningTwin twin(TESSARO_TWIN, With({}));
    ASSERT_TRUE(twin.IsReady()) << twin.Errors();
    const StageHost host(Link());
    ASSERT_EQ(host.Ask("p"), "800");
    EXPECT_EQ(twin.Say("fault stage-junk"), "ok");
    std::string junk;
    EXPECT_TRUE(Eventually([&] { return (junk += host.Read()).size() > 20'000; }));
    EXPECT_EQ(twin.Say("clear stage-junk"), "ok");
    host.ReadUntilSilence();
    EXPECT_EQ(host.Ask("p"), "800");
}

TEST_F(TwinStage, MayBeGoneFromTheStart) {
    RunningTwin twin(TESSARO_TWIN, With({"--fault", "stage-gone"}));
    ASSERT_TRUE(twin.IsReady()) << twin.Errors();
    EXPECT_EQ(twin.Output(), "tessaro-twin: camera TWIN01 is ready at 127.0.0.1\n");
    EXPECT_FALSE(IsLinked());
    EXPECT_EQ(twin.Say("clear stage-gone"), "ok");
    EXPECT_EQ(twin.Output(), "tessaro-twin: camera TWIN01 is ready at 127.0.0.1\n" + ReadyLine());
    EXPECT_EQ(StageHost(Link()).Ask("p"), "800");
}

TEST_F(TwinStage, IsThereWithoutACamera) {
    RunningTwin twin(TESSARO_TWIN, With({"--camera-address", "none"}));
    ASSERT_TRUE(twin.IsReady()) << twin.Errors();
    EXPECT_EQ(twin.Output(), ReadyLine());
    EXPECT_EQ(StageHost(Link()).Ask("p"), "800");
    EXPECT_EQ(twin.Say("fault camera-gone"), "error: there is no camera");
    EXPECT_EQ(twin.Say("clear frame-size"), "error: there is no camera");
    EXPECT_EQ(twin.Say("fault stage-silent"), "ok");
}

TEST_F(TwinStage, TellsTheNameOfALineThatTakesThePlaceOfAnother) {
    RunningTwin twin(TESSARO_TWIN, With({"--quiet"}));
    ASSERT_TRUE(twin.IsReady()) << twin.Errors();
    const std::string first = ReadyLine();
    const std::string all = twin.Output();
    EXPECT_TRUE(all.starts_with(first)) << all;
    EXPECT_EQ(twin.Say("fault stage-gone"), "ok");
    EXPECT_EQ(twin.Output(), all);
    EXPECT_EQ(twin.Say("clear stage-gone"), "ok");
    EXPECT_EQ(twin.Output(), all + ReadyLine());
}

TEST_F(TwinStage, GoesAwayAndComesBack) {
    RunningTwin twin(TESSARO_TWIN, With({}));
    ASSERT_TRUE(twin.IsReady()) << twin.Errors();
    const StageHost host(Link());
    EXPECT_EQ(twin.Say("fault stage-gone"), "ok");
    EXPECT_FALSE(IsLinked());
    EXPECT_TRUE(host.IsHungUpOn());
    EXPECT_EQ(twin.Say("clear stage-gone"), "ok");
    EXPECT_EQ(StageHost(Link()).Ask("p"), "800");
    std::filesystem::remove(Link());
    EXPECT_EQ(twin.Say("fault stage-gone"), "ok");
    std::ofstream(Link()) << "precious";
    EXPECT_TRUE(twin.Say("clear stage-gone").starts_with("error: cannot link the stage's line"));
    std::filesystem::remove(Link());
    EXPECT_EQ(twin.Say("clear stage-gone"), "ok");
    EXPECT_EQ(StageHost(Link()).Ask("p"), "800");
}

} // namespace
} // namespace tessaro
