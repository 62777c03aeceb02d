#pragma once

#include "imaging/frame_buffer.h"

#include <cstdint>
#include <span>

namespace tessaro {

/// The frame that the operator's program makes of a mosaic of the twin's size: each cell one pixel, red its
/// top left, green the mean of the two, blue its bottom right. A mosaic of another size leaves the frame
/// alone.
void MosaicToFrame(std::span<const std::uint8_t> mosaic, FrameBuffer& frame);

} // namespace tessaro
