#include "platform/qt/qt_runtime.h"

#include "platform/qt/qt_start_scope.h"

#include <QGuiApplication>

#include <array>
#include <string>

namespace tessaro {

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
    const QtStartScope starting;
    m_application = std::make_unique<Application>();
}

QtRuntime::~QtRuntime() = default;

} // namespace tessaro
