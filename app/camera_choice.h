#pragma once

#include "app/program_options.h"
#include "platform/camera_device.h"

#include <memory>
#include <variant>

namespace tessaro {

/// The adapter for the camera that the command line asks for: none, that of the camera vendor's runtime,
/// which is the usual one where it is built in, or Aravis.
std::variant<std::unique_ptr<CameraRuntime>, OptionError> ChooseCameras(const ProgramOptions& options);

} // namespace tessaro
