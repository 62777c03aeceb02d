#pragma once

#include "imaging/frame_buffer.h"
#include "platform/picture.h"

namespace tessaro {

/// The picture at frameWidth x frameHeight: as it is when it has that size, otherwise stretched in both
/// directions (its aspect ratio is not kept). The picture must have at least one pixel. Integer arithmetic
/// only, so that every machine makes the same frame.
Picture StretchedToFrame(const Picture& picture);

/// Lays a picture into the frame, stretched to it where need be. The picture's top row becomes the frame's
/// last row.
void PictureToFrame(const Picture& picture, FrameBuffer& frame);

/// The frame as a picture of frameWidth x frameHeight, top row first: what the operator sees.
Picture FrameToPicture(const FrameBuffer& frame);

} // namespace tessaro
