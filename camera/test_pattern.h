#pragma once

#include "camera/camera_session.h"

namespace tessaro {

/// The moving picture that stands in for a frame that could not be taken: byte i of the working frame, with
/// x = i mod width and y = i / width, is ((x + phase) / 3) mod 255 + (y / 2) mod 255, its low 8 bits, after
/// the phase has grown by 50. The width is the session's, which is that of an image where a grab broke off
/// after one; where that has none, the sensor's.
void DrawTestPattern(CameraSession& session);

} // namespace tessaro
