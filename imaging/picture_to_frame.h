#pragma once

#include "imaging/frame_buffer.h"
#include "platform/picture.h"

namespace tessaro {

/// Lays a picture into the frame: pixel by pixel when it has the frame's size, otherwise stretched to it in
/// both directions (its aspect ratio is not kept). The picture's top row becomes the frame's last row. The
/// picture must have at least one pixel. Integer arithmetic only, so that every machine makes the same frame.
void PictureToFrame(const Picture& picture, FrameBuffer& frame);

/// The frame as a picture of frameWidth x frameHeight, top row first: what the operator sees.
Picture FrameToPicture(const FrameBuffer& frame);

} // namespace tessaro
