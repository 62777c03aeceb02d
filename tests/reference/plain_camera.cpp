#include "reference/plain_camera.h"

#include <algorithm>

namespace tessaro::reference {

void PlainCamera::GrabFrame(int frames, Clock& clock) {
    const int n = frames < 1 ? 1 : frames;
    if (present == 0) {
        ShowTestPattern();
        return;
    }
    try {
        camera->StartGrabbing(n);
        int summed = 0;
        for (int k = 0; k < n; ++k) {
            if (!TryImage(n, summed, clock))
                continue;
            width = grabResult.GetWidth();
            height = grabResult.GetHeight();
            // Limited, against images of another size, to what was sent and what the buffers hold.
            const std::int64_t product = std::int64_t{width} * height;
            const auto sent = static_cast<std::int64_t>(grabResult.GetBuffer().size());
            byteCount = static_cast<std::int32_t>(
                std::max<std::int64_t>(0, std::min<std::int64_t>({product, sent, size})));
            for (std::size_t i = 0; i < static_cast<std::size_t>(byteCount); ++i) {
                const std::uint8_t sample = grabResult.GetBuffer()[i];
                accumulator[i] = static_cast<std::uint16_t>(k == 0 ? sample : accumulator[i] + sample);
            }
            ++summed;
        }
        for (std::size_t i = 0; i < static_cast<std::size_t>(byteCount); ++i)
            raw[i] = static_cast<std::uint8_t>(accumulator[i] / n);
        ConvertBayerFrame();
        for (std::size_t i = 0; i < static_cast<std::size_t>(byteCount); ++i)
            working[i] = converted[i];
    } catch (const CameraError&) {
        ShowTestPattern();
    }
}

/// Whether a whole image came.
bool PlainCamera::TryImage(int frames, int summed, Clock& clock) {
    for (int attempt = 0; attempt < 1000; ++attempt) {
        if (camera->IsGrabbing()) {
            grabResult = camera->RetrieveResult(0xFFFFFFFF);
            if (grabResult.GrabSucceeded())
                return true;
            if (summed == frames)
                return false;
        } else {
            camera->StartGrabbing(frames);
            clock.Sleep(10);
        }
    }
    return false;
}

void PlainCamera::ConvertBayerFrame() {
    width = 2464;
    height = 2056;
    for (int y = 0; y < height; y += 2) {
        for (int x = 0; x < width; x += 2) {
            int s = y * width + x;
            if (s > byteCount - 2 * width - 1)
                s = byteCount - 2 * width - 1;
            if (s < 0)
                s = 0;
            sourceIndex = s;
            const auto source = raw.begin() + s;
            p00 = source[0];
            p01 = source[1];
            p10 = source[width];
            p11 = source[width + 1];
            int t = (height - y - 2) * width + 2 * x;
            if (t > byteCount)
                t = byteCount;
            if (t < 0)
                t = 0;
            targetIndex = t;
            const auto target = converted.begin() + t;
            target[0] = static_cast<std::uint8_t>(p11);
            target[1] = static_cast<std::uint8_t>((p10 + p01) >> 1);
            target[2] = static_cast<std::uint8_t>(p00);
        }
    }
}

void PlainCamera::ShowTestPattern() {
    phase += 50;
    const int rowLength = width > 0 ? width : 2464;
    for (int i = 0; i < size; ++i) {
        const int x = i % rowLength;
        const int y = i / rowLength;
        const int value = ((x + phase) / 3) % 255 + (y / 2) % 255;
        working[static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(value & 0xFF);
    }
}

} // namespace tessaro::reference
