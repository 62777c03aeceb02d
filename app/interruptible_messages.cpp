#include "app/interruptible_messages.h"

#include "app/resource_ids.h"

namespace tessaro {

bool InterruptibleMessages::TakeMessage(Message& message, std::uint32_t milliseconds) {
    m_lastIsStop = false;
    if (m_scan.scanning == 1 && m_scan.stopRequested == 0 && m_interrupted()) {
        message = {m_windows.main, MessageKind::Command, command::stop};
    } else if (!m_messages.TakeMessage(message, milliseconds)) {
        return false;
    }
    m_lastIsStop = message.kind == MessageKind::Command && LowWord(message.parameter) == command::stop;
    return true;
}

} // namespace tessaro
