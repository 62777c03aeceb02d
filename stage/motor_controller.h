#pragma once

#include "platform/window_system.h"

namespace tessaro {

/// The popup window for moving the stage by hand. It stands for the whole run; closing only hides it.
class MotorController : public WindowProcedure {
public:
    explicit MotorController(WindowSystem& windows) : m_windows(windows) {}

    bool HandleMessage(const Message& message) override;

private:
    WindowSystem& m_windows;
};

} // namespace tessaro
