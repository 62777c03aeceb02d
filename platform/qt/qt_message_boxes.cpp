#include "platform/qt/qt_message_boxes.h"

#include "platform/qt/qt_modal_loop.h"
#include "platform/qt/qt_window_table.h"

#include <QMessageBox>
#include <QPointer>
#include <QPushButton>

namespace tessaro {
namespace {

// The boxes belong to their owner, which may go away while they are shown.

QWidget* OwnerWidget(QtWindowTable& windows, WindowHandle owner) {
    const QtWindowTable::Entry* entry = windows.Find(owner);
    return entry != nullptr ? entry->widget : nullptr;
}

QString Text(const std::string& text) {
    return QString::fromStdString(text);
}

} // namespace

bool QtMessageBoxes::AskYesNo(WindowHandle owner, const std::string& text, const std::string& caption) {
    const QPointer<QMessageBox> box =
        new QMessageBox(QMessageBox::Question, Text(caption), Text(text), QMessageBox::Yes | QMessageBox::No,
                        OwnerWidget(m_windows, owner));
    box->setTextFormat(Qt::PlainText);
    box->setDefaultButton(QMessageBox::Yes);
    box->setEscapeButton(QMessageBox::No);
    RunQtModal(*box, m_messages);
    const bool yes = !box.isNull() && box->clickedButton() == box->button(QMessageBox::Yes);
    delete box;
    return yes;
}

void QtMessageBoxes::ShowWarning(WindowHandle owner, const std::string& text, const std::string& caption) {
    const QPointer<QMessageBox> box = new QMessageBox(QMessageBox::Warning, Text(caption), Text(text),
                                                      QMessageBox::Ok, OwnerWidget(m_windows, owner));
    box->setTextFormat(Qt::PlainText);
    RunQtModal(*box, m_messages);
    delete box;
}

} // namespace tessaro
