#pragma once

#include "platform/serial_port.h"

namespace tessaro {

/// The settings that the driver of an open device has in force; false and errno when it tells none.
bool SettingsOfDriver(int device, SerialSettings& settings);

/// A pseudo-terminal that a program opened for itself alone stays closed to everybody when that program is
/// killed, for as long as its other end lives; other devices are free then. This lets others open it again.
void ShareIfPseudoTerminal(int device);

} // namespace tessaro
