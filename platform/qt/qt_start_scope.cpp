#include "platform/qt/qt_start_scope.h"

#include <QString>
#include <QtGlobal>

#include <clocale>
#include <cstdio>
#include <cstdlib>

namespace tessaro {
namespace {

QtMessageHandler handlerAtStart = nullptr;

void PassOtherMessages(QtMsgType type, const QMessageLogContext& context, const QString& text) {
    if (type == QtFatalMsg) {
        // Without a display Qt would end the program with a core dump.
        std::fprintf(stderr, "%s\n", text.toLocal8Bit().constData());
        std::_Exit(EXIT_FAILURE);
    }
    if (!text.startsWith(QLatin1String("QStandardPaths: XDG_RUNTIME_DIR")))
        handlerAtStart(type, context, text);
}

} // namespace

QtStartScope::QtStartScope() : m_localeAtStart(std::setlocale(LC_ALL, nullptr)) {
    handlerAtStart = qInstallMessageHandler(PassOtherMessages);
}

QtStartScope::~QtStartScope() {
    qInstallMessageHandler(handlerAtStart);
    const std::string userEncoding = std::setlocale(LC_CTYPE, nullptr);
    std::setlocale(LC_ALL, m_localeAtStart.c_str());
    std::setlocale(LC_CTYPE, userEncoding.c_str());
}

} // namespace tessaro
