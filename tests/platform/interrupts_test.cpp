#include "platform/posix/interrupts.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>

namespace tessaro {
namespace {

constexpr int noted = 0;
constexpr int notNoted = 1;

/// In a process of its own.
[[noreturn]] void HearOne(int signal) {
    HearInterrupts();
    const bool before = Interrupted();
    std::raise(signal);
    std::_Exit(!before && Interrupted() ? noted : notNoted);
}

[[noreturn]] void HearTwo(int first, int second) {
    HearInterrupts();
    std::raise(first);
    std::raise(second);
    std::_Exit(noted);
}

TEST(Interrupts, AreNoted) {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
        EXPECT_EXIT(HearOne(signal), testing::ExitedWithCode(noted), "") << signal;
}

TEST(Interrupts, EndTheProgramAtTheSecondWhicheverItIs) {
    EXPECT_EXIT(HearTwo(SIGINT, SIGINT), testing::KilledBySignal(SIGINT), "");
    EXPECT_EXIT(HearTwo(SIGINT, SIGTERM), testing::KilledBySignal(SIGTERM), "");
    EXPECT_EXIT(HearTwo(SIGTERM, SIGINT), testing::KilledBySignal(SIGINT), "");
}

TEST(Interrupts, LeaveTheLostTerminalIgnoredThatTheCallerIgnores) {
    const auto lose = [] {
        std::signal(SIGHUP, SIG_IGN);
        HearTwo(SIGHUP, SIGHUP);
    };
    EXPECT_EXIT(lose(), testing::ExitedWithCode(noted), "");
    const auto hear = [] {
        std::signal(SIGHUP, SIG_IGN);
        HearOne(SIGHUP);
    };
    EXPECT_EXIT(hear(), testing::ExitedWithCode(notNoted), "");
}

TEST(Interrupts, AreNotedWhereTheCallerIgnoresThem) {
    const auto hear = [] {
        std::signal(SIGINT, SIG_IGN); // as a shell does for what it runs in the background
        HearOne(SIGINT);
    };
    EXPECT_EXIT(hear(), testing::ExitedWithCode(noted), "");
}

} // namespace
} // namespace tessaro
