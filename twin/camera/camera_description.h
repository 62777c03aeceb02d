#pragma once

#include <string_view>

namespace tessaro {

/// The text of camera_description.xml: the camera's features after GenICam.
std::string_view CameraDescription();

} // namespace tessaro
