#pragma once

#include "imaging/screen_view.h"

#include <cstdint>

namespace tessaro {

/// What a view of the frame shows.
namespace channel_view {
inline constexpr int redOnly = 1;
inline constexpr int greenOnly = 2;
inline constexpr int blueOnly = 3;
inline constexpr int allChannels = 4;
} // namespace channel_view

/// Shows one channel of the frame in its own colour, or all of it; black for any other mode. The
/// window stays as it is when there is no memory for the view. Returns 1.
int ShowChannel(Screen& screen, const FrameBuffer& frame, int mode);

} // namespace tessaro
