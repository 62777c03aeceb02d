#pragma once

#include "app/globals.h"
#include "app/services.h"
#include "platform/devices.h"
#include "platform/user_interface.h"

namespace tessaro {

/// The operator's program from start-up to shutdown, on one set of adapters and devices. Returns the exit
/// code; 0, with nothing read or written, when the main window cannot be made.
int RunProgram(Globals& globals, const UserInterface& ui, const Devices& devices,
               const Listeners& listeners = {});

} // namespace tessaro
