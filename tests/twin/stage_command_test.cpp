#include "twin/stage/stage_command.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

namespace tessaro {
namespace {

TEST(StageCommand, HasALetterForEachAxis) {
    const std::vector<std::tuple<const char*, StageVerb, std::size_t, std::int64_t>> commands = {
        {"z", StageVerb::Wake, 0, 0},
        {"p", StageVerb::Query, 0, 0},
        {"P", StageVerb::Query, 1, 0},
        {"Q", StageVerb::Query, 2, 0},
        {"m-4", StageVerb::Move, 0, -4},
        {"M1600", StageVerb::Move, 1, 1600},
        {"L20", StageVerb::Move, 2, 20},
        {"s8000", StageVerb::SetSpeed, 0, 8000},
        {"S1", StageVerb::SetSpeed, 1, 1},
        {"T2400", StageVerb::SetSpeed, 2, 2400},
        {"n", StageVerb::Stop, 0, 0},
        {"N", StageVerb::Stop, 1, 0},
        {"O", StageVerb::Stop, 2, 0},
        {"m2147483647", StageVerb::Move, 0, 2147483647},
        {"m-2147483648", StageVerb::Move, 0, -2147483648LL}};
    for (const auto& [text, verb, axis, number] : commands) {
        const auto command = ParseStageCommand(text);
        ASSERT_TRUE(command.has_value()) << text;
        EXPECT_EQ(command->verb, verb) << text;
        EXPECT_EQ(command->axis, axis) << text;
        EXPECT_EQ(command->number, number) << text;
    }
}

TEST(StageCommand, IsNothingElse) {
    for (const char* text : {"", "a", "1600", "p1", "n ", "z0", "zz", "m", "m-", "m+5", "m 5", "m5 ", "m5x",
                             "M1.5", "L0x10", "T--1", "m99999999999999", "m0000000000000000000000001"})
        EXPECT_FALSE(ParseStageCommand(text).has_value()) << text;
}

std::vector<std::string> Taken(const std::string& bytes) {
    StageCommandReader reader;
    std::vector<std::string> commands;
    for (const char byte : bytes)
        if (const auto command = reader.Take(byte))
            commands.push_back(*command);
    return commands;
}

TEST(StageCommandReader, EndsCommandsAtTheirNuls) {
    EXPECT_EQ(Taken(std::string("p\0M1600\0\0n", 10)), (std::vector<std::string>{"p", "M1600", ""}));
}

TEST(StageCommandReader, BeginsAnewWithZ) {
    EXPECT_EQ(Taken(std::string("M16z\0p\0", 7)), (std::vector<std::string>{"z", "p"}));
    EXPECT_EQ(Taken(std::string(1000, '1') + "z" + '\0'), std::vector<std::string>{"z"});
}

TEST(StageCommandReader, KeepsNoMoreOfALongTextThanNeeded) {
    const auto commands = Taken("m" + std::string(1'000'000, '0') + "5" + '\0' + "p" + '\0');
    ASSERT_EQ(commands.size(), 2U);
    EXPECT_EQ(commands[0].size(), StageCommandReader::longestText);
    EXPECT_FALSE(ParseStageCommand(commands[0]).has_value());
    EXPECT_EQ(commands[1], "p");
}

} // namespace
} // namespace tessaro
