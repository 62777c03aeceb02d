#include "scan/report_lines.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <ostream>
#include <streambuf>
#include <string>

namespace tessaro {
namespace {

/// Takes so many bytes, like a disk that fills up.
class FillingDisk : public std::streambuf {
public:
    std::string written;
    std::size_t room = 1000;
    bool passesOn = true; // what it has taken
    int writes = 0;
    int flushes = 0;

protected:
    std::streamsize xsputn(const char* text, std::streamsize length) override {
        ++writes;
        const std::size_t taken = std::min(static_cast<std::size_t>(length), room);
        written.append(text, taken);
        room -= taken;
        return static_cast<std::streamsize>(taken);
    }
    int sync() override {
        ++flushes;
        return passesOn ? 0 : -1;
    }
};

class ReportLinesTest : public testing::Test {
protected:
    bool WriteSilently(const char* line) {
        testing::internal::CaptureStderr();
        const bool written = lines.Write(line);
        errors += testing::internal::GetCapturedStderr();
        return written;
    }

    FillingDisk disk;
    std::ostream out{&disk};
    ReportLines lines{out};
    std::string errors;
};

TEST_F(ReportLinesTest, GoOutAtOnceAndWhole) {
    EXPECT_TRUE(lines.Write("first"));
    EXPECT_EQ(disk.written, "first\n");
    EXPECT_EQ(disk.writes, 1);
    EXPECT_EQ(disk.flushes, 1);
    EXPECT_TRUE(lines.Write("second"));
    EXPECT_EQ(disk.written, "first\nsecond\n");
    EXPECT_EQ(disk.writes, 2);
}

TEST_F(ReportLinesTest, ThatCannotBeWrittenAreToldOnce) {
    disk.room = 0;
    EXPECT_FALSE(WriteSilently("first"));
    EXPECT_FALSE(WriteSilently("second"));
    EXPECT_EQ(errors, "tessaro: a line of the report cannot be written\n");
    disk.room = 1000;
    EXPECT_TRUE(WriteSilently("third"));
    EXPECT_EQ(disk.written, "third\n") << "nothing stands before it";
}

TEST_F(ReportLinesTest, BeginOnALineOfTheirOwnBehindATornOne) {
    disk.room = 9;
    EXPECT_TRUE(lines.Write("first"));
    EXPECT_FALSE(WriteSilently("second"));
    EXPECT_FALSE(WriteSilently("third"));
    disk.room = 1000;
    EXPECT_TRUE(lines.Write("fourth"));
    EXPECT_TRUE(lines.Write("fifth"));
    EXPECT_EQ(disk.written, "first\nsec\nfourth\nfifth\n");
}

TEST_F(ReportLinesTest, AreTornWhereOnlyTheirLineFeedIsMissing) {
    disk.room = 5;
    EXPECT_FALSE(WriteSilently("first"));
    disk.room = 1;
    EXPECT_FALSE(WriteSilently("second")) << "the line feed for the torn one, and no more";
    disk.room = 1000;
    EXPECT_TRUE(lines.Write("third"));
    EXPECT_EQ(disk.written, "first\nthird\n");
}

TEST_F(ReportLinesTest, CountAsTornWhereNobodyKnowsHowFarTheyCame) {
    disk.passesOn = false;
    EXPECT_FALSE(WriteSilently("first"));
    disk.passesOn = true;
    disk.written = "fir";
    EXPECT_TRUE(lines.Write("second"));
    EXPECT_EQ(disk.written, "fir\nsecond\n");
}

} // namespace
} // namespace tessaro
