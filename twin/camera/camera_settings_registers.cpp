#include "twin/camera/camera_settings_registers.h"

#include "twin/camera/camera_registers.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstddef>

namespace tessaro {
namespace {

namespace reg = camera_register;

constexpr std::uint32_t defaultFramePeriodUs = 25'000;
constexpr int smallestRegionSide = 2;
constexpr int shortestFramePeriodUs = 1'000;
constexpr int longestFramePeriodUs = 10'000'000;
constexpr std::uint32_t smallestPacketBytes = 576;
constexpr std::uint32_t largestPacketBytes = 65'000; // loopback takes packets of nearly 64 KiB

std::uint64_t BigEndian(std::uint64_t value) {
    return GUINT64_TO_BE(value);
}

AutomaticMode ReadMode(const CameraRegisters& registers, std::uint32_t address) {
    const std::uint32_t value = registers.Read(address);
    return value <= static_cast<std::uint32_t>(AutomaticMode::Continuous) ? AutomaticMode(value)
                                                                          : AutomaticMode::Off;
}

std::uint32_t RegionRegister(std::uint32_t first, std::size_t region) {
    return first + static_cast<std::uint32_t>(region) * reg::regionStep;
}

SensorRegion ReadRegion(const CameraRegisters& registers, std::size_t i) {
    SensorRegion region = {.useBrightness = registers.Read(RegionRegister(reg::regionUseBrightness, i)) != 0,
                           .useWhiteBalance =
                               registers.Read(RegionRegister(reg::regionUseWhiteBalance, i)) != 0};
    region.width =
        registers.ReadLength(RegionRegister(reg::regionWidth, i), smallestRegionSide, twinSensorWidth);
    region.height =
        registers.ReadLength(RegionRegister(reg::regionHeight, i), smallestRegionSide, twinSensorHeight);
    region.offsetX =
        registers.ReadLength(RegionRegister(reg::regionOffsetX, i), 0, twinSensorWidth - region.width);
    region.offsetY =
        registers.ReadLength(RegionRegister(reg::regionOffsetY, i), 0, twinSensorHeight - region.height);
    return region;
}

void WriteRegion(CameraRegisters& registers, std::size_t i, const SensorRegion& region) {
    registers.Write(RegionRegister(reg::regionOffsetX, i), static_cast<std::uint32_t>(region.offsetX));
    registers.Write(RegionRegister(reg::regionOffsetY, i), static_cast<std::uint32_t>(region.offsetY));
    registers.Write(RegionRegister(reg::regionWidth, i), static_cast<std::uint32_t>(region.width));
    registers.Write(RegionRegister(reg::regionHeight, i), static_cast<std::uint32_t>(region.height));
    registers.Write(RegionRegister(reg::regionUseBrightness, i), region.useBrightness ? 1 : 0);
    registers.Write(RegionRegister(reg::regionUseWhiteBalance, i), region.useWhiteBalance ? 1 : 0);
}

std::uint32_t BalanceRegister(std::size_t channel) {
    return reg::balanceRatioFloat64 + static_cast<std::uint32_t>(channel) * reg::balanceRatioStep;
}

/// Reads a number that has to lie within bounds and writes it back so.
int KeepWithin(CameraRegisters& registers, std::uint32_t address, int minimum, int maximum) {
    const int kept = registers.ReadLength(address, minimum, maximum);
    registers.Write(address, static_cast<std::uint32_t>(kept));
    return kept;
}

void KeepImageOnSensor(CameraRegisters& registers, const SensorSize& sensor) {
    const int width = KeepWithin(registers, reg::width, smallestImageSide, sensor.width);
    const int height = KeepWithin(registers, reg::height, smallestImageSide, sensor.height);
    KeepWithin(registers, reg::offsetX, 0, sensor.width - width);
    KeepWithin(registers, reg::offsetY, 0, sensor.height - height);
}

void WriteConstants(CameraRegisters& registers, const SensorSize& sensor) {
    registers.WriteText(reg::vendorName, "Tessaro");
    registers.WriteText(reg::modelName, "Twin");
    registers.WriteText(reg::deviceVersion, "1");
    registers.Write(reg::sensorWidth, static_cast<std::uint32_t>(sensor.width));
    registers.Write(reg::sensorHeight, static_cast<std::uint32_t>(sensor.height));
}

/// Its upper half are flags of the protocol.
void KeepPacketSize(CameraRegisters& registers) {
    const std::uint32_t value = registers.Read(reg::streamPacketSize);
    const std::uint32_t bytes = std::clamp(value & 0xffffU, smallestPacketBytes, largestPacketBytes);
    registers.Write(reg::streamPacketSize, (value & 0xffff0000U) | bytes);
}

void KeepFramePeriod(CameraRegisters& registers) {
    if (registers.Read(reg::framePeriodUs) == 0)
        registers.Write(reg::framePeriodUs, defaultFramePeriodUs);
    KeepWithin(registers, reg::framePeriodUs, shortestFramePeriodUs, longestFramePeriodUs);
}

} // namespace

std::uint32_t CameraRegisters::Read(std::uint32_t address) const {
    guint32 value = 0;
    arv_fake_camera_read_register(m_camera, address, &value);
    return value;
}

void CameraRegisters::Write(std::uint32_t address, std::uint32_t value) {
    arv_fake_camera_write_register(m_camera, address, value);
}

void CameraRegisters::WriteText(std::uint32_t address, std::string_view text) {
    std::array<char, reg::nameBytes> bytes = {};
    std::copy_n(text.begin(), std::min(text.size(), bytes.size() - 1), bytes.begin());
    arv_fake_camera_write_memory(m_camera, address, reg::nameBytes, bytes.data());
}

void CameraRegisters::WriteLong(std::uint32_t address, std::uint64_t value) {
    const std::uint64_t bytes = BigEndian(value);
    arv_fake_camera_write_memory(m_camera, address, sizeof(bytes), &bytes);
}

double CameraRegisters::ReadFloat(std::uint32_t address, const Bounds& bounds) const {
    std::uint64_t bytes = 0;
    arv_fake_camera_read_memory(m_camera, address, sizeof(bytes), &bytes);
    const double value = std::bit_cast<double>(BigEndian(bytes));
    return std::isnan(value) ? bounds.minimum : std::clamp(value, bounds.minimum, bounds.maximum);
}

void CameraRegisters::WriteFloat(std::uint32_t address, double value) {
    WriteLong(address, std::bit_cast<std::uint64_t>(value));
}

int CameraRegisters::ReadLength(std::uint32_t address, int minimum, int maximum) const {
    return static_cast<int>(std::clamp<std::int64_t>(Read(address), minimum, maximum));
}

CameraSettings ReadSettings(const CameraRegisters& registers) {
    CameraSettings settings;
    settings.exposure.exposureTimeUs = registers.ReadFloat(reg::exposureTimeFloat64, exposureTimeBoundsUs);
    settings.exposure.gainDb = registers.ReadFloat(reg::gainFloat64, gainBoundsDb);
    for (std::size_t c = 0; c < settings.exposure.balanceRatios.size(); ++c)
        settings.exposure.balanceRatios[c] = registers.ReadFloat(BalanceRegister(c), balanceRatioBounds);
    settings.exposureAuto = ReadMode(registers, reg::exposureAuto);
    settings.gainAuto = ReadMode(registers, reg::gainAuto);
    settings.balanceWhiteAuto = ReadMode(registers, reg::balanceWhiteAuto);
    settings.targetBrightness = registers.ReadFloat(reg::targetBrightnessFloat64, targetBrightnessBounds);
    for (std::size_t i = 0; i < settings.regions.size(); ++i)
        settings.regions[i] = ReadRegion(registers, i);
    return settings;
}

void WriteSettings(CameraRegisters& registers, const CameraSettings& settings) {
    registers.WriteFloat(reg::exposureTimeFloat64, settings.exposure.exposureTimeUs);
    registers.WriteFloat(reg::gainFloat64, settings.exposure.gainDb);
    for (std::size_t c = 0; c < settings.exposure.balanceRatios.size(); ++c)
        registers.WriteFloat(BalanceRegister(c), settings.exposure.balanceRatios[c]);
    registers.Write(reg::exposureAuto, static_cast<std::uint32_t>(settings.exposureAuto));
    registers.Write(reg::gainAuto, static_cast<std::uint32_t>(settings.gainAuto));
    registers.Write(reg::balanceWhiteAuto, static_cast<std::uint32_t>(settings.balanceWhiteAuto));
    registers.WriteFloat(reg::targetBrightnessFloat64, settings.targetBrightness);
    for (std::size_t i = 0; i < settings.regions.size(); ++i)
        WriteRegion(registers, i, settings.regions[i]);
}

void KeepWithinBounds(CameraRegisters& registers, const SensorSize& sensor) {
    WriteConstants(registers, sensor);
    KeepImageOnSensor(registers, sensor);
    if (!PixelFormatOf(registers.Read(reg::pixelFormat)))
        registers.Write(reg::pixelFormat, ARV_PIXEL_FORMAT_BAYER_RG_8);
    KeepWithin(registers, reg::acquisitionMode, reg::acquisitionModeContinuous,
               reg::acquisitionModeSingleFrame);
    KeepPacketSize(registers);
    KeepFramePeriod(registers);
}

void WritePowerUpState(CameraRegisters& registers, const SensorSize& sensor) {
    registers.Write(reg::streamPacketSize, largestPacketBytes);
    registers.Write(reg::width, static_cast<std::uint32_t>(sensor.width));
    registers.Write(reg::height, static_cast<std::uint32_t>(sensor.height));
    registers.Write(reg::offsetX, 0);
    registers.Write(reg::offsetY, 0);
    registers.Write(reg::pixelFormat, ARV_PIXEL_FORMAT_BAYER_RG_8);
    registers.Write(reg::framePeriodUs, defaultFramePeriodUs);
    WriteSettings(registers, CameraSettings());
    KeepWithinBounds(registers, sensor);
}

std::optional<PixelFormat> PixelFormatOf(std::uint32_t value) {
    switch (value) {
    case ARV_PIXEL_FORMAT_BAYER_RG_8:
        return PixelFormat::BayerRg8;
    case ARV_PIXEL_FORMAT_MONO_8:
        return PixelFormat::Mono8;
    case ARV_PIXEL_FORMAT_RGB_8_PACKED:
        return PixelFormat::Rgb8;
    default:
        return std::nullopt;
    }
}

} // namespace tessaro
