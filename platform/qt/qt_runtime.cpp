#include "platform/qt/qt_runtime.h"

#include <QGuiApplication>
#include <QString>

#include <array>
#include <clocale>
#include <string>

namespace tessaro {

namespace {

/// Qt adopts the user's locale for the whole C library; with it numbers would be printed with a decimal
/// comma.
class NumericLocaleKeeper {
public:
    NumericLocaleKeeper() : m_name(std::setlocale(LC_NUMERIC, nullptr)) {}
    ~NumericLocaleKeeper() { std::setlocale(LC_NUMERIC, m_name.c_str()); }
    NumericLocaleKeeper(const NumericLocaleKeeper&) = delete;
    NumericLocaleKeeper& operator=(const NumericLocaleKeeper&) = delete;

private:
    std::string m_name;
};

QtMessageHandler handlerAtStart = nullptr;

/// Without a login session (a container, a timer job) Qt remarks that it has no folder for sockets, which it
/// does not need here; the operator's terminal is spared that.
class StartMessageFilter {
public:
    StartMessageFilter() { handlerAtStart = qInstallMessageHandler(Pass); }
    ~StartMessageFilter() { qInstallMessageHandler(handlerAtStart); }
    StartMessageFilter(const StartMessageFilter&) = delete;
    StartMessageFilter& operator=(const StartMessageFilter&) = delete;

private:
    static void Pass(QtMsgType type, const QMessageLogContext& context, const QString& text) {
        if (!text.startsWith(QLatin1String("QStandardPaths: XDG_RUNTIME_DIR")))
            handlerAtStart(type, context, text);
    }
};

} // namespace

struct QtRuntime::Application {
    // Arguments win over the environment. The empty theme keeps a desktop theme from looking for a display.
    std::string program = "tessaro";
    std::string platformOption = "-platform";
    std::string platform = "offscreen";
    std::string themeOption = "-platformtheme";
    std::string theme;
    std::array<char*, 6> arguments{program.data(),     platformOption.data(), platform.data(),
                                   themeOption.data(), theme.data(),          nullptr};
    // Qt keeps a reference to the count, and removes from both what it has understood.
    int argumentCount = static_cast<int>(arguments.size()) - 1;
    QGuiApplication qt{argumentCount, arguments.data()};
};

QtRuntime::QtRuntime() {
    const NumericLocaleKeeper keeper;
    const StartMessageFilter filter;
    m_application = std::make_unique<Application>();
}

QtRuntime::~QtRuntime() = default;

} // namespace tessaro
