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
constexpr std::uint32_t defaultPacketBytes = 65'000; // loopback takes packets of nearly 64 KiB

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
    return {.offsetX = registers.ReadLength(RegionRegister(reg::regionOffsetX, i), 0, twinSensorWidth),
            .offsetY = registers.ReadLength(RegionRegister(reg::regionOffsetY, i), 0, twinSensorHeight),
            .width = registers.ReadLength(RegionRegister(reg::regionWidth, i), 0, twinSensorWidth),
            .height = registers.ReadLength(RegionRegister(reg::regionHeight, i), 0, twinSensorHeight),
            .useBrightness = registers.Read(RegionRegister(reg::regionUseBrightness, i)) != 0,
            .useWhiteBalance = registers.Read(RegionRegister(reg::regionUseWhiteBalance, i)) != 0};
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

/// Writes a mode where it has changed.
void WriteMode(CameraRegisters& registers, std::uint32_t address, AutomaticMode before, AutomaticMode after) {
    if (before != after)
        registers.Write(address, static_cast<std::uint32_t>(after));
}

void WriteFloat(CameraRegisters& registers, std::uint32_t address, double before, double after) {
    if (before != after)
        registers.WriteFloat(address, after);
}

void WriteSettings(CameraRegisters& registers, const CameraSettings& settings) {
    registers.WriteFloat(reg::exposureTimeFloat64, settings.exposure.exposureTimeUs);
    registers.WriteFloat(reg::gainFloat64, settings.exposure.gainDb);
    for (std::size_t c = 0; c < settings.exposure.balanceRatios.size(); ++c)
        registers.WriteFloat(BalanceRegister(c), settings.exposure.balanceRatios[c]);
    registers.WriteFloat(reg::targetBrightnessFloat64, settings.targetBrightness);
    for (std::size_t i = 0; i < settings.regions.size(); ++i)
        WriteRegion(registers, i, settings.regions[i]);
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

void WriteChanges(CameraRegisters& registers, const CameraSettings& before, const CameraSettings& after) {
    const ExposureSettings& from = before.exposure;
    const ExposureSettings& to = after.exposure;
    WriteFloat(registers, reg::exposureTimeFloat64, from.exposureTimeUs, to.exposureTimeUs);
    WriteFloat(registers, reg::gainFloat64, from.gainDb, to.gainDb);
    for (std::size_t c = 0; c < to.balanceRatios.size(); ++c)
        WriteFloat(registers, BalanceRegister(c), from.balanceRatios[c], to.balanceRatios[c]);
    WriteMode(registers, reg::exposureAuto, before.exposureAuto, after.exposureAuto);
    WriteMode(registers, reg::gainAuto, before.gainAuto, after.gainAuto);
    WriteMode(registers, reg::balanceWhiteAuto, before.balanceWhiteAuto, after.balanceWhiteAuto);
}

void WritePowerUpState(CameraRegisters& registers, const SensorSize& sensor) {
    registers.WriteText(reg::vendorName, "Tessaro");
    registers.WriteText(reg::modelName, "Twin");
    registers.WriteText(reg::deviceVersion, "1");
    registers.Write(reg::streamPacketSize, defaultPacketBytes);
    for (const std::uint32_t width : {reg::sensorWidth, reg::width})
        registers.Write(width, static_cast<std::uint32_t>(sensor.width));
    for (const std::uint32_t height : {reg::sensorHeight, reg::height})
        registers.Write(height, static_cast<std::uint32_t>(sensor.height));
    registers.Write(reg::offsetX, 0);
    registers.Write(reg::offsetY, 0);
    registers.Write(reg::pixelFormat, ARV_PIXEL_FORMAT_BAYER_RG_8);
    registers.Write(reg::framePeriodUs, defaultFramePeriodUs);
    WriteSettings(registers, CameraSettings());
}

} // namespace tessaro
