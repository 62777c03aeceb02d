#include "app/terminal_status.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <utility>

namespace tessaro {
namespace {

class TerminalStatusTest : public testing::Test {
protected:
    TerminalStatus On(TerminalWidth width) {
        return {[this](std::string_view text) { written += text; }, std::move(width)};
    }
    TerminalStatus On(int columns) {
        return On([columns] { return columns; });
    }
    TerminalStatus OnLog() { return On(TerminalWidth()); }
    std::string written;
};

TEST_F(TerminalStatusTest, WritesALogALineForEachInformationThatChanged) {
    TerminalStatus log = OnLog();
    log.InformationShown("scanning...");
    log.InformationShown("0% finished");
    log.InformationShown("0% finished");
    log.ProgressShown("moving: 3/0");
    log.InformationShown("scanning...");
    EXPECT_EQ(written, "scanning...\n0% finished\nscanning...\n");
}

TEST_F(TerminalStatusTest, WritesOverASingleLineOfATerminal) {
    TerminalStatus terminal = On(80);
    terminal.InformationShown("scanning...");
    terminal.ProgressShown("Done");
    terminal.InformationShown("1%");
    EXPECT_EQ(written, "\rscanning...\x1b[K"
                       "\rscanning...  |  Done\x1b[K"
                       "\r1%  |  Done\x1b[K");
}

TEST_F(TerminalStatusTest, ShowsProgressAlone) {
    On(80).ProgressShown("moving");
    EXPECT_EQ(written, "\rmoving\x1b[K");
}

TEST_F(TerminalStatusTest, DoesNotDrawWhatIsThere) {
    TerminalStatus terminal = On(80);
    terminal.InformationShown("scanning...");
    terminal.ProgressShown("");
    EXPECT_EQ(written, "\rscanning...\x1b[K");
}

TEST_F(TerminalStatusTest, StaysLeftOfTheLastColumn) {
    TerminalStatus terminal = On(6);
    terminal.InformationShown("123456789");
    EXPECT_EQ(written, "\r12345\x1b[K");
    written.clear();
    terminal.InformationShown("1234\xC3\xA9");
    EXPECT_EQ(written, "\r1234\x1b[K") << "no half a character";
}

TEST_F(TerminalStatusTest, KeepsToTheWidthThatTheTerminalHasNow) {
    int columns = 6;
    TerminalStatus terminal = On([&columns] { return columns; });
    terminal.InformationShown("123456789");
    columns = 8;
    terminal.InformationShown("abcdefghi");
    EXPECT_EQ(written, "\r12345\x1b[K\rabcdefg\x1b[K");
}

TEST_F(TerminalStatusTest, KeepsLinesThatAreSaid) {
    TerminalStatus terminal = On(80);
    terminal.InformationShown("1%");
    terminal.Say("Warning: smoke [OK]");
    terminal.ProgressShown("moving");
    terminal.EndLine();
    terminal.EndLine();
    EXPECT_EQ(written, "\r1%\x1b[K\nWarning: smoke [OK]\n\r1%  |  moving\x1b[K\n");
}

TEST_F(TerminalStatusTest, SaysLinesInALogAsTheyAre) {
    TerminalStatus log = OnLog();
    log.InformationShown("1%");
    log.Say("Warning: smoke [OK]");
    log.EndLine();
    EXPECT_EQ(written, "1%\nWarning: smoke [OK]\n");
}

TEST_F(TerminalStatusTest, LetsNoTextLeaveItsLine) {
    TerminalStatus log = OnLog();
    log.InformationShown("File:a\nb\x1b[2Jc");
    log.Say("one\ttwo\r\nthree");
    EXPECT_EQ(written, "File:a b [2Jc\none two  three\n");
}

} // namespace
} // namespace tessaro
