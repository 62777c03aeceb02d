#include "app/stage_choice.h"

#include "platform/qt/qt_serial_port.h"
#include "platform/standard/absent_serial_ports.h"

namespace tessaro {

std::unique_ptr<SerialPorts> ChooseSerialPorts(const ProgramOptions& options) {
    if (options.stagePort == noDevice)
        return std::make_unique<AbsentSerialPorts>();
    return std::make_unique<QtSerialPorts>(options.stagePort);
}

} // namespace tessaro
