#pragma once

#include <cstdint>

namespace tessaro {

/// What the main window remembers between messages.
struct MainWindowState {
    std::int32_t firstPaint = 1;  // until the window has been painted once
    std::int32_t keyBusy = 0;     // a key is being handled; others that arrive meanwhile are dropped
    std::int32_t enter_count = 0; // back at 0 after every save
    std::int32_t keyStep = 400;   // um that an arrow key moves the stage
};

} // namespace tessaro
