#pragma once

#include "platform/serial_port.h"

namespace tessaro {

/// The settings that the driver of an open device has in force; false and errno when it tells none.
bool SettingsOfDriver(int device, SerialSettings& settings);

} // namespace tessaro
