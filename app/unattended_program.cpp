#include "app/unattended_program.h"

#include "app/interruptible_messages.h"
#include "app/printed_message_boxes.h"
#include "app/program.h"
#include "app/unattended_scan.h"
#include "scan/scan_listeners.h"

namespace tessaro {

int RunUnattendedProgram(Globals& globals, const UserInterface& ui, const Devices& devices,
                         const Listeners& listeners, const UnattendedScan& scan,
                         const UnattendedConsole& console) {
    TerminalStatus terminal(console.output, console.columns);
    InterruptibleMessages messages(ui.messages, globals.scan, globals.windows, console.interrupted);
    PrintedMessageBoxes boxes([&](std::string_view line) { terminal.Say(line); },
                              [&] { return messages.LastIsStop(); });
    const UserInterface unattended = {ui.clock,   messages,   ui.windows, ui.dialogs, boxes,
                                      ui.chooser, ui.drawing, ui.folders, ui.pictures};
    UnattendedScanRun run(scan, console.interrupted);
    ScanListeners scanListeners({listeners.scan, &run});
    Listeners all = listeners;
    all.scan = &scanListeners;
    all.status = &terminal;
    RunProgram(globals, unattended, devices, all, &run);
    run.Tell(terminal, console.errors);
    return run.ExitCode();
}

} // namespace tessaro
