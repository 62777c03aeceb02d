#pragma once

#include "platform/message_boxes.h"

#include <functional>
#include <string>
#include <string_view>
#include <utility>

namespace tessaro {

/// Message boxes where nobody is there to answer: each is printed on a line and answered at once. A warning
/// is OK. A question is a No, which changes nothing and goes on; it is a Yes when a stop was ordered: the
/// question is then only what the order leads to.
class PrintedMessageBoxes : public MessageBoxes {
public:
    PrintedMessageBoxes(std::function<void(std::string_view)> print, std::function<bool()> stopIsOrdered)
        : m_print(std::move(print)), m_stopIsOrdered(std::move(stopIsOrdered)) {}

    bool AskYesNo(WindowHandle owner, const std::string& text, const std::string& caption) override;
    void ShowWarning(WindowHandle owner, const std::string& text, const std::string& caption) override;

private:
    std::function<void(std::string_view)> m_print;
    std::function<bool()> m_stopIsOrdered;
};

} // namespace tessaro
