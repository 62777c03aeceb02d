#pragma once

#include "app/program_options.h"
#include "platform/serial_port.h"

#include <memory>

namespace tessaro {

/// The serial lines among which the stage is looked for as the command line asks: at one path, nowhere, or
/// under the number of the settings.
std::unique_ptr<SerialPorts> ChooseSerialPorts(const ProgramOptions& options);

} // namespace tessaro
