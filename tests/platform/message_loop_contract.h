#pragma once

#include "platform/user_interface.h"
#include "tests/platform/recording_procedures.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

// What every MessageLoop must do. Instantiate it for each machine:
// INSTANTIATE_TYPED_TEST_SUITE_P(Qt, MessageLoopContract, QtMachine);

namespace tessaro {

template<class Machine>
class MessageLoopContract : public testing::Test {
protected:
    MessageLoopContract() {
        m_machine.ui.windows.RegisterWindowClass({"contract", &m_procedure});
        m_window = MakeWindow();
        m_procedure.messages.clear();
    }

    MessageLoop& Loop() { return m_machine.ui.messages; }
    std::uint64_t Now() { return m_machine.ui.clock.TickMilliseconds(); }
    WindowHandle MakeWindow() {
        return m_machine.ui.windows.MakeWindow({"contract", "Contract", {}, 0, 0, 300, 200});
    }

    void PostKey(std::uint32_t code) { m_machine.Post({m_window, MessageKind::KeyDown, code}); }

    /// Exact in virtual time. A machine with real time may be late, since others share it, never early.
    void ExpectLength(std::uint64_t length, std::uint64_t wanted) {
        if (Machine::virtualTime) {
            EXPECT_EQ(length, wanted);
            return;
        }
        EXPECT_GE(length + 1, wanted); // the clock counts whole milliseconds
        EXPECT_LE(length, wanted + lateness);
    }

    /// Parameters of the next messages, as many as come within the time.
    std::vector<std::uint32_t> TakeFor(std::uint64_t milliseconds) {
        std::vector<std::uint32_t> parameters;
        const std::uint64_t end = Now() + milliseconds;
        Message message;
        while (Now() < end && Loop().TakeMessage(message, static_cast<std::uint32_t>(end - Now())))
            parameters.push_back(message.parameter);
        return parameters;
    }

    static constexpr std::uint64_t lateness = 60;

    Machine m_machine;
    RecordingWindowProcedure m_procedure;
    WindowHandle m_window = WindowHandle::None;
};

TYPED_TEST_SUITE_P(MessageLoopContract);

TYPED_TEST_P(MessageLoopContract, GivesMessagesInTheOrderInWhichTheyCame) {
    for (std::uint32_t i = 1; i <= 5; ++i)
        this->PostKey(i);
    for (std::uint32_t i = 1; i <= 5; ++i) {
        Message message;
        ASSERT_TRUE(this->Loop().TakeMessage(message, 0));
        EXPECT_EQ(message.parameter, i);
        EXPECT_EQ(message.window, this->m_window);
        EXPECT_EQ(message.kind, MessageKind::KeyDown);
    }
    Message none;
    EXPECT_FALSE(this->Loop().TakeMessage(none, 0));
}

TYPED_TEST_P(MessageLoopContract, TakesWithoutWaitingWhenToldZero) {
    const std::uint64_t start = this->Now();
    Message message;
    EXPECT_FALSE(this->Loop().TakeMessage(message, 0));
    this->ExpectLength(this->Now() - start, 0);
}

TYPED_TEST_P(MessageLoopContract, WaitsAsLongAsItIsToldWhenNothingComes) {
    for (const std::uint32_t length : {1U, 5U, 40U}) {
        const std::uint64_t start = this->Now();
        Message message;
        EXPECT_FALSE(this->Loop().TakeMessage(message, length));
        this->ExpectLength(this->Now() - start, length);
    }
}

TYPED_TEST_P(MessageLoopContract, EndsAWaitWithTheFirstMessage) {
    this->Loop().SetTimer(this->m_window, 7, 20);
    const std::uint64_t start = this->Now();
    Message message;
    ASSERT_TRUE(this->Loop().TakeMessage(message, 60'000));
    this->ExpectLength(this->Now() - start, 20);
    EXPECT_EQ(message.kind, MessageKind::Timer);
    EXPECT_EQ(message.window, this->m_window);
    EXPECT_EQ(message.parameter, 7U);
}

TYPED_TEST_P(MessageLoopContract, DispatchesToTheWindowThatAMessageIsFor) {
    const WindowHandle other = this->MakeWindow();
    this->m_procedure.messages.clear();
    this->PostKey(key::up);
    Message message;
    ASSERT_TRUE(this->Loop().TakeMessage(message, 0));
    EXPECT_TRUE(this->m_procedure.messages.empty()) << "taking alone must not dispatch";
    this->Loop().Dispatch(message);
    ASSERT_EQ(this->m_procedure.messages.size(), 1U);
    EXPECT_EQ(this->m_procedure.messages[0].window, this->m_window);
    EXPECT_NE(this->m_procedure.messages[0].window, other);
    EXPECT_EQ(this->m_procedure.messages[0].parameter, key::up);
}

TYPED_TEST_P(MessageLoopContract, DispatchesNothingToAWindowThatIsGone) {
    this->PostKey(key::up);
    Message message;
    ASSERT_TRUE(this->Loop().TakeMessage(message, 0));
    this->m_machine.ui.windows.Destroy(this->m_window);
    this->m_procedure.messages.clear();
    this->Loop().Dispatch(message);
    EXPECT_TRUE(this->m_procedure.messages.empty());
}

TYPED_TEST_P(MessageLoopContract, ForgetsWaitingMessagesAndTimersOfAWindowThatGoes) {
    this->PostKey(key::up);
    this->Loop().SetTimer(this->m_window, 1, 5);
    this->m_machine.ui.windows.Destroy(this->m_window);
    EXPECT_TRUE(this->TakeFor(30).empty());
}

TYPED_TEST_P(MessageLoopContract, SetsNoTimerOfAWindowThatIsGone) {
    this->m_machine.ui.windows.Destroy(this->m_window);
    this->Loop().SetTimer(this->m_window, 1, 5);
    EXPECT_TRUE(this->TakeFor(30).empty());
}

TYPED_TEST_P(MessageLoopContract, DestroysAWindowByACloseThatItsProcedureLeavesAlone) {
    this->m_machine.Post({this->m_window, MessageKind::Close});
    Message message;
    ASSERT_TRUE(this->Loop().TakeMessage(message, 0));
    this->Loop().Dispatch(message);
    EXPECT_EQ(this->m_procedure.Count(MessageKind::Close), 1U);
    EXPECT_EQ(this->m_procedure.Count(MessageKind::Destroy), 1U);
}

TYPED_TEST_P(MessageLoopContract, TicksOnceAPeriodFromOnePeriodOn) {
    const std::uint64_t start = this->Now();
    this->Loop().SetTimer(this->m_window, 1, 30);
    for (std::uint64_t tick = 1; tick <= 3; ++tick) {
        Message message;
        ASSERT_TRUE(this->Loop().WaitMessage(message));
        EXPECT_EQ(message.kind, MessageKind::Timer);
        this->ExpectLength(this->Now() - start, tick * 30);
    }
}

TYPED_TEST_P(MessageLoopContract, StartsATimerAnewWhenItIsSetAgain) {
    this->Loop().SetTimer(this->m_window, 1, 40);
    this->m_machine.PassTime(25);
    const std::uint64_t start = this->Now();
    this->Loop().SetTimer(this->m_window, 1, 40);
    Message message;
    ASSERT_TRUE(this->Loop().WaitMessage(message));
    this->ExpectLength(this->Now() - start, 40);
}

TYPED_TEST_P(MessageLoopContract, LosesAWaitingTickWhenATimerIsSetAgain) {
    this->Loop().SetTimer(this->m_window, 1, 10);
    this->m_machine.PassTime(15);
    this->Loop().SetTimer(this->m_window, 1, 60'000);
    Message message;
    EXPECT_FALSE(this->Loop().TakeMessage(message, 0));
}

TYPED_TEST_P(MessageLoopContract, TakesNoTickOfATimerThatWasKilledNotEvenAWaitingOne) {
    this->Loop().SetTimer(this->m_window, 1, 10);
    this->m_machine.PassTime(15);
    this->Loop().KillTimer(this->m_window, 1);
    EXPECT_TRUE(this->TakeFor(30).empty());
    this->Loop().KillTimer(this->m_window, 1); // once more does nothing
}

TYPED_TEST_P(MessageLoopContract, KillsOneTimerOfSeveral) {
    const WindowHandle other = this->MakeWindow();
    this->Loop().SetTimer(this->m_window, 1, 10);
    this->Loop().SetTimer(this->m_window, 2, 10);
    this->Loop().SetTimer(other, 1, 10);
    this->m_machine.PassTime(15);
    this->Loop().KillTimer(this->m_window, 1);
    bool second = false;
    bool others = false;
    for (int i = 0; i < 2; ++i) {
        Message message;
        ASSERT_TRUE(this->Loop().TakeMessage(message, 1000));
        EXPECT_FALSE(message.window == this->m_window && message.parameter == 1);
        second = second || (message.window == this->m_window && message.parameter == 2);
        others = others || message.window == other;
    }
    EXPECT_TRUE(second);
    EXPECT_TRUE(others);
}

TYPED_TEST_P(MessageLoopContract, DoesNotDoubleTicksThatNobodyTook) {
    this->Loop().SetTimer(this->m_window, 3, 10);
    this->m_machine.PassTime(75);
    this->Loop().SetTimer(this->m_window, 4, 60'000);
    std::vector<std::uint32_t> ticks;
    Message message;
    // The next tick is not due at once.
    while (this->Loop().TakeMessage(message, 0))
        ticks.push_back(message.parameter);
    EXPECT_LE(ticks.size(), TypeParam::virtualTime ? 1U : 2U);
    EXPECT_GE(ticks.size(), 1U);
}

TYPED_TEST_P(MessageLoopContract, GivesWhatIsLeftBeforeItQuits) {
    EXPECT_EQ(this->Loop().ExitCode(), 0);
    EXPECT_FALSE(this->Loop().HasQuit());
    this->PostKey(1);
    this->PostKey(2);
    this->Loop().PostQuit(9);
    EXPECT_TRUE(this->Loop().HasQuit());
    EXPECT_EQ(this->Loop().ExitCode(), 9);
    Message message;
    ASSERT_TRUE(this->Loop().WaitMessage(message));
    EXPECT_EQ(message.parameter, 1U);
    ASSERT_TRUE(this->Loop().WaitMessage(message));
    EXPECT_EQ(message.parameter, 2U);
    EXPECT_FALSE(this->Loop().WaitMessage(message));
    EXPECT_FALSE(this->Loop().WaitMessage(message));
}

TYPED_TEST_P(MessageLoopContract, StillTakesMessagesAfterQuitting) {
    this->Loop().PostQuit(0);
    this->PostKey(1);
    Message message;
    EXPECT_TRUE(this->Loop().TakeMessage(message, 0));
    const std::uint64_t start = this->Now();
    EXPECT_FALSE(this->Loop().TakeMessage(message, 20));
    this->ExpectLength(this->Now() - start, 20);
}

TYPED_TEST_P(MessageLoopContract, EndsAWaitWhenAMessageItDispatchesQuits) {
    this->m_procedure.answer = [this](const Message& message) {
        if (message.kind == MessageKind::KeyDown)
            this->Loop().PostQuit(3);
        return true;
    };
    this->PostKey(1);
    Message message;
    int dispatched = 0;
    while (this->Loop().WaitMessage(message)) {
        this->Loop().Dispatch(message);
        ++dispatched;
    }
    EXPECT_EQ(dispatched, 1);
    EXPECT_EQ(this->Loop().ExitCode(), 3);
}

REGISTER_TYPED_TEST_SUITE_P(MessageLoopContract, GivesMessagesInTheOrderInWhichTheyCame,
                            TakesWithoutWaitingWhenToldZero, WaitsAsLongAsItIsToldWhenNothingComes,
                            EndsAWaitWithTheFirstMessage, DispatchesToTheWindowThatAMessageIsFor,
                            DispatchesNothingToAWindowThatIsGone,
                            ForgetsWaitingMessagesAndTimersOfAWindowThatGoes, SetsNoTimerOfAWindowThatIsGone,
                            DestroysAWindowByACloseThatItsProcedureLeavesAlone,
                            TicksOnceAPeriodFromOnePeriodOn, StartsATimerAnewWhenItIsSetAgain,
                            LosesAWaitingTickWhenATimerIsSetAgain,
                            TakesNoTickOfATimerThatWasKilledNotEvenAWaitingOne, KillsOneTimerOfSeveral,
                            DoesNotDoubleTicksThatNobodyTook, GivesWhatIsLeftBeforeItQuits,
                            StillTakesMessagesAfterQuitting, EndsAWaitWhenAMessageItDispatchesQuits);

} // namespace tessaro
