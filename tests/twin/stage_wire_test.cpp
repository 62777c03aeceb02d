#include "virtual_line.h"

#include <gtest/gtest.h>

#include <set>

namespace tessaro {
namespace {

using Texts = std::vector<std::string>;

TEST(StageWire, CarriesAByteInTheTimeOfTenBits) {
    VirtualLine line;
    const double begun = line.now;
    line.wire.Receive(std::string_view("Q\0", 2), begun);
    line.RunFor(1.0);
    ASSERT_EQ(line.bytes, std::string("0\0", 2));
    EXPECT_NEAR(line.byteTimes[0], begun + 3 * byteTime, rounding) << "two bytes there and one back";
    EXPECT_NEAR(line.byteTimes[1], begun + 4 * byteTime, rounding);
}

TEST(StageWire, TakesNoMoreThanItCarries) {
    VirtualLine line;
    EXPECT_EQ(line.wire.Room(), 64U);
    line.wire.Receive("abc", line.now);
    EXPECT_EQ(line.wire.Room(), 0U);
    line.RunFor(2.5 * byteTime);
    EXPECT_EQ(line.wire.Room(), 0U);
    line.RunFor(byteTime);
    EXPECT_EQ(line.wire.Room(), 64U);
}

TEST(StageWire, ACommandTakesEffectWithItsLastByte) {
    VirtualLine line;
    const double begun = line.now;
    line.wire.Receive(std::string_view("m100\0", 5), begun);
    line.RunUntil(begun + 4.9 * byteTime);
    EXPECT_FALSE(line.axes.MovesAt(0, line.now));
    line.RunUntil(begun + 5.1 * byteTime);
    EXPECT_TRUE(line.axes.MovesAt(0, line.now));
    EXPECT_NEAR(line.axes.EndTime(0), begun + 5 * byteTime + 2.0 * std::sqrt(100.0 / 16'000.0), rounding);
}

TEST(StageWire, HandsAReplyOverAsAWhole) {
    VirtualLine line;
    line.axes.Put({1000.0, 0.0, 0.0}, line.now);
    line.wire.Receive(std::string_view("p\0", 2), line.now);
    line.RunFor(6.9 * byteTime);
    EXPECT_EQ(line.bytes, "");
    line.RunFor(0.2 * byteTime);
    EXPECT_EQ(line.bytes, std::string("1600\0", 5));
}

TEST(StageWire, KeepsRepliesApartAlsoWhenNobodyCalledInTime) {
    VirtualLine line;
    line.Send({"m1600"});
    line.RunFor(0.051); // the first progress is under way
    line.now += 0.2;
    const double late = line.now;
    EXPECT_EQ(line.wire.Run(late), std::string("p20\0", 4));
    line.RunUntil(late + 0.0149);
    EXPECT_EQ(line.bytes, "");
    EXPECT_GE(line.wire.NextTime(), late + 0.0149);
    line.RunFor(0.05);
    ASSERT_GE(line.heard.size(), 1U);
    EXPECT_GE(line.heard[0].begin, late + 0.015);
}

TEST(StageWire, ForgetsWhatAHostBeganAndAskedThatIsGone) {
    VirtualLine line;
    line.wire.Faults().lateSeconds = 60.0;
    line.Send({"p", "P", "Q"});
    line.RunFor(0.5);
    line.wire.Receive(std::string_view("p\0P\0m1", 6), line.now);
    line.wire.EndWith(std::string_view("6\0m9", 4), line.now);
    EXPECT_TRUE(line.axes.MovesAt(0, line.now)) << "the commands that were whole have acted";
    line.Send({"60"});
    line.wire.Faults().lateSeconds = 0.0;
    EXPECT_EQ(line.TextsUntilSilence(), (Texts{"p14", "X"}));
    EXPECT_EQ(line.log, (Texts{"p", "P", "Q", "p", "P", "m16", "60"}));
}

/// A move with its progress and arrival, and an answer.
Texts Conversation(VirtualLine& line) {
    line.Send({"s1600", "m420"});
    Texts texts = line.TextsUntilSilence();
    line.Send({"p"});
    const Texts answer = line.TextsUntilSilence();
    texts.insert(texts.end(), answer.begin(), answer.end());
    return texts;
}
const Texts sound = {"p20", "p80", "p160", "p240", "p320", "p388", "p418", "X", "420"};

TEST(ReplyFaults, AreNoneAtFirst) {
    VirtualLine line;
    EXPECT_EQ(Conversation(line), sound);
}

TEST(ReplyFaults, SilentActsButSaysNothing) {
    VirtualLine line;
    line.wire.Faults().silent = true;
    EXPECT_EQ(Conversation(line), Texts{});
    EXPECT_EQ(line.axes.StepAt(0, line.now), 420);
    line.wire.Faults() = {};
    line.Send({"p"});
    EXPECT_EQ(line.TextsUntilSilence(), Texts{"420"});
}

TEST(ReplyFaults, NoArrivalLeavesOutArrivalsOnly) {
    VirtualLine line;
    line.wire.Faults().noArrival = true;
    EXPECT_EQ(Conversation(line), (Texts{"p20", "p80", "p160", "p240", "p320", "p388", "p418", "420"}));
}

TEST(ReplyFaults, OtherAxisAnswersWhereTheNextAxisIs) {
    VirtualLine line;
    line.wire.Faults().otherAxis = true;
    line.axes.Put({10.0, 1000.0, 30.0}, line.now);
    line.Send({"p", "P", "Q"});
    EXPECT_EQ(line.TextsUntilSilence(), (Texts{"1600", "48", "16"}));
}

TEST(ReplyFaults, OtherAxisChangesTheLetters) {
    VirtualLine line(1.0, {true, true, true});
    line.wire.Faults().otherAxis = true;
    EXPECT_EQ(Conversation(line), (Texts{"P20", "P80", "P160", "P240", "P320", "P388", "P418", "Y", "0"}));
    line.Send({"M16"});
    EXPECT_EQ(line.TextsUntilSilence(), (Texts{"Q14", "Z"}));
    line.Send({"L16"});
    EXPECT_EQ(line.TextsUntilSilence(), (Texts{"p14", "X"}));
}

TEST(ReplyFaults, ImpossibleSaysNumbersThatNoStageHas) {
    VirtualLine line;
    line.wire.Faults().impossible = true;
    const Texts texts = Conversation(line);
    ASSERT_EQ(texts.size(), sound.size());
    const std::set<std::string> said(texts.begin(), texts.end());
    EXPECT_TRUE(said.contains("p2147483647") && said.contains("p99999999999") &&
                said.contains("p-2147483648") && said.contains("X"))
        << testing::PrintToString(texts);
}

TEST(ReplyFaults, GarbledReplacesAboutAQuarterOfTheBytes) {
    VirtualLine line;
    line.wire.Faults().garbled = true;
    std::string expected;
    for (int i = 0; i < 100; ++i) {
        line.Send({"P"});
        line.TextsUntilSilence();
        expected += std::string("0\0", 2);
    }
    ASSERT_EQ(line.bytes.size(), expected.size());
    int wrong = 0;
    for (std::size_t i = 0; i < expected.size(); ++i)
        wrong += line.bytes[i] != expected[i] ? 1 : 0;
    EXPECT_GT(wrong, 25);
    EXPECT_LT(wrong, 80);
    VirtualLine again;
    again.wire.Faults().garbled = true;
    for (int i = 0; i < 100; ++i) {
        again.Send({"P"});
        again.TextsUntilSilence();
    }
    EXPECT_EQ(again.bytes, line.bytes) << "the same every time";
}

/// After how many bytes of the answer there was a silence; 0: none.
std::size_t PauseInAnswer(VirtualLine& line) {
    const std::size_t before = line.byteTimes.size();
    line.Send({"p"});
    line.TextsUntilSilence();
    for (std::size_t i = before + 1; i < line.byteTimes.size(); ++i)
        if (line.byteTimes[i] - line.byteTimes[i - 1] > 0.01)
            return i - before;
    return 0;
}

TEST(ReplyFaults, PiecesCutsAReplyAfterSoManyBytes) {
    VirtualLine line;
    line.axes.Put({1000.0, 0.0, 0.0}, line.now); // "1600"
    EXPECT_EQ(PauseInAnswer(line), 0U);
    line.wire.Faults().piece = 3;
    EXPECT_EQ(PauseInAnswer(line), 3U);
    EXPECT_EQ(line.heard.back().text, "1600") << "nothing is lost";
    line.wire.Faults().piece = 5;
    EXPECT_EQ(PauseInAnswer(line), 0U) << "that is all of it";
}

TEST(ReplyFaults, PiecesCutsRepliesAtEveryPlaceInTurn) {
    VirtualLine line;
    line.axes.Put({1000.0, 0.0, 0.0}, line.now);
    line.wire.Faults().piece = 0;
    std::set<std::size_t> places;
    for (int i = 0; i < 4; ++i)
        places.insert(PauseInAnswer(line));
    EXPECT_EQ(places, (std::set<std::size_t>{1, 2, 3, 4}));
}

TEST(ReplyFaults, LateDelaysEachReply) {
    VirtualLine line;
    line.wire.Faults().lateSeconds = 0.2;
    line.Send({"s1600", "m420"});
    const double begun = line.now;
    EXPECT_EQ(line.TextsUntilSilence(), (Texts{"p20", "p80", "p160", "p240", "p320", "p388", "p418", "X"}));
    EXPECT_NEAR(line.heard[0].begin, begun + 0.05 + 0.2 + byteTime, rounding);
    EXPECT_NEAR(line.heard[6].begin, begun + 0.35 + 0.2 + byteTime, rounding);
}

TEST(ReplyFaults, WhatWaitsGoesOutOneByOneOnceRepliesAreLateNoMore) {
    VirtualLine line;
    line.wire.Faults().lateSeconds = 60.0;
    line.Send({"s1600", "m420"});
    line.RunFor(1.0);
    EXPECT_EQ(line.bytes, "");
    line.wire.Faults().lateSeconds = 0.0;
    const double cleared = line.now;
    line.Send({"p"});
    EXPECT_EQ(line.TextsUntilSilence(), (Texts{"p80", "p160", "p240", "p320", "p388", "p418", "X", "420"}))
        << "the first one came while it was asked";
    EXPECT_EQ(line.bytes.substr(0, 4), std::string("p20\0", 4));
    EXPECT_NEAR(line.byteTimes[3], cleared, rounding);
    EXPECT_GE(line.heard[0].begin, cleared + 0.015);
    for (std::size_t i = 1; i < line.heard.size(); ++i)
        EXPECT_NEAR(line.heard[i].begin - line.heard[i - 1].end, 0.015 + byteTime, rounding) << i;
}

TEST(ReplyFaults, LessLateRepliesKeepTheirDistanceToThoseThatWaited) {
    VirtualLine line;
    line.wire.Faults().lateSeconds = 60.0;
    line.Send({"s1600", "m420"});
    line.RunFor(1.0);
    line.wire.Faults().lateSeconds = 0.1;
    line.Send({"p"});
    line.RunFor(1.0);
    ASSERT_EQ(line.heard.size(), sound.size());
    for (std::size_t i = 1; i < line.heard.size(); ++i)
        EXPECT_GE(line.heard[i].begin - line.heard[i - 1].end, 0.015) << i;
}

TEST(ReplyFaults, JunkIsNulsAndThenAMegabyteFasterThanTheLine) {
    VirtualLine line;
    const double begun = line.now;
    line.wire.StartJunk(begun);
    line.RunFor(1.0);
    EXPECT_NEAR(static_cast<double>(line.bytes.size()), 100'000.0, 2000.0);
    EXPECT_EQ(line.bytes.substr(0, 4096), std::string(4096, '\0'));
    EXPECT_GT(std::set<char>(line.bytes.begin(), line.bytes.end()).size(), 250U);
    line.RunFor(100.0);
    EXPECT_EQ(line.bytes.size(), 1'004'096U);
    line.Send({"p"});
    line.TextsUntilSilence();
    EXPECT_EQ(line.bytes.substr(1'004'096), std::string("0\0", 2));
}

TEST(ReplyFaults, JunkEndsWhenItIsCleared) {
    VirtualLine line;
    line.wire.StartJunk(line.now);
    line.RunFor(0.1);
    line.wire.StopJunk();
    EXPECT_FALSE(std::isfinite(line.wire.NextTime()));
}

} // namespace
} // namespace tessaro
