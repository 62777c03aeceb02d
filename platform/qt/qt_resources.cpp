#include "platform/qt/qt_resources.h"

#include "ui_about_103.h"
#include "ui_contrast_configuration_129.h"
#include "ui_control_panel_137.h"
#include "ui_menu_109.h"
#include "ui_port_configuration_141.h"
#include "ui_stage_configuration_130.h"

#include <QDialog>
#include <QFile>
#include <QIcon>
#include <QMainWindow>

namespace tessaro {
namespace {

template<typename Form>
bool SetUp(QDialog& dialog) {
    Form().setupUi(&dialog);
    return true;
}

} // namespace

bool LoadDialog(int resource, QDialog& dialog) {
    switch (resource) {
    case 103:
        return SetUp<Ui::AboutBox>(dialog);
    case 129:
        return SetUp<Ui::ContrastConfiguration>(dialog);
    case 130:
        return SetUp<Ui::StageConfiguration>(dialog);
    case 137:
        return SetUp<Ui::ControlPanel>(dialog);
    case 141:
        return SetUp<Ui::PortConfiguration>(dialog);
    default:
        return false;
    }
}

bool LoadMenu(int resource, QMainWindow& window) {
    if (resource != 109)
        return false;
    const QString title = window.windowTitle();
    Ui::MainMenu menu;
    menu.setupUi(&window);
    window.setWindowTitle(title);
    return true;
}

QIcon LoadIcon(int resource) {
    const QString file = QStringLiteral(":/resources/icon_%1.png").arg(resource);
    return QFile::exists(file) ? QIcon(file) : QIcon();
}

bool HasAccelerators(int resource) {
    return QFile::exists(QStringLiteral(":/resources/accelerators_%1.txt").arg(resource));
}

} // namespace tessaro
