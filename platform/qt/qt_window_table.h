#pragma once

#include "platform/message.h"
#include "platform/picture.h"
#include "platform/window_system.h"

#include <functional>
#include <map>
#include <vector>

class QWidget;

namespace tessaro {

/// The windows and dialogs of the program by their handles; the adapters find each other's windows here.
class QtWindowTable {
public:
    struct Entry {
        QWidget* widget = nullptr;            // the top-level window, or a control on one
        WindowProcedure* procedure = nullptr; // null for a dialog or control
        QWidget* client = nullptr;            // what positions count from; null for a dialog
        Picture* pixels = nullptr;            // what is drawn on; null for a dialog or control
        std::function<void()> destroy;        // what closing does unless the procedure keeps it from it, and
                                              // what happens when the owner goes
    };

    WindowHandle Add(const Entry& entry);
    void Remove(WindowHandle window);
    Entry* Find(WindowHandle window); // null when it is gone

    /// The nearest of the widget and those around it within its window that is here; None when none is.
    WindowHandle HandleOf(const QWidget* widget) const;

    std::vector<WindowHandle> OwnedBy(const QWidget* topLevel) const;

private:
    std::map<WindowHandle, Entry> m_entries;
    std::uint64_t m_last = 0;
};

} // namespace tessaro
