#include "app/about_box.h"

#include "app/resource_ids.h"

namespace tessaro {

void AboutBox::Show(WindowHandle owner) {
    m_dialogs.RunModal(resource::aboutDialog, owner, *this);
}

void AboutBox::Command(WindowHandle dialog, int controlId, [[maybe_unused]] Notification notification) {
    if (controlId == commandOk || controlId == commandCancel)
        m_dialogs.EndModal(dialog, controlId);
}

} // namespace tessaro
