#pragma once

#include "platform/message.h"

#include <string>

namespace tessaro {

/// Questions and warnings that the operator has to answer before going on. Messages of all windows are
/// dispatched meanwhile. Texts may hold tabs and line feeds. None is shown, and nobody waited for, once the
/// program is told to quit.
class MessageBoxes {
public:
    virtual ~MessageBoxes() = default;

    /// Yes and No; true for Yes. A question that is closed because the program ends is a No.
    virtual bool AskYesNo(WindowHandle owner, const std::string& text, const std::string& caption) = 0;

    /// A text with an OK button.
    virtual void ShowWarning(WindowHandle owner, const std::string& text, const std::string& caption) = 0;
};

} // namespace tessaro
