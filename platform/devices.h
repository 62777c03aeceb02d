#pragma once

#include "platform/camera_device.h"
#include "platform/serial_port.h"

namespace tessaro {

/// The microscope's devices, as main picks their adapters for the operator's program.
struct Devices {
    CameraRuntime& cameras;
    SerialPorts& serial;
};

} // namespace tessaro
