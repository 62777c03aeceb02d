#include "platform/qt/qt_window_table.h"

#include <QWidget>

#include <algorithm>

namespace tessaro {

WindowHandle QtWindowTable::Add(const Entry& entry) {
    const auto handle = static_cast<WindowHandle>(++m_last);
    m_entries.emplace(handle, entry);
    return handle;
}

void QtWindowTable::Remove(WindowHandle window) {
    m_entries.erase(window);
}

QtWindowTable::Entry* QtWindowTable::Find(WindowHandle window) {
    const auto found = m_entries.find(window);
    return found != m_entries.end() ? &found->second : nullptr;
}

WindowHandle QtWindowTable::HandleOf(const QWidget* widget) const {
    while (widget != nullptr) {
        const auto found = std::find_if(m_entries.begin(), m_entries.end(),
                                        [&](const auto& entry) { return entry.second.widget == widget; });
        if (found != m_entries.end())
            return found->first;
        widget = widget->isWindow() ? nullptr : widget->parentWidget();
    }
    return WindowHandle::None;
}

std::vector<WindowHandle> QtWindowTable::OwnedBy(const QWidget* topLevel) const {
    std::vector<WindowHandle> owned;
    for (const auto& [handle, entry] : m_entries) {
        if (entry.widget != topLevel && entry.widget->parentWidget() == topLevel)
            owned.push_back(handle);
    }
    return owned;
}

} // namespace tessaro
