#pragma once

#include "app/globals.h"
#include "app/services.h"
#include "app/unattended_scan.h"
#include "platform/devices.h"
#include "platform/user_interface.h"

namespace tessaro {

/// The operator's program from start-up to shutdown, on one set of adapters and devices. Returns the exit
/// code; 0, with nothing read or written, when the main window cannot be made.
/// With a scan of its own to run it does not wait for messages.
int RunProgram(Globals& globals, const UserInterface& ui, const Devices& devices,
               const Listeners& listeners = {}, UnattendedScanRun* unattended = nullptr);

} // namespace tessaro
