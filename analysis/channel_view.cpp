#include "analysis/channel_view.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <new>

namespace tessaro {
namespace {

void CopyChannel(const FrameBuffer& frame, std::size_t byte, std::uint8_t* view) {
    for (std::size_t offset = byte; offset < frameByteCount; offset += bytesPerPixel)
        view[offset] = frame.Data()[offset];
}

} // namespace

int ShowChannel(Screen& screen, const FrameBuffer& frame, int mode) {
    const std::unique_ptr<std::uint8_t[]> view(new (std::nothrow) std::uint8_t[frameByteCount]());
    if (view == nullptr)
        return 1;
    switch (mode) {
    case channel_view::redOnly:
        CopyChannel(frame, 2, view.get());
        break;
    case channel_view::greenOnly:
        CopyChannel(frame, 1, view.get());
        break;
    case channel_view::blueOnly:
        CopyChannel(frame, 0, view.get());
        break;
    case channel_view::allChannels:
        std::copy_n(frame.Data(), frameByteCount, view.get());
        break;
    default:
        break;
    }
    screen.ShowBuffer(view.get());
    return 1;
}

} // namespace tessaro
