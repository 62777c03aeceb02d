#include "compare/options.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace tessaro {
namespace {

std::string Wrong(const std::vector<std::string_view>& arguments) {
    CompareOptions options;
    return ParseCompareOptions(arguments, options);
}

TEST(CompareOptions, TakeEveryOption) {
    CompareOptions options;
    const std::vector<std::string_view> arguments = {"report.jsonl", "--min-area",    "200",     "truth.json",
                                                     "--list",       "--tolerance=2", "--images"};
    EXPECT_EQ(ParseCompareOptions(arguments, options), "");
    EXPECT_EQ(options.reportFile, "report.jsonl");
    EXPECT_EQ(options.truthFile, "truth.json");
    EXPECT_EQ(options.comparison.minimumAreaUm2, 200.0);
    EXPECT_EQ(options.comparison.toleranceUm, 2.0);
    EXPECT_TRUE(options.list);
    EXPECT_TRUE(options.images);
}

TEST(CompareOptions, NeedTwoFiles) {
    EXPECT_EQ(Wrong({"report"}), "a report and a truth are needed, not 1 files");
    EXPECT_EQ(Wrong({"a", "b", "c"}), "a report and a truth are needed, not 3 files");
    EXPECT_EQ(Wrong({"--help"}), "");
}

TEST(CompareOptions, RefuseWhatTheyDoNotKnow) {
    EXPECT_EQ(Wrong({"a", "b", "--all"}), "unknown option '--all'");
    EXPECT_EQ(Wrong({"a", "b", "--min-area", "small"}),
              "--min-area takes a number from 0 to 1000000, not 'small'");
    EXPECT_EQ(Wrong({"a", "b", "--tolerance=-1"}), "--tolerance takes a number from 0 to 100, not '-1'");
    EXPECT_EQ(Wrong({"a", "b", "--min-area"}), "option '--min-area' needs a value");
}

} // namespace
} // namespace tessaro
