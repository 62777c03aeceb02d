#include "tests/stage/model_controller.h"
#include "tests/stage/stage_fixture.h"

#include <algorithm>
#include <cmath>
#include <functional>

namespace tessaro {
namespace {

using Reply = ScriptedSerialPorts::Reply;

/// Passes everything on, and notes for how long at most nobody asked for messages.
class WatchedMessages : public MessageLoop {
public:
    WatchedMessages(MessageLoop& messages, const VirtualClock& clock)
        : m_messages(messages), m_clock(clock) {}

    bool TakeMessage(Message& message, std::uint32_t milliseconds) override {
        longestGap = std::max(longestGap, m_clock.now - m_lastAsked);
        const bool taken = m_messages.TakeMessage(message, milliseconds);
        m_lastAsked = m_clock.now;
        return taken;
    }
    bool WaitMessage(Message& message) override { return m_messages.WaitMessage(message); }
    void Dispatch(const Message& message) override { m_messages.Dispatch(message); }
    void SetTimer(WindowHandle window, std::uint32_t id, std::uint32_t milliseconds) override {
        m_messages.SetTimer(window, id, milliseconds);
    }
    void KillTimer(WindowHandle window, std::uint32_t id) override { m_messages.KillTimer(window, id); }
    void PostQuit(int exitCode) override { m_messages.PostQuit(exitCode); }
    bool HasQuit() const override { return m_messages.HasQuit(); }
    int ExitCode() const override { return m_messages.ExitCode(); }

    std::uint64_t longestGap = 0; // ms

private:
    MessageLoop& m_messages;
    const VirtualClock& m_clock;
    std::uint64_t m_lastAsked = 0;
};

class ControllerFaults : public StageFixture {
protected:
    ControllerFaults() { BeOnline(); }

    bool Arrived() const { return !Progress().empty() && Progress().back().starts_with("arrived"); }

    WatchedMessages messages{ui.messages, ui.clock};
    MessagePump watchedPump{ui.clock, messages, ui.boxes, liveView, status, scan, stage, windows};
    StageMotion watchedMotion{stage, watchedPump, status, ui.clock};
};

/// How a wait may end.
enum class Arrival { Never, AtTheTarget, Anywhere };

/// What goes wrong with the reply to a write.
struct Fault {
    std::string name;
    std::function<Reply(Reply)> apply;
    Arrival arrival = Arrival::Never;
    std::uint64_t hangUpAt = 0;
};

Fault Changed(std::string name, std::function<void(std::string&)> change, Arrival arrival = Arrival::Never) {
    return {std::move(name),
            [change = std::move(change)](Reply reply) {
                for (ScriptedSerialPorts::Piece& piece : reply)
                    change(piece.bytes);
                return reply;
            },
            arrival};
}

Fault Delayed(std::uint64_t ms, Arrival arrival) {
    return {"LateBy" + std::to_string(ms),
            [ms](Reply reply) {
                for (ScriptedSerialPorts::Piece& piece : reply)
                    piece.afterMs += ms;
                return reply;
            },
            arrival};
}

/// The rest of every reply comes later, beyond the silence that ends a read.
Fault CutAt(std::size_t place, std::uint64_t laterMs, Arrival arrival = Arrival::AtTheTarget) {
    return {"CutAt" + std::to_string(place) + "ComesAfter" + std::to_string(laterMs),
            [=](Reply reply) {
                Reply pieces;
                for (const ScriptedSerialPorts::Piece& piece : reply) {
                    const std::size_t cut = std::min(place, piece.bytes.size());
                    pieces.push_back({piece.afterMs, piece.bytes.substr(0, cut)});
                    pieces.push_back({piece.afterMs + laterMs, piece.bytes.substr(cut)});
                }
                return pieces;
            },
            arrival};
}

Fault HangUpAt(std::uint64_t ms) {
    return {"HangUpAt" + std::to_string(ms), [](Reply reply) { return reply; }, Arrival::AtTheTarget, ms};
}

void NextLetter(std::string& bytes) {
    constexpr std::string_view from = "pPQXYZ";
    constexpr std::string_view to = "PQpYZX";
    if (const std::size_t letter = from.find(bytes[0]); letter != std::string_view::npos)
        bytes[0] = to[letter];
}

std::vector<Fault> Faults() {
    std::vector<Fault> faults = {
        {"Silence", [](Reply) { return Reply{}; }},
        Changed("NoArrival",
                [](std::string& bytes) { bytes = bytes[0] >= 'X' && bytes[0] <= 'Z' ? "" : bytes; }),
        Changed("Garbled",
                [](std::string& bytes) {
                    for (char& byte : bytes)
                        byte = static_cast<char>(byte ^ 0x55);
                }),
        Changed("OtherAxis", NextLetter, Arrival::AtTheTarget),
        Changed("NulsBefore", [](std::string& bytes) { bytes.insert(0, 1000, '\0'); }),
        Changed(
            "JunkBehind", [](std::string& bytes) { bytes.append(997, '~'); }, Arrival::AtTheTarget),
        Changed(
            "Impossible",
            [](std::string& bytes) {
                if (bytes.find_first_of("0123456789") != std::string::npos)
                    bytes = bytes.substr(0, bytes.find_first_of("-0123456789")) +
                            Terminated("99999999999999999999");
            },
            Arrival::AtTheTarget),
        {"JunkForEveryReply", [](Reply) {
             return Reply{{3, std::string(5000, '\xA5')}};
         }}};
    for (const std::uint64_t ms : {40U, 160U, 700U})
        faults.push_back(Delayed(ms, Arrival::AtTheTarget));
    for (std::size_t place = 0; place <= 6; ++place) {
        // Behind a letter that comes alone, the number of the move command is still in the buffer.
        faults.push_back(CutAt(place, 15, place == 1 ? Arrival::Anywhere : Arrival::AtTheTarget));
        faults.push_back(CutAt(place, 3));
    }
    for (const std::uint64_t ms : {1U, 57U, 200U, 333U, 600U})
        faults.push_back(HangUpAt(ms));
    return faults;
}

class EachControllerFault : public ControllerFaults, public testing::WithParamInterface<Fault> {
protected:
    EachControllerFault() {
        line.TakeAnyWrite(
            [this](const std::string& written) { return GetParam().apply(controller.Answer(written)); });
        if (GetParam().hangUpAt > 0)
            line.HangUpAt(GetParam().hangUpAt);
    }

    ModelController controller{ui.clock};
};

TEST_P(EachControllerFault, LeavesTheUserInterfaceWithoutAPumpForNoMoreThan200Milliseconds) {
    watchedMotion.MoveXY(100.0, 300.0);
    watchedMotion.MoveAxisTo(axisZ, 50.0);
    watchedMotion.MoveAxisBy(axisX, -80.0);
    EXPECT_LE(messages.longestGap, 200U);
}

TEST_P(EachControllerFault, EndsTheWaitAndKeepsPositionsThatAreNumbers) {
    watchedMotion.MoveAxisTo(axisY, 300.0); // 480 steps
    EXPECT_LT(ui.clock.now, 10'000U);
    for (const double um : stage.position)
        EXPECT_TRUE(std::isfinite(um));
    if (GetParam().arrival == Arrival::Never) {
        EXPECT_FALSE(Arrived());
    } else if (GetParam().arrival == Arrival::AtTheTarget && Arrived()) {
        EXPECT_EQ(controller.Steps(1), 480);
    }
}

INSTANTIATE_TEST_SUITE_P(Faults, EachControllerFault, testing::ValuesIn(Faults()),
                         [](const auto& fault) { return fault.param.name; });

TEST_F(ControllerFaults, AMegabyteOfJunkIsNoArrivalAndKeepsNobodyWaiting) {
    line.TakeAnyWrite();
    line.Arrive(20, std::string(1U << 20U, '\xA5'));
    watchedMotion.MoveAxisTo(axisY, 300.0);
    EXPECT_FALSE(Arrived());
    EXPECT_LE(messages.longestGap, 150U);
    EXPECT_LT(ui.clock.now, 2'500U) << "although most of it is still to be read";
}

TEST_F(ControllerFaults, WithoutAnyTheMoveArrives) {
    ModelController controller{ui.clock};
    line.TakeAnyWrite([&](const std::string& written) { return controller.Answer(written); });
    watchedMotion.MoveAxisTo(axisY, 300.0);
    EXPECT_TRUE(Arrived());
    EXPECT_EQ(stage.position[1], 300.0);
    EXPECT_LE(messages.longestGap, 100U);
}

// A read and a query stand between two pumps: where both use up their time, it is 300 ms.

TEST_F(ControllerFaults, JunkAtTheEndOfAReadAndAnUnansweredQueryTake300Milliseconds) {
    line.Arrive(150, "?");
    line.Expect("p");
    line.Expect("p");
    watchedMotion.WaitForArrival(axisX, 1000.0, 0);
    EXPECT_EQ(messages.longestGap, 300U);
}

TEST_F(ControllerFaults, ALateArrivalAndAnUnansweredQueryTake300Milliseconds) {
    line.Arrive(150, "X");
    line.Expect("p");
    watchedMotion.WaitForArrival(axisX, 1000.0, 0);
    EXPECT_EQ(messages.longestGap, 300U);
}

TEST_F(ControllerFaults, ALineThatTakesNoBytesCostsTheirTimeForEachText) {
    line.TakeAnyWrite();
    line.room = 0;
    watchedMotion.MoveXY(1000.0, 100.0);
    EXPECT_EQ(messages.longestGap, 70U + 150U) << "the query at the end; both moves take 100 and 110 ms";
}

/// What the rules of a wait take for an arrival although the axis is elsewhere.
struct FalseArrival {
    std::string name;
    double target; // um, of X
    std::vector<std::pair<std::uint64_t, std::string>> arrivals;
    Texts answers;         // to the queries of X; "" is silence
    std::string sent = {}; // the command before the wait
    int unreadable = 0;    // the read that fails, if any
};

class StageFalseArrival : public ControllerFaults, public testing::WithParamInterface<FalseArrival> {};

TEST_P(StageFalseArrival, EndsTheWait) {
    for (const auto& [at, bytes] : GetParam().arrivals)
        line.Arrive(at, bytes);
    if (!GetParam().sent.empty()) {
        line.Expect(GetParam().sent);
        stage.SendCommand(GetParam().sent);
    }
    if (GetParam().unreadable > 0)
        line.FailAt("Read", GetParam().unreadable);
    for (const std::string& answer : GetParam().answers)
        line.Expect("p", answer.empty() ? Reply{} : Answered(answer));
    motion.WaitForArrival(axisX, GetParam().target, 0);
    EXPECT_TRUE(Arrived());
}

INSTANTIATE_TEST_SUITE_P(
    Rules, StageFalseArrival,
    testing::Values(
        FalseArrival{"ArrivalOfAnotherAxis", 1000.0, {{20, Terminated("Y")}}, {"80"}},
        FalseArrival{"LateArrivalOfAnEarlierMove", 1000.0, {{12, Terminated("X")}}, {"80"}},
        FalseArrival{"GarbledByteThatIsAnArrivalLetter", 1000.0, {{20, "Z~~"}}, {"80"}},
        FalseArrival{"AnotherAxisAtTheSameNumber", 1000.0, {{20, Terminated("P1600")}}, {"80"}},
        FalseArrival{"CutProgressCompletedByOlderBytes",
                     1062.5,
                     {{20, Terminated("p1500")}, {60, "p17"}, {90, Terminated("2")}},
                     {"172"}},
        FalseArrival{
            "CutProgressThatIsTheTargetItself", 10.0, {{20, "p16"}, {40, Terminated("00")}}, {"800"}},
        FalseArrival{"LateReplyToAnEarlierQuery", 1000.0, {{20, Terminated("1600")}}, {"", ""}},
        FalseArrival{"JunkAtRestBesideTheTarget", 1000.0, {{20, "?"}}, {"1599", "1599"}},
        FalseArrival{
            "JunkTwiceWithinTwoMicrometres", 1000.0, {{20, "?"}, {120, "?"}}, {"1597", "1597", "1597"}},
        FalseArrival{"JunkAndAQueryThatCannotBeRead", 0.625, {{20, "?"}}, {"80", "80"}, "", 2}),
    [](const auto& rule) { return rule.param.name; });

} // namespace
} // namespace tessaro
