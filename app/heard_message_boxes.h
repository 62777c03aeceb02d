#pragma once

#include "platform/message_boxes.h"

#include <string>

namespace tessaro {

/// Told which message boxes there were.
class MessageBoxListener {
public:
    virtual ~MessageBoxListener() = default;

    virtual void WarningComes(const std::string& text) = 0; // it is about to be shown
    virtual void QuestionAnswered(const std::string& text, bool yes) = 0;
};

/// Message boxes that somebody may listen to; otherwise they are those of the platform.
class HeardMessageBoxes : public MessageBoxes {
public:
    HeardMessageBoxes(MessageBoxes& boxes, MessageBoxListener* listener)
        : m_boxes(boxes), m_listener(listener) {}

    bool AskYesNo(WindowHandle owner, const std::string& text, const std::string& caption) override {
        const bool yes = m_boxes.AskYesNo(owner, text, caption);
        if (m_listener != nullptr)
            m_listener->QuestionAnswered(text, yes);
        return yes;
    }

    void ShowWarning(WindowHandle owner, const std::string& text, const std::string& caption) override {
        if (m_listener != nullptr)
            m_listener->WarningComes(text);
        m_boxes.ShowWarning(owner, text, caption);
    }

private:
    MessageBoxes& m_boxes;
    MessageBoxListener* m_listener; // null: nobody listens
};

} // namespace tessaro
