#include "stage/motor_controller.h"

namespace tessaro {

bool MotorController::HandleMessage(const Message& message) {
    if (message.kind != MessageKind::Close)
        return false;
    m_windows.Hide(message.window);
    return true;
}

} // namespace tessaro
