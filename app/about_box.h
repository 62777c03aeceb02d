#pragma once

#include "platform/dialogs.h"

namespace tessaro {

/// Says what the program is, until OK or Escape.
class AboutBox : public DialogProcedure {
public:
    explicit AboutBox(Dialogs& dialogs) : m_dialogs(dialogs) {}

    void Show(WindowHandle owner);

    void Initialize(WindowHandle) override {}
    void Command(WindowHandle dialog, int controlId, Notification notification) override;

private:
    Dialogs& m_dialogs;
};

} // namespace tessaro
