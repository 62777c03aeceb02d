#pragma once

#include "platform/message.h"

namespace tessaro {

/// The windows that stand while the program runs; None while one is not there.
struct ProgramWindows {
    WindowHandle main = WindowHandle::None;
    WindowHandle motorController = WindowHandle::None;
    WindowHandle controlPanel = WindowHandle::None;
    WindowHandle portConfiguration = WindowHandle::None;
};

} // namespace tessaro
