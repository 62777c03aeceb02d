#pragma once

#include "app/globals.h"
#include "focus/focus_curve.h"
#include "platform/devices.h"
#include "platform/user_interface.h"

namespace tessaro {

/// The operator's program from start-up to shutdown, on one set of adapters and devices. Returns the exit
/// code; 0, with nothing read or written, when the main window cannot be made.
/// What the searches for the focus see goes to `focusCurve`, if there is one.
int RunProgram(Globals& globals, const UserInterface& ui, const Devices& devices,
               FocusCurve* focusCurve = nullptr);

} // namespace tessaro
