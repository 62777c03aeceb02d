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
    double value;
    std::int32_t whole;
};

class TruncatedToInt32Test : public testing::TestWithParam<Truncation> {};

TEST_P(TruncatedToInt32Test, GoesTowardZeroAndStaysInRange) {
    EXPECT_EQ(TruncatedToInt32(GetParam().value), GetParam().whole);
}

constexpr double infinity = std::numeric_limits<double>::infinity();

INSTANTIATE_TEST_SUITE_P(
    Values, TruncatedToInt32Test,
    testing::Values(Truncation{0.0, 0}, Truncation{0.999, 0}, Truncation{-0.999, 0}, Truncation{15.7, 15},
                    Truncation{-15.7, -15}, Truncation{2147483646.9, 2147483646},
                    Truncation{2147483647.0, 2147483647}, Truncation{2147483648.0, 2147483647},
                    Truncation{-2147483647.9, -2147483647}, Truncation{-2147483648.0, INT32_MIN},
                    Truncation{-2147483649.0, INT32_MIN}, Truncation{infinity, 2147483647},
                    Truncation{-infinity, INT32_MIN},
                    Truncation{std::numeric_limits<double>::quiet_NaN(), 0}));

} // namespace
} // namespace tessaro
