#include "app/heard_message_boxes.h"
#include "platform/fake/scripted_message_boxes.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tessaro {
namespace {

class RecordingListener : public MessageBoxListener {
public:
    void WarningComes(const std::string& text) override { heard.push_back("warning " + text); }
    void QuestionAnswered(const std::string& text, bool yes) override {
        heard.push_back(text + (yes ? " yes" : " no"));
    }

    std::vector<std::string> heard;
};

constexpr auto boxOwner = static_cast<WindowHandle>(7);

TEST(HeardMessageBoxesTest, ShowsAndAsksAsThePlatformDoes) {
    ScriptedMessageBoxes boxes;
    boxes.answers = {true, false};
    HeardMessageBoxes heard(boxes, nullptr);
    EXPECT_TRUE(heard.AskYesNo(boxOwner, "Stop ?", "Question"));
    EXPECT_FALSE(heard.AskYesNo(boxOwner, "Stop ?", "Question"));
    heard.ShowWarning(boxOwner, "Mind", "Warning");
    ASSERT_EQ(boxes.questions.size(), 2U);
    EXPECT_EQ(boxes.questions[0].owner, boxOwner);
    EXPECT_EQ(boxes.questions[0].text, "Stop ?");
    EXPECT_EQ(boxes.questions[0].caption, "Question");
    ASSERT_EQ(boxes.warnings.size(), 1U);
    EXPECT_EQ(boxes.warnings[0].owner, boxOwner);
    EXPECT_EQ(boxes.warnings[0].text, "Mind");
    EXPECT_EQ(boxes.warnings[0].caption, "Warning");
}

TEST(HeardMessageBoxesTest, TellsEachWithItsAnswer) {
    ScriptedMessageBoxes boxes;
    boxes.answers = {true, false};
    RecordingListener listener;
    HeardMessageBoxes heard(boxes, &listener);
    heard.AskYesNo(boxOwner, "Stop ?", "Question");
    heard.ShowWarning(boxOwner, "Mind", "Warning");
    heard.AskYesNo(boxOwner, "Again ?", "Question");
    EXPECT_EQ(listener.heard, (std::vector<std::string>{"Stop ? yes", "warning Mind", "Again ? no"}));
}

} // namespace
} // namespace tessaro
