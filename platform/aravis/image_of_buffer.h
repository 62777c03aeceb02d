#pragma once

#include "platform/camera_device.h"

#include <arv.h>

namespace tessaro {

/// The picture that a camera set to `width` x `height` sent into `buffer`. One with packets missing has not
/// succeeded; a whole one of another shape would be a wrong picture, and is an error.
GrabResult::Image ImageOf(ArvBuffer* buffer, int width, int height);

} // namespace tessaro
