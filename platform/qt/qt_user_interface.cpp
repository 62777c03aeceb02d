#include "platform/qt/qt_user_interface.h"

#include "platform/qt/qt_dialogs.h"
#include "platform/qt/qt_file_chooser.h"
#include "platform/qt/qt_message_boxes.h"
#include "platform/qt/qt_message_loop.h"
#include "platform/qt/qt_picture_files.h"
#include "platform/qt/qt_start_scope.h"
#include "platform/qt/qt_window_drawing.h"
#include "platform/qt/qt_window_system.h"
#include "platform/qt/qt_window_table.h"
#include "platform/standard/standard_clock.h"

#include <QApplication>
#include <QLocale>

#include <array>
#include <string>

namespace tessaro {
namespace {

/// Looks and behaves the same on every desktop.
class ProgramApplication {
public:
    ProgramApplication() {
        const QtStartScope starting;
        m_qt = std::make_unique<QApplication>(m_argumentCount, m_arguments.data());
        QLocale::setDefault(QLocale::c());
        QApplication::setStyle(QStringLiteral("Fusion"));
        QApplication::setQuitOnLastWindowClosed(false);
    }

private:
    std::string m_program = "tessaro";
    std::array<char*, 2> m_arguments{m_program.data(), nullptr};
    int m_argumentCount = 1; // Qt keeps references to both
    std::unique_ptr<QApplication> m_qt;
};

QtMessageHandler handlerOfOthers = nullptr;

void PassWhatConcernsUs(QtMsgType type, const QMessageLogContext& context, const QString& text) {
    if (type != QtWarningMsg || !text.startsWith(QLatin1String("This plugin does not support ")))
        handlerOfOthers(type, context, text);
}

/// Without a display windows cannot be raised or held in size: that is known, and no message for an operator.
class QuietOffscreen {
public:
    QuietOffscreen() {
        if (m_isOffscreen)
            handlerOfOthers = qInstallMessageHandler(PassWhatConcernsUs);
    }
    ~QuietOffscreen() {
        if (m_isOffscreen)
            qInstallMessageHandler(handlerOfOthers);
    }
    QuietOffscreen(const QuietOffscreen&) = delete;
    QuietOffscreen& operator=(const QuietOffscreen&) = delete;

private:
    const bool m_isOffscreen = QGuiApplication::platformName() == QLatin1String("offscreen");
};

} // namespace

struct QtUserInterface::State {
    ProgramApplication application;
    QuietOffscreen quiet;
    StandardClock clock;
    QtWindowTable table;
    QtMessageLoop messages{table};
    QtDialogs dialogs{table, messages};
    QtWindowSystem windows{table, messages};
    QtMessageBoxes boxes{table, messages};
    QtFileChooser chooser{messages};
    QtWindowDrawing drawing{table};
    QtPictureFiles pictures;
};

QtUserInterface::QtUserInterface() : m_state(std::make_unique<State>()) {}

QtUserInterface::~QtUserInterface() = default;

UserInterface QtUserInterface::Adapters() {
    State& state = *m_state;
    return {state.clock,   state.messages, state.windows,   state.dialogs, state.boxes,
            state.chooser, state.drawing,  NativeFolders(), state.pictures};
}

} // namespace tessaro
