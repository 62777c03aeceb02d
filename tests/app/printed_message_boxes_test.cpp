#include "app/printed_message_boxes.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tessaro {
namespace {

class PrintedMessageBoxesTest : public testing::Test {
protected:
    std::vector<std::string> printed;
    bool stopIsOrdered = false;
    PrintedMessageBoxes boxes{[this](std::string_view line) { printed.emplace_back(line); },
                              [this] { return stopIsOrdered; }};
};

TEST_F(PrintedMessageBoxesTest, TakeNoteOfWarnings) {
    boxes.ShowWarning(WindowHandle::None, "Error in  opening serial port", "Warning");
    EXPECT_EQ(printed, std::vector<std::string>{"Warning: Error in  opening serial port [OK]"});
}

TEST_F(PrintedMessageBoxesTest, AnswerQuestionsWithNo) {
    EXPECT_FALSE(boxes.AskYesNo(WindowHandle::None, "Do you want to stop, now ?", "Warning"));
    EXPECT_EQ(printed, std::vector<std::string>{"Warning: Do you want to stop, now ? [No]"});
}

TEST_F(PrintedMessageBoxesTest, ConfirmAStopThatIsOrdered) {
    stopIsOrdered = true;
    EXPECT_TRUE(boxes.AskYesNo(WindowHandle::None, "Do you want to stop, now ?", "Warning"));
    EXPECT_EQ(printed, std::vector<std::string>{"Warning: Do you want to stop, now ? [Yes]"});
}

} // namespace
} // namespace tessaro
