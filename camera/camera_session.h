#pragma once

#include "imaging/frame_buffer.h"
#include "platform/camera_device.h"

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

namespace tessaro {

inline constexpr int sensorWidth = 2464;
inline constexpr int sensorHeight = 2056;
inline constexpr int sensorByteCount =
    sensorWidth * sensorHeight; // 8 bits a sample; as many as the frame's bytes
static_assert(sensorByteCount == frameByteCount);

/// Modes of ControlCamera. The program uses the first.
namespace camera_mode {
inline constexpr int openAndAdjust = 1;
inline constexpr int adjustOnce = 2;
inline constexpr int takeSingleFrame = 3;
inline constexpr int applyStored = 4;
} // namespace camera_mode

/// The camera and its buffers. The frame that display and analysis read is `workingFrame`.
struct CameraSession {
    FrameBuffer workingFrame;
    std::int32_t present = 0; // 1 = there is a camera
    std::vector<std::uint8_t> rawFrame =
        std::vector<std::uint8_t>(sensorByteCount); // the mean, a byte a sample
    FrameBuffer convertedFrame;                     // made from the raw frame
    std::vector<std::uint16_t> accumulator = std::vector<std::uint16_t>(sensorByteCount); // sums of exposures
    std::unique_ptr<CameraDevice> camera;
    GrabResult grabResult;                    // the last; goes before the camera that it came from
    std::array<char, 100> statusText = {};    // scratch
    std::int32_t byteCount = sensorByteCount; // samples of the last image, at most the sensor's
    std::uint16_t p00 = 0;                    // the 2 x 2 samples that are being converted
    std::uint16_t p01 = 0;
    std::uint16_t p10 = 0;
    std::uint16_t p11 = 0;
    std::int32_t sourceIndex = 0;
    std::int32_t targetIndex = 0;
    std::int32_t width = sensorWidth; // of the last image, until it is converted
    std::int32_t height = sensorHeight;

    std::uint32_t testPatternPhase = 0; // grows with every frame that could not be taken
    std::int32_t patternStandsIn = 0;   // 1 = the last frame could not be taken

    // What mode 4 applies: what mode 2 found last, before that a moderate light without amplification.
    double storedGain = 0.0;
    double storedExposureTimeUs = 10'000.0;
};

} // namespace tessaro
