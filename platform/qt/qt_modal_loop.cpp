#include "platform/qt/qt_modal_loop.h"

#include "platform/qt/qt_message_loop.h"

#include <QDialog>

namespace tessaro {

void RunQtModal(QDialog& dialog, QtMessageLoop& messages) {
    if (messages.HasQuit())
        return; // there is nobody left to answer
    bool finished = false;
    const auto finish = [&] {
        finished = true;
        messages.Post({}); // so that the loop below looks again
    };
    const QObject untilReturn;
    QObject::connect(&dialog, &QDialog::finished, &untilReturn, finish);
    QObject::connect(&dialog, &QObject::destroyed, &untilReturn, finish);
    dialog.setWindowModality(Qt::ApplicationModal);
    dialog.show();
    Message message;
    while (!finished && messages.WaitMessageInDialog(message))
        messages.Dispatch(message);
}

} // namespace tessaro
