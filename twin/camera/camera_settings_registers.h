#pragma once

#include "twin/camera/automatic_functions.h"
#include "twin/camera/pixel_formats.h"

#include <arv.h>
#include <cstdint>
#include <optional>
#include <string_view>

namespace tessaro {

/// The memory of a served camera, number by number.
class CameraRegisters {
public:
    explicit CameraRegisters(ArvFakeCamera* camera) : m_camera(camera) {}

    std::uint32_t Read(std::uint32_t address) const;
    void Write(std::uint32_t address, std::uint32_t value);
    void WriteText(std::uint32_t address, std::string_view text); // up to 31 bytes
    void WriteLong(std::uint32_t address, std::uint64_t value);

    /// Clients can write any bits: what is no number reads as the lower bound, the rest is kept within.
    double ReadFloat(std::uint32_t address, const Bounds& bounds) const;
    void WriteFloat(std::uint32_t address, double value);
    int ReadLength(std::uint32_t address, int minimum, int maximum) const;

private:
    ArvFakeCamera* m_camera;
};

/// What clients have set. Safe whatever they wrote.
CameraSettings ReadSettings(const CameraRegisters& registers);

void WriteSettings(CameraRegisters& registers, const CameraSettings& settings);

/// Everything as after switching the camera on.
void WritePowerUpState(CameraRegisters& registers, const SensorSize& sensor);

/// What else clients can write, brought back within its bounds: the image lies on the sensor and has a format
/// that there is; how frames are taken and sent makes sense; what clients must not change is as it was.
void KeepWithinBounds(CameraRegisters& registers, const SensorSize& sensor);

inline constexpr int smallestImageSide = 16;

/// Nothing for numbers that stand for none of the camera's formats.
std::optional<PixelFormat> PixelFormatOf(std::uint32_t value);

} // namespace tessaro
