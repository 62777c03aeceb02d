#include "text/json_writer.h"
#include "text/plain_text.h"

#include <gtest/gtest.h>

#include <limits>

namespace tessaro {
namespace {

TEST(NumberText, HasAPoint) {
    EXPECT_EQ(NumberText(1234.5678, 2), "1234.57");
    EXPECT_EQ(NumberText(-0.5, 1), "-0.5");
    EXPECT_EQ(NumberText(3.0, 0), "3");
}

TEST(JsonWriter, PutsCommasBetweenValuesAndNowhereElse) {
    JsonWriter json(1);
    json.Open('{');
    json.Member("a", 1);
    json.Key("b");
    json.Open('[');
    json.Open('[');
    json.Close(']');
    json.Value(true);
    json.Value(std::uint64_t{18446744073709551615U});
    json.Close(']');
    json.Member("c", std::string_view("d\"e"));
    json.Close('}');
    EXPECT_EQ(json.Take(), R"({"a":1,"b":[[],true,18446744073709551615],"c":"d\"e"})");
}

TEST(JsonWriter, BreaksLinesAfterTheComma) {
    JsonWriter json(1);
    json.Open('[');
    for (const double value : {0.25, -2.0, std::numeric_limits<double>::infinity()}) {
        json.BreakLine();
        json.Value(value);
    }
    json.Close(']');
    EXPECT_EQ(json.Take(), "[\n0.2,\n-2.0,\nnull]");
}

} // namespace
} // namespace tessaro
