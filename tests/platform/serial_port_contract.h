#pragma once

#include "platform/serial_port.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <set>
#include <string>

// What every SerialPorts must do. Instantiate it with a machine of this shape:
// INSTANTIATE_TYPED_TEST_SUITE_P(Scripted, SerialPortContract, ScriptedSerialMachine);
//   Ports()                 the adapter, a SerialPorts&; the same at every call
//   Name(), MissingName()   a line that can be opened, and one that is not there
//   NowMs()                 the time that passes while the adapter waits
// and of that line's other end, while it is open:
//   SendNow(bytes)          up to 4000 bytes that can be read from now on
//   SendAfter(ms, bytes)    any number of bytes from then on, as fast as they are taken
//   HangUp(), HangUpAfter(ms), ComeBack()   breaks the line; after the last, it can be opened again
//   Taken(count)            the next so many bytes that were written
//   TakeNothing(), TakeAgain()              what is written in between fills what room there is

namespace tessaro {

template<class Machine>
class SerialPortContract : public testing::Test {
protected:
    static constexpr std::uint32_t longMs = 10'000; // far longer than anything takes, on any machine
    static constexpr std::uint32_t manyBytes = 1'000'000;
    static constexpr SerialTimeouts stageTimeouts = {10, 10, 50, 10, 50};
    static constexpr SerialTimeouts patient = {longMs, 0, longMs, 0, longMs};

    struct Outcome {
        bool succeeded = false;
        std::string bytes; // that were read
        std::uint32_t count = 0;
        std::uint64_t lastedMs = 0;
    };

    SerialPorts& Ports() { return m_machine.Ports(); }

    SerialHandle Opened(const SerialTimeouts& timeouts = {}) {
        const SerialHandle line = Ports().Open(m_machine.Name());
        EXPECT_GT(static_cast<std::int64_t>(line), 0);
        EXPECT_TRUE(Ports().SetTimeouts(line, timeouts));
        return line;
    }

    Outcome Read(SerialHandle line, std::size_t size = 10) {
        std::string bytes(size, '?');
        Outcome outcome;
        const std::uint64_t began = m_machine.NowMs();
        outcome.succeeded =
            Ports().Read(line, {reinterpret_cast<std::uint8_t*>(bytes.data()), size}, outcome.count);
        outcome.lastedMs = m_machine.NowMs() - began;
        EXPECT_LE(outcome.count, size);
        outcome.bytes = bytes.substr(0, outcome.count);
        return outcome;
    }

    std::string ReadAll(SerialHandle line, std::size_t size) {
        std::string all;
        while (all.size() < size) {
            const Outcome outcome = Read(line, std::min<std::size_t>(size - all.size(), 4096));
            if (!outcome.succeeded || outcome.bytes.empty())
                break;
            all += outcome.bytes;
        }
        return all;
    }

    Outcome Write(SerialHandle line, const std::string& bytes) {
        Outcome outcome;
        const std::uint64_t began = m_machine.NowMs();
        outcome.succeeded = Ports().Write(
            line, {reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()}, outcome.count);
        outcome.lastedMs = m_machine.NowMs() - began;
        return outcome;
    }

    /// Fills what room there is, and then gives a text 20 ms a byte and 50 ms.
    Outcome FillAndWrite(SerialHandle line, const std::string& text) {
        EXPECT_TRUE(Ports().SetTimeouts(line, {0, 0, 0, 0, 10}));
        while (Write(line, Bytes(manyBytes / 10)).count != 0) {
        }
        EXPECT_TRUE(Ports().SetTimeouts(line, {0, 0, 0, 20, 50}));
        return Write(line, text);
    }

    /// Every byte there is, over and over.
    static std::string Bytes(std::size_t size) {
        std::string bytes;
        for (std::size_t i = 0; i < size; ++i)
            bytes.push_back(static_cast<char>(i + i / 256));
        return bytes;
    }

    void ExpectNoCallPossible(SerialHandle line) {
        SerialSettings settings;
        SerialTimeouts timeouts;
        EXPECT_FALSE(Ports().GetSettings(line, settings));
        EXPECT_FALSE(Ports().SetSettings(line, {9600, 8, 0, 0}));
        EXPECT_FALSE(Ports().SetTimeouts(line, stageTimeouts));
        EXPECT_FALSE(Ports().GetTimeouts(line, timeouts));
        EXPECT_FALSE(Write(line, "z").succeeded);
        EXPECT_FALSE(Read(line).succeeded);
        EXPECT_NE(Ports().LastError(), 0);
        Ports().Close(line);
    }

    Machine m_machine;
};

TYPED_TEST_SUITE_P(SerialPortContract);

TYPED_TEST_P(SerialPortContract, OpensNoLineThatIsNotThere) {
    EXPECT_EQ(this->Ports().Open(this->m_machine.MissingName()), SerialHandle::Invalid);
    EXPECT_NE(this->Ports().LastError(), 0);
}

TYPED_TEST_P(SerialPortContract, OpensALineForItselfAlone) {
    const SerialHandle line = this->Opened();
    EXPECT_EQ(this->Ports().Open(this->m_machine.Name()), SerialHandle::Invalid);
    EXPECT_NE(this->Ports().LastError(), 0);
    this->Ports().Close(line);
    this->Opened();
}

TYPED_TEST_P(SerialPortContract, NeverUsesAHandleAgain) {
    std::set<SerialHandle> handles;
    for (int time = 0; time < 3; ++time) {
        const SerialHandle line = this->Opened();
        EXPECT_TRUE(handles.insert(line).second);
        this->Ports().Close(line);
    }
}

TYPED_TEST_P(SerialPortContract, DoesNothingWithoutAnOpenLine) {
    for (const SerialHandle none : {SerialHandle::None, SerialHandle::Invalid, SerialHandle{4711}})
        this->ExpectNoCallPossible(none);
    const SerialHandle closed = this->Opened();
    this->Ports().Close(closed);
    const SerialHandle line = this->Opened(this->stageTimeouts);
    this->ExpectNoCallPossible(closed);
    EXPECT_TRUE(this->Read(line, 1).succeeded) << "the other line is none of its business";
}

TYPED_TEST_P(SerialPortContract, KeepsTheSettings) {
    const SerialHandle line = this->Opened();
    for (const SerialSettings wanted : {SerialSettings{19200, 8, 0, 2}, SerialSettings{9600, 8, 0, 0}}) {
        ASSERT_TRUE(this->Ports().SetSettings(line, wanted));
        SerialSettings inForce;
        ASSERT_TRUE(this->Ports().GetSettings(line, inForce));
        EXPECT_EQ(inForce, wanted);
    }
}

TYPED_TEST_P(SerialPortContract, KeepsTheTimeoutsUntilItIsClosed) {
    const SerialHandle line = this->Ports().Open(this->m_machine.Name());
    SerialTimeouts timeouts = this->stageTimeouts;
    ASSERT_TRUE(this->Ports().GetTimeouts(line, timeouts));
    EXPECT_EQ(timeouts, SerialTimeouts());
    ASSERT_TRUE(this->Ports().SetTimeouts(line, this->stageTimeouts));
    ASSERT_TRUE(this->Ports().GetTimeouts(line, timeouts));
    EXPECT_EQ(timeouts, this->stageTimeouts);
    this->Ports().Close(line);
    ASSERT_TRUE(this->Ports().GetTimeouts(this->Ports().Open(this->m_machine.Name()), timeouts));
    EXPECT_EQ(timeouts, SerialTimeouts());
}

TYPED_TEST_P(SerialPortContract, WritesEveryByteAsItIs) {
    const SerialHandle line = this->Opened(this->patient);
    const auto outcome = this->Write(line, this->Bytes(1000));
    EXPECT_TRUE(outcome.succeeded);
    EXPECT_EQ(outcome.count, 1000u);
    EXPECT_EQ(this->m_machine.Taken(1000), this->Bytes(1000));
}

TYPED_TEST_P(SerialPortContract, ReadsEveryByteAsItIs) {
    const SerialHandle line = this->Opened(this->patient);
    this->m_machine.SendNow(this->Bytes(1000));
    EXPECT_EQ(this->Read(line, 1000).bytes, this->Bytes(1000));
}

TYPED_TEST_P(SerialPortContract, MovesNothingWhereThereIsNothingToMove) {
    const SerialHandle line = this->Opened(this->patient);
    EXPECT_TRUE(this->Write(line, "").succeeded);
    const auto outcome = this->Read(line, 0);
    EXPECT_TRUE(outcome.succeeded);
    EXPECT_LT(outcome.lastedMs, this->longMs);
}

TYPED_TEST_P(SerialPortContract, TakesWhatIsThereWhenThereAreNoTimeouts) {
    const SerialHandle line = this->Opened();
    const auto silent = this->Read(line);
    EXPECT_TRUE(silent.succeeded);
    EXPECT_EQ(silent.count, 0u);
    this->m_machine.SendNow("P12");
    EXPECT_EQ(this->Read(line).bytes, "P12");
}

TYPED_TEST_P(SerialPortContract, ReadsNoMoreThanThereIsRoomFor) {
    const SerialHandle line = this->Opened(this->patient);
    this->m_machine.SendNow("P1234P5678P");
    const auto full = this->Read(line, 10);
    EXPECT_EQ(full.bytes, "P1234P5678");
    EXPECT_LT(full.lastedMs, this->longMs) << "full, it waits for nothing";
    EXPECT_EQ(this->Read(line, 1).bytes, "P");
}

TYPED_TEST_P(SerialPortContract, GivesASilentLineAllItsTime) {
    const SerialHandle line = this->Opened(this->stageTimeouts);
    const auto outcome = this->Read(line, 10);
    EXPECT_TRUE(outcome.succeeded);
    EXPECT_EQ(outcome.count, 0u);
    EXPECT_GE(outcome.lastedMs, 150u) << "10 bytes of 10 ms, and 50 ms";
    EXPECT_LT(outcome.lastedMs, 2000u);
}

TYPED_TEST_P(SerialPortContract, EndsAReadWhenTheLineFallsSilent) {
    const SerialHandle line = this->Opened({10, 0, this->longMs, 0, 0});
    this->m_machine.SendNow("P1");
    const auto outcome = this->Read(line, 10);
    EXPECT_EQ(outcome.bytes, "P1");
    EXPECT_GE(outcome.lastedMs, 10u);
    EXPECT_LT(outcome.lastedMs, this->longMs);
    this->m_machine.SendNow("23");
    EXPECT_EQ(this->Read(line, 10).bytes, "23") << "what comes after the silence is for the next read";
}

TYPED_TEST_P(SerialPortContract, WaitsForAFirstByteWithoutMindingTheSilence) {
    const SerialHandle line = this->Opened({10, 0, this->longMs, 0, 0});
    this->m_machine.SendAfter(60, "X");
    const auto outcome = this->Read(line, 10);
    EXPECT_EQ(outcome.bytes, "X");
    EXPECT_GE(outcome.lastedMs, 60u);
    EXPECT_LT(outcome.lastedMs, this->longMs);
}

TYPED_TEST_P(SerialPortContract, PutsPiecesTogetherBetweenWhichIsNoSilence) {
    const SerialHandle line = this->Opened(this->patient);
    this->m_machine.SendNow("P12");
    this->m_machine.SendAfter(30, "34567");
    EXPECT_EQ(this->Read(line, 8).bytes, "P1234567");
}

TYPED_TEST_P(SerialPortContract, EndsAReadInItsTimeEvenWithoutSilence) {
    const SerialHandle line = this->Opened({this->longMs, 10, 50, 0, 0});
    this->m_machine.SendNow("P");
    const auto outcome = this->Read(line, 10);
    EXPECT_EQ(outcome.bytes, "P");
    EXPECT_GE(outcome.lastedMs, 150u);
    EXPECT_LT(outcome.lastedMs, this->longMs);
}

TYPED_TEST_P(SerialPortContract, KeepsWhatNobodyHasReadInItsOrder) {
    const SerialHandle line = this->Opened(this->patient);
    this->m_machine.SendNow(this->Bytes(4000));
    EXPECT_TRUE(this->Write(line, "p").succeeded);
    std::string all;
    for (int piece = 0; piece < 400; ++piece)
        all += this->Read(line, 10).bytes;
    EXPECT_EQ(all, this->Bytes(4000));
}

TYPED_TEST_P(SerialPortContract, SurvivesAMegabyteOfJunk) {
    const SerialHandle line = this->Opened(this->patient);
    this->m_machine.SendAfter(0, this->Bytes(this->manyBytes));
    EXPECT_EQ(this->ReadAll(line, this->manyBytes), this->Bytes(this->manyBytes));
}

TYPED_TEST_P(SerialPortContract, DropsWhatDoesNotGoOutInItsTime) {
    const SerialHandle line = this->Opened({0, 0, 0, 0, 60});
    this->m_machine.TakeNothing();
    const auto outcome = this->Write(line, this->Bytes(this->manyBytes));
    EXPECT_TRUE(outcome.succeeded);
    EXPECT_LT(outcome.count, this->manyBytes);
    EXPECT_GE(outcome.lastedMs, 60u);
    EXPECT_LT(outcome.lastedMs, this->longMs);
    this->m_machine.TakeAgain();
    EXPECT_EQ(this->m_machine.Taken(outcome.count), this->Bytes(outcome.count));
    EXPECT_TRUE(this->Ports().SetTimeouts(line, this->patient));
    EXPECT_EQ(this->Write(line, "z").count, 1u);
    EXPECT_EQ(this->m_machine.Taken(1), "z") << "the rest does not come later";
}

TYPED_TEST_P(SerialPortContract, GivesAWriteTimeForEachByte) {
    const SerialHandle line = this->Opened();
    this->m_machine.TakeNothing();
    auto outcome = this->FillAndWrite(line, "M1600");
    while (outcome.succeeded && outcome.count != 0) // a device may make room once more
        outcome = this->FillAndWrite(line, "M1600");
    EXPECT_TRUE(outcome.succeeded);
    EXPECT_EQ(outcome.count, 0u);
    EXPECT_GE(outcome.lastedMs, 150u) << "5 bytes of 20 ms, and 50 ms";
    EXPECT_LT(outcome.lastedMs, 2000u);
}

TYPED_TEST_P(SerialPortContract, FailsOnALineThatHungUp) {
    const SerialHandle line = this->Opened(this->patient);
    this->m_machine.HangUp();
    for (int time = 0; time < 3; ++time) {
        const auto write = this->Write(line, "z");
        EXPECT_FALSE(write.succeeded);
        EXPECT_EQ(write.count, 0u);
        EXPECT_NE(this->Ports().LastError(), 0);
        const auto read = this->Read(line);
        EXPECT_FALSE(read.succeeded);
        EXPECT_EQ(read.count, 0u);
        EXPECT_LT(write.lastedMs + read.lastedMs, this->longMs) << "at once";
    }
    SerialSettings settings;
    EXPECT_FALSE(this->Ports().GetSettings(line, settings));
    EXPECT_FALSE(this->Ports().SetSettings(line, {9600, 8, 0, 0}));
}

TYPED_TEST_P(SerialPortContract, EndsAReadWhenTheLineHangsUp) {
    const SerialHandle line = this->Opened(this->patient);
    this->m_machine.HangUpAfter(50);
    const auto outcome = this->Read(line);
    EXPECT_FALSE(outcome.succeeded);
    EXPECT_EQ(outcome.count, 0u);
    EXPECT_GE(outcome.lastedMs, 50u);
    EXPECT_LT(outcome.lastedMs, this->longMs);
}

TYPED_TEST_P(SerialPortContract, HandsOverWhatCameBeforeTheLineHungUp) {
    const SerialHandle line = this->Opened(this->patient);
    this->m_machine.SendAfter(10, "P12");
    this->m_machine.HangUpAfter(400); // long after: a device may lose what nobody has taken by then
    const auto outcome = this->Read(line);
    EXPECT_TRUE(outcome.succeeded);
    EXPECT_EQ(outcome.bytes, "P12");
    EXPECT_FALSE(this->Read(line).succeeded);
    EXPECT_NE(this->Ports().LastError(), 0);
}

TYPED_TEST_P(SerialPortContract, OpensALineAgainThatHungUp) {
    const SerialHandle broken = this->Opened(this->patient);
    this->m_machine.HangUp();
    EXPECT_FALSE(this->Write(broken, "z").succeeded);
    this->m_machine.ComeBack();
    this->Ports().Close(broken);
    const SerialHandle line = this->Opened(this->patient);
    EXPECT_NE(line, broken);
    EXPECT_TRUE(this->Write(line, "z").succeeded);
    EXPECT_EQ(this->m_machine.Taken(1), "z");
    this->m_machine.SendNow("X");
    EXPECT_EQ(this->Read(line, 1).bytes, "X");
}

REGISTER_TYPED_TEST_SUITE_P(SerialPortContract, OpensNoLineThatIsNotThere, OpensALineForItselfAlone,
                            NeverUsesAHandleAgain, DoesNothingWithoutAnOpenLine, KeepsTheSettings,
                            KeepsTheTimeoutsUntilItIsClosed, WritesEveryByteAsItIs, ReadsEveryByteAsItIs,
                            MovesNothingWhereThereIsNothingToMove, TakesWhatIsThereWhenThereAreNoTimeouts,
                            ReadsNoMoreThanThereIsRoomFor, GivesASilentLineAllItsTime,
                            EndsAReadWhenTheLineFallsSilent, WaitsForAFirstByteWithoutMindingTheSilence,
                            PutsPiecesTogetherBetweenWhichIsNoSilence, EndsAReadInItsTimeEvenWithoutSilence,
                            KeepsWhatNobodyHasReadInItsOrder, SurvivesAMegabyteOfJunk,
                            DropsWhatDoesNotGoOutInItsTime, GivesAWriteTimeForEachByte,
                            FailsOnALineThatHungUp, EndsAReadWhenTheLineHangsUp,
                            HandsOverWhatCameBeforeTheLineHungUp, OpensALineAgainThatHungUp);

} // namespace tessaro
