#pragma once

#include "platform/user_interface.h"

#include <memory>

namespace tessaro {

/// All adapters of the operator's program on Qt, with the application object behind them. One at a time; it
/// must outlive what uses it. Needs a display, or QT_QPA_PLATFORM=offscreen.
class QtUserInterface {
public:
    QtUserInterface();
    ~QtUserInterface();
    QtUserInterface(const QtUserInterface&) = delete;
    QtUserInterface& operator=(const QtUserInterface&) = delete;

    UserInterface Adapters();

private:
    struct State;
    std::unique_ptr<State> m_state;
};

} // namespace tessaro
