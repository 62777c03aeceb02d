#pragma once

#include "platform/message_boxes.h"

namespace tessaro {

class QtMessageLoop;
class QtWindowTable;

class QtMessageBoxes : public MessageBoxes {
public:
    QtMessageBoxes(QtWindowTable& windows, QtMessageLoop& messages)
        : m_windows(windows), m_messages(messages) {}

    bool AskYesNo(WindowHandle owner, const std::string& text, const std::string& caption) override;
    void ShowWarning(WindowHandle owner, const std::string& text, const std::string& caption) override;

private:
    QtWindowTable& m_windows;
    QtMessageLoop& m_messages;
};

} // namespace tessaro
