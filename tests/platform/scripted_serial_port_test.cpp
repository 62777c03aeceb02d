#include "platform/fake/scripted_serial_port.h"

#include <gtest/gtest.h>

#include <array>
#include <optional>

namespace tessaro {
namespace {

using Texts = std::vector<std::string>;

constexpr SerialTimeouts usual = {10, 10, 50, 10, 50};

/// A scripted line whose breaches are collected.
class ScriptedSerialPortTest : public testing::Test {
protected:
    ScriptedSerialPortTest() { script->SetTimeouts(line, usual); }

    bool Write(const std::string& text) {
        const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
        return script->Write(line, {bytes, text.size()}, written);
    }

    /// What one read of at most 10 bytes brings; nothing when it fails.
    std::optional<std::string> Read() {
        std::array<std::uint8_t, 10> bytes = {};
        std::uint32_t count = 0;
        if (!script->Read(line, bytes, count))
            return std::nullopt;
        return std::string(bytes.begin(), bytes.begin() + count);
    }

    VirtualClock clock;
    Texts breaches;
    std::optional<ScriptedSerialPorts> script{
        std::in_place, clock, [this](const std::string& breach) { breaches.push_back(breach); }};
    SerialHandle line = script->Open("line 3");
    std::uint32_t written = 0;
};

TEST_F(ScriptedSerialPortTest, IsContentWithAFinishedScript) {
    script->Expect("p", {{5, "16"}, {12, "00"}});
    script->FailAt("Read", 2);
    EXPECT_TRUE(Write({"p", 2}));
    EXPECT_EQ(Read(), "1600");
    EXPECT_EQ(Read(), std::nullopt);
    script.reset();
    EXPECT_EQ(breaches, Texts{});
}

TEST_F(ScriptedSerialPortTest, MindsWhatTheScriptHasLeft) {
    script->Expect("p");
    script->FailAt("Write");
    script.reset();
    EXPECT_EQ(breaches, (Texts{"1 writes of the line's script are left", "never called: Write, time 1"}));
}

TEST_F(ScriptedSerialPortTest, MindsAWriteThatTheScriptDoesNotKnow) {
    script->Expect("p");
    Write({"P", 2});
    EXPECT_EQ(breaches.size(), 1U);
    EXPECT_EQ(script->WritesLeft(), 1U);
}

TEST_F(ScriptedSerialPortTest, EndsAReadAfterSilenceOrWhenTheTimeIsUp) {
    EXPECT_EQ(Read(), "");
    EXPECT_EQ(clock.now, 150U);
    script->Arrive(200, "a");
    script->Arrive(209, "b");
    script->Arrive(219, "c");
    EXPECT_EQ(Read(), "ab") << "10 ms of silence before the last";
    EXPECT_EQ(clock.now, 219U);
    EXPECT_EQ(Read(), "c");
    for (std::uint64_t at = 300; at < 400; at += 30)
        script->Arrive(at, "d");
    clock.now = 160;
    EXPECT_EQ(Read(), "d") << "came 140 ms later";
    EXPECT_EQ(clock.now, 310U);
}

TEST_F(ScriptedSerialPortTest, TakesNoMoreThanThereIsRoomFor) {
    script->Arrive(0, "0123456789ab");
    EXPECT_EQ(Read(), "0123456789");
    EXPECT_EQ(clock.now, 0U);
    EXPECT_EQ(Read(), "ab");
    EXPECT_EQ(clock.now, 10U);
}

TEST_F(ScriptedSerialPortTest, BringsWhatCameBeforeItHangsUp) {
    script->Arrive(20, "X");
    script->Arrive(60, "lost");
    script->HangUpAt(25);
    EXPECT_EQ(Read(), "X");
    EXPECT_EQ(clock.now, 25U);
    EXPECT_EQ(Read(), std::nullopt);
    EXPECT_FALSE(Write("n"));
    EXPECT_EQ(script->LastError(), ScriptedSerialPorts::brokenError);
}

TEST_F(ScriptedSerialPortTest, HangsUpAfterSoManyWrites) {
    script->TakeAnyWrite();
    script->HangUpAfterWrites(2);
    EXPECT_TRUE(Write("n"));
    EXPECT_TRUE(Write("N"));
    EXPECT_FALSE(Write("O"));
    EXPECT_EQ(script->writes, (Texts{"n", "N"}));
}

TEST_F(ScriptedSerialPortTest, DropsWhatDoesNotGoOutInTime) {
    script->TakeAnyWrite();
    script->room = 3;
    EXPECT_TRUE(Write("M1600"));
    EXPECT_EQ(written, 3U);
    EXPECT_EQ(clock.now, 100U);
}

TEST_F(ScriptedSerialPortTest, OpensALineOnceAndOnlyWhereItIs) {
    EXPECT_EQ(script->Open("line 3"), SerialHandle::Invalid);
    EXPECT_EQ(script->LastError(), ScriptedSerialPorts::inUseError);
    script->Close(line);
    EXPECT_FALSE(Write("n"));
    EXPECT_EQ(script->LastError(), ScriptedSerialPorts::notOpenError);
    script->present = false;
    EXPECT_EQ(script->Open("line 3"), SerialHandle::Invalid);
    EXPECT_EQ(script->LastError(), ScriptedSerialPorts::missingError);
    script->present = true;
    EXPECT_NE(script->Open("line 4"), line);
}

TEST_F(ScriptedSerialPortTest, RemembersWhatItWasTold) {
    script->SetSettings(line, {9600, 8, 0, 0});
    Read();
    EXPECT_EQ(script->calls,
              (Texts{"Open line 3", "SetTimeouts 10 10 50 10 50", "SetSettings 9600 8 0 0", "Read 10"}));
}

} // namespace
} // namespace tessaro
