#pragma once

class QDialog;

namespace tessaro {

class QtMessageLoop;

/// Shows one of Qt's own dialogs, keeps all other windows from being used, and dispatches messages until it
/// is finished or the program is to end. The owner of the dialog may go away meanwhile, and the dialog with
/// it.
void RunQtModal(QDialog& dialog, QtMessageLoop& messages);

} // namespace tessaro
