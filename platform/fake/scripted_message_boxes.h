#pragma once

#include "platform/message_boxes.h"

#include <deque>
#include <functional>
#include <string>
#include <vector>

namespace tessaro {

/// Answers questions from a script; a question that the script does not know is a No and counts as
/// unexpected.
class ScriptedMessageBoxes : public MessageBoxes {
public:
    struct Shown {
        WindowHandle owner = WindowHandle::None;
        std::string text;
        std::string caption;
    };

    bool AskYesNo(WindowHandle owner, const std::string& text, const std::string& caption) override {
        questions.push_back({owner, text, caption});
        if (whileAsking)
            whileAsking();
        if (answers.empty()) {
            ++unexpected;
            return false;
        }
        const bool answer = answers.front();
        answers.pop_front();
        return answer;
    }

    void ShowWarning(WindowHandle owner, const std::string& text, const std::string& caption) override {
        warnings.push_back({owner, text, caption});
        if (whileWarning)
            whileWarning();
    }

    std::deque<bool> answers; // to the questions to come
    std::vector<Shown> questions;
    std::vector<Shown> warnings;
    std::function<void()> whileAsking;  // what happens while a question is open
    std::function<void()> whileWarning; // and while a warning is
    int unexpected = 0;
};

} // namespace tessaro
