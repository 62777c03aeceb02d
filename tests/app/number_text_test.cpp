#include "app/number_text.h"

#include <gtest/gtest.h>

namespace tessaro {
namespace {

TEST(FormattedText, IsWhatThePrintfFormatMakes) {
    EXPECT_EQ(Formatted("count: %d", -3), "count: -3");
    EXPECT_EQ(Formatted("Noise:%.1f  Focus:%.1f", 1.25, 10.0), "Noise:1.2  Focus:10.0");
    EXPECT_EQ(Formatted("%d%%", 50), "50%");
    EXPECT_EQ(Formatted("%s", ""), "");
}

TEST(FormattedText, MayBeOfAnyLength) {
    EXPECT_EQ(Formatted("%1000d", 1), std::string(999, ' ') + "1");
}

struct Truncation {
    const char* name;
    double value;
    std::int32_t whole;
};

class TruncatedToInt32Test : public testing::TestWithParam<Truncation> {};

TEST_P(TruncatedToInt32Test, GoesTowardZeroAndStaysInRange) {
    EXPECT_EQ(TruncatedToInt32(GetParam().value), GetParam().whole);
}

constexpr double infinity = std::numeric_limits<double>::infinity();

INSTANTIATE_TEST_SUITE_P(Values, TruncatedToInt32Test,
                         testing::Values(Truncation{"Zero", 0.0, 0}, Truncation{"BelowOne", 0.999, 0},
                                         Truncation{"AboveMinusOne", -0.999, 0},
                                         Truncation{"Positive", 15.7, 15}, Truncation{"Negative", -15.7, -15},
                                         Truncation{"BelowTheLargest", 2147483646.9, 2147483646},
                                         Truncation{"Largest", 2147483647.0, 2147483647},
                                         Truncation{"OneTooLarge", 2147483648.0, 2147483647},
                                         Truncation{"AboveTheSmallest", -2147483647.9, -2147483647},
                                         Truncation{"Smallest", -2147483648.0, INT32_MIN},
                                         Truncation{"OneTooSmall", -2147483649.0, INT32_MIN},
                                         Truncation{"Infinite", infinity, 2147483647},
                                         Truncation{"MinusInfinite", -infinity, INT32_MIN},
                                         Truncation{"NoNumber", std::numeric_limits<double>::quiet_NaN(), 0}),
                         [](const auto& truncation) { return std::string(truncation.param.name); });

struct NumberAtStart {
    const char* name;
    std::string_view text;
    std::optional<std::int32_t> number;
    std::string_view rest; // behind the number; the whole text where there is none
};

class TakenNumber : public testing::TestWithParam<NumberAtStart> {};

TEST_P(TakenNumber, IsWhatScanfFindsAtTheStart) {
    std::string_view text = GetParam().text;
    std::int32_t value = 4711;
    EXPECT_EQ(TakeNumber(text, value), GetParam().number.has_value());
    EXPECT_EQ(value, GetParam().number.value_or(4711));
    EXPECT_EQ(text, GetParam().rest);
}

TEST_P(TakenNumber, IsParsedAlike) {
    EXPECT_EQ(ParsedInteger(GetParam().text), GetParam().number);
}

using namespace std::string_view_literals;

INSTANTIATE_TEST_SUITE_P(
    Integers, TakenNumber,
    testing::Values(
        NumberAtStart{"Plain", "1600", 1600, ""}, NumberAtStart{"Minus", "-8", -8, ""},
        NumberAtStart{"Plus", "+8", 8, ""}, NumberAtStart{"LeadingZeros", "007", 7, ""},
        NumberAtStart{"WhiteSpaceBefore", " \t\n\v\f\r12", 12, ""},
        NumberAtStart{"WhiteSpaceBehind", "12 ", 12, " "},
        NumberAtStart{"MinusBehindWhiteSpace", "  -12", -12, ""},
        NumberAtStart{"RestBehind", "12,-20.5", 12, ",-20.5"}, NumberAtStart{"WholePart", "3.9", 3, ".9"},
        NumberAtStart{"Hexadecimal", "0x1F", 0, "x1F"}, NumberAtStart{"MinusZero", "-0", 0, ""},
        NumberAtStart{"SecondSignBehind", "1-2", 1, "-2"},
        NumberAtStart{"Largest", "2147483647", 2147483647, ""},
        NumberAtStart{"Smallest", "-2147483648", INT32_MIN, ""},
        NumberAtStart{"NulBehind",
                      "16\0"
                      "00"sv,
                      16,
                      "\0"
                      "00"sv},
        NumberAtStart{"OneTooLarge", "2147483648", std::nullopt, "2147483648"},
        NumberAtStart{"OneTooSmall", "-2147483649", std::nullopt, "-2147483649"},
        NumberAtStart{"FarTooLarge", "99999999999999999999", std::nullopt, "99999999999999999999"},
        NumberAtStart{"Empty", "", std::nullopt, ""}, NumberAtStart{"Blank", " ", std::nullopt, " "},
        NumberAtStart{"Letter", "x1", std::nullopt, "x1"}, NumberAtStart{"PlusAlone", "+", std::nullopt, "+"},
        NumberAtStart{"MinusAlone", "-", std::nullopt, "-"},
        NumberAtStart{"PlusMinus", "+-1", std::nullopt, "+-1"},
        NumberAtStart{"PlusPlus", "++1", std::nullopt, "++1"},
        NumberAtStart{"MinusMinus", "--1", std::nullopt, "--1"},
        NumberAtStart{"MinusPlus", "-+1", std::nullopt, "-+1"},
        NumberAtStart{"BlankBehindMinus", "- 1", std::nullopt, "- 1"},
        NumberAtStart{"BlankBehindPlus", "+ 1", std::nullopt, "+ 1"},
        NumberAtStart{"NulBefore",
                      "\0"
                      "1"sv,
                      std::nullopt,
                      "\0"
                      "1"sv}),
    [](const auto& number) { return std::string(number.param.name); });

TEST(TypedFraction, IsWhatTheTextBeginsWith) {
    EXPECT_EQ(ParsedFloat(" +7.25%"), 7.25F);
    EXPECT_EQ(ParsedFloat("-.5e1"), -5.0F);
    EXPECT_EQ(ParsedFloat("3,7"), 3.0F);
    EXPECT_EQ(ParsedFloat("3.4e38"), 3.4e38F);
}

TEST(TypedFraction, IsFinite) {
    for (const char* text : {"nan", "-nan", "NAN(1)", "inf", "-Infinity", "1e39", "-1e39", "1e-99", "", "."})
        EXPECT_EQ(ParsedFloat(text), std::nullopt) << text;
}

TEST(TakenNumbers, ComeOneAfterTheOther) {
    std::string_view text = "12,-20.5";
    std::int32_t whole = 0;
    double fraction = 0.0;
    EXPECT_TRUE(TakeNumber(text, whole));
    text.remove_prefix(1);
    EXPECT_TRUE(TakeNumber(text, fraction));
    EXPECT_EQ(whole, 12);
    EXPECT_EQ(fraction, -20.5);
    EXPECT_FALSE(TakeNumber(text, whole));
}

} // namespace
} // namespace tessaro
