#pragma once

class QDialog;
class QIcon;
class QMainWindow;

namespace tessaro {

/// Lays out the dialog of that number, with ids on its controls (property "controlId"). False: there is none.
bool LoadDialog(int resource, QDialog& dialog);

/// Gives the window the menu of that number, with ids on its actions (property "commandId"). False: there is
/// none.
bool LoadMenu(int resource, QMainWindow& window);

/// An empty icon when there is none of that number.
QIcon LoadIcon(int resource);

bool HasAccelerators(int resource);

} // namespace tessaro
