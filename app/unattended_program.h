#pragma once

#include "app/globals.h"
#include "app/services.h"
#include "app/terminal_status.h"
#include "app/unattended_options.h"
#include "platform/devices.h"
#include "platform/user_interface.h"

#include <functional>

namespace tessaro {

/// What a program without an operator has in place of one.
struct UnattendedConsole {
    WriteText output;
    TerminalWidth width; // of the terminal that the output goes to
    WriteText errors;
    std::function<bool()> interrupted; // from outside: the scan is to end
};

/// The operator's program from start-up to shutdown, with one scan in between and nobody to answer it: what
/// it says goes to the console, its questions too. Returns one of unattended_exit.
int RunUnattendedProgram(Globals& globals, const UserInterface& ui, const Devices& devices,
                         const Listeners& listeners, const UnattendedScan& scan,
                         const UnattendedConsole& console);

} // namespace tessaro
