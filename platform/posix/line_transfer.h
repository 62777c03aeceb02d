#pragma once

#include "platform/serial_port.h"

#include <cstdint>
#include <span>

namespace tessaro {

/// How far a transfer came.
struct LineTransfer {
    std::uint32_t count = 0; // bytes
    int error = 0;           // the system's number; 0 unless the line is broken
};

/// Reads and writes on a terminal device that is open without blocking, as SerialPorts promises them. They
/// wait in the system for this device alone: no event loop turns, and a line that hung up ends them at once.
LineTransfer ReadFromLine(int device, std::span<std::uint8_t> bytes, const SerialTimeouts& timeouts);
LineTransfer WriteToLine(int device, std::span<const std::uint8_t> bytes, const SerialTimeouts& timeouts);

} // namespace tessaro
