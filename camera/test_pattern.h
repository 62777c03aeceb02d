#pragma once

#include "camera/camera_session.h"

namespace tessaro {

/// The moving picture that stands in for a frame that could not be taken: byte i of the working frame, with
/// x = i mod 2464 and y = i / 2464, is ((x + phase) / 3) mod 255 + (y / 2) mod 255, its low 8 bits, after the
/// phase has grown by 50.
void DrawTestPattern(CameraSession& session);

} // namespace tessaro
