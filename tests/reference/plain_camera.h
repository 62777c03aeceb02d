#pragma once

#include "platform/camera_device.h"
#include "platform/clock.h"

#include <cstdint>
#include <vector>

namespace tessaro::reference {

/// A camera session, and taking a frame as it is defined, step by step.
struct PlainCamera {
    static constexpr int size = 2464 * 2056;

    std::vector<std::uint8_t> working = std::vector<std::uint8_t>(size);
    std::int32_t present = 0;
    std::vector<std::uint8_t> raw = std::vector<std::uint8_t>(size);
    std::vector<std::uint8_t> converted = std::vector<std::uint8_t>(size);
    std::vector<std::uint16_t> accumulator = std::vector<std::uint16_t>(size);
    CameraDevice* camera = nullptr;
    GrabResult grabResult;
    std::int32_t byteCount = size;
    std::uint16_t p00 = 0;
    std::uint16_t p01 = 0;
    std::uint16_t p10 = 0;
    std::uint16_t p11 = 0;
    std::int32_t sourceIndex = 0;
    std::int32_t targetIndex = 0;
    std::int32_t width = 2464;
    std::int32_t height = 2056;
    std::int32_t phase = 0;

    void GrabFrame(int frames, Clock& clock);
    void ConvertBayerFrame();

private:
    bool TryImage(int frames, int summed, Clock& clock);
    void ShowTestPattern();
};

} // namespace tessaro::reference
