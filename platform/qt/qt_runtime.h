#pragma once

#include <memory>

namespace tessaro {

/// What Qt needs before it can draw text: one application object, here for programs without a display.
///
/// It takes the "offscreen" platform whatever DISPLAY and QT_QPA_PLATFORM say, leaves the program's arguments
/// alone, and keeps the decimal point of the C library. Make one in main, before the first QtDrawingSurface
/// draws and before other threads start; a program has one at a time.
class QtRuntime {
public:
    QtRuntime();
    ~QtRuntime();
    QtRuntime(const QtRuntime&) = delete;
    QtRuntime& operator=(const QtRuntime&) = delete;

private:
    struct Application;
    std::unique_ptr<Application> m_application;
};

} // namespace tessaro
