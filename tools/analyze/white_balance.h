#pragma once

#include "imaging/frame_buffer.h"
#include "platform/picture.h"

namespace tessaro {

/// The picture as a frame, red and blue scaled first so that the substrate's dominant intensity in them
/// becomes green's, or comes as near as it can, as a camera's white balance would have done. A channel whose
/// dominant intensity is 0 cannot be scaled and stays as it is.
void BalancedFrame(const Picture& picture, FrameBuffer& frame);

} // namespace tessaro
