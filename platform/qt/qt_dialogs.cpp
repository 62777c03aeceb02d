#include "platform/qt/qt_dialogs.h"

#include "platform/qt/qt_message_loop.h"
#include "platform/qt/qt_resource_dialog.h"
#include "platform/qt/qt_window_table.h"
#include "platform/whole_characters.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>

#include <map>

namespace tessaro {
struct QtDialogs::State {
    struct Open {
        QtResourceDialog* dialog = nullptr; // belongs to its owner; the table forgets it when it goes
        bool ended = false;
        int result = 0;
    };

    State(QtWindowTable& table, QtMessageLoop& loop) : windows(table), messages(loop) {}

    WindowHandle Make(int resource, WindowHandle owner, DialogProcedure& procedure);
    void Remove(WindowHandle handle);

    template<typename Widget>
    Widget* Item(WindowHandle handle, int controlId) {
        const auto found = open.find(handle);
        return found != open.end() ? qobject_cast<Widget*>(found->second.dialog->Control(controlId))
                                   : nullptr;
    }

    QtWindowTable& windows;
    QtMessageLoop& messages;
    std::map<WindowHandle, Open> open;
};

QtDialogs::QtDialogs(QtWindowTable& windows, QtMessageLoop& messages)
    : m_state(std::make_unique<State>(windows, messages)) {}

QtDialogs::~QtDialogs() {
    while (!m_state->open.empty()) {
        QtResourceDialog* dialog = m_state->open.begin()->second.dialog;
        dialog->Silence(); // who answered its commands may be gone
        delete dialog;     // takes itself out of the table
    }
}

WindowHandle QtDialogs::State::Make(int resource, WindowHandle owner, DialogProcedure& procedure) {
    const QtWindowTable::Entry* ownerEntry = windows.Find(owner);
    QWidget* ownerWidget = ownerEntry != nullptr ? ownerEntry->widget : nullptr;
    auto dialog = std::make_unique<QtResourceDialog>(resource, ownerWidget);
    if (!dialog->IsLoaded())
        return WindowHandle::None;
    QtResourceDialog* made = dialog.release();
    const WindowHandle handle = windows.Add({made, nullptr, nullptr, nullptr, {}});
    windows.Find(handle)->destroy = [this, handle] { Remove(handle); };
    open[handle].dialog = made;
    QObject::connect(made, &QObject::destroyed, [this, handle] {
        open.erase(handle);
        windows.Remove(handle);
    });
    made->SetHandler([&procedure, handle](int controlId, Notification notification) {
        procedure.Command(handle, controlId, notification);
    });
    procedure.Initialize(handle);
    return handle;
}

/// The dialog may be in the middle of reporting the very command that ends it.
void QtDialogs::State::Remove(WindowHandle handle) {
    const auto found = open.find(handle);
    if (found == open.end())
        return;
    QtResourceDialog* dialog = found->second.dialog;
    open.erase(found);
    windows.Remove(handle);
    messages.Forget(handle);
    dialog->disconnect();
    dialog->Silence();
    const QtMessageLoop::QtCall call(messages);
    dialog->hide();
    dialog->deleteLater();
}

WindowHandle QtDialogs::CreateModeless(int resource, WindowHandle owner, DialogProcedure& procedure) {
    const WindowHandle handle = m_state->Make(resource, owner, procedure);
    const auto found = m_state->open.find(handle);
    if (const auto* ownerEntry = m_state->windows.Find(owner);
        ownerEntry != nullptr && found != m_state->open.end())
        found->second.dialog->PlaceBeside(*ownerEntry->widget);
    return handle;
}

void QtDialogs::ShowModeless(WindowHandle dialog) {
    const QtMessageLoop::QtCall call(m_state->messages);
    if (const auto found = m_state->open.find(dialog); found != m_state->open.end())
        found->second.dialog->ShowAboveOwner();
}

void QtDialogs::DestroyModeless(WindowHandle dialog) {
    m_state->Remove(dialog);
}

int QtDialogs::RunModal(int resource, WindowHandle owner, DialogProcedure& procedure) {
    const WindowHandle handle = m_state->Make(resource, owner, procedure);
    if (handle == WindowHandle::None)
        return -1;
    QtResourceDialog& dialog = *m_state->open[handle].dialog;
    dialog.setWindowModality(Qt::WindowModal);
    if (dialog.property("showsEffectsInOwner").toBool() && dialog.parentWidget() != nullptr)
        dialog.PlaceOverOthersBeside(*dialog.parentWidget());
    ShowModeless(handle);
    const auto runs = [&] {
        const auto found = m_state->open.find(handle);
        return found != m_state->open.end() && !found->second.ended;
    };
    Message message;
    while (runs() && m_state->messages.WaitMessageInDialog(message))
        m_state->messages.Dispatch(message);
    const auto found = m_state->open.find(handle);
    const int result = found != m_state->open.end() ? found->second.result : 0;
    m_state->Remove(handle);
    return result;
}

void QtDialogs::EndModal(WindowHandle dialog, int result) {
    const auto found = m_state->open.find(dialog);
    if (found == m_state->open.end())
        return;
    found->second.ended = true;
    found->second.result = result;
    const QtMessageLoop::QtCall call(m_state->messages);
    found->second.dialog->hide();
    m_state->messages.Post({dialog}); // the loop of the dialog looks whether it has ended after every message
}

void QtDialogs::SetItemText(WindowHandle dialog, int controlId, const std::string& text) {
    const QtMessageLoop::QtCall call(m_state->messages);
    const QString shown = QString::fromStdString(text);
    if (auto* edit = m_state->Item<QLineEdit>(dialog, controlId)) {
        edit->setText(shown);
        edit->setCursorPosition(0); // a long text shows its beginning
    } else if (auto* button = m_state->Item<QAbstractButton>(dialog, controlId)) {
        button->setText(shown);
    } else if (auto* label = m_state->Item<QLabel>(dialog, controlId)) {
        label->setText(shown);
    }
}

std::string QtDialogs::ItemText(WindowHandle dialog, int controlId, std::size_t maximumBytes) {
    QString text;
    if (const auto* edit = m_state->Item<QLineEdit>(dialog, controlId))
        text = edit->text();
    else if (const auto* button = m_state->Item<QAbstractButton>(dialog, controlId))
        text = button->text();
    else if (const auto* label = m_state->Item<QLabel>(dialog, controlId))
        text = label->text();
    return WholeCharacters(text.toStdString(), maximumBytes);
}

void QtDialogs::SetChecked(WindowHandle dialog, int controlId, bool checked) {
    if (auto* button = m_state->Item<QAbstractButton>(dialog, controlId))
        button->setChecked(checked);
}

bool QtDialogs::IsChecked(WindowHandle dialog, int controlId) {
    const auto* button = m_state->Item<QAbstractButton>(dialog, controlId);
    return button != nullptr && button->isChecked();
}

void QtDialogs::AddChoice(WindowHandle dialog, int controlId, const std::string& text) {
    if (auto* combo = m_state->Item<QComboBox>(dialog, controlId)) {
        const int before = combo->currentIndex();
        combo->addItem(QString::fromStdString(text));
        combo->setCurrentIndex(before); // the first choice is not chosen by itself
    }
}

void QtDialogs::SelectChoice(WindowHandle dialog, int controlId, int index) {
    if (auto* combo = m_state->Item<QComboBox>(dialog, controlId))
        combo->setCurrentIndex(index);
}

int QtDialogs::SelectedChoice(WindowHandle dialog, int controlId) {
    const auto* combo = m_state->Item<QComboBox>(dialog, controlId);
    return combo != nullptr ? combo->currentIndex() : -1;
}

} // namespace tessaro
