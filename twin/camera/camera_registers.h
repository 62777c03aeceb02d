#pragma once

#include <cstdint>

// Where the features of camera_description.xml lie in the camera's memory. All numbers are big-endian: 4
// bytes, or 8 where the name says so.

namespace tessaro::camera_register {

// Texts that clients see when they look for cameras.
inline constexpr std::uint32_t vendorName = 0x48; // up to 32 bytes
inline constexpr std::uint32_t modelName = 0x68;
inline constexpr std::uint32_t deviceVersion = 0x88;
inline constexpr std::uint32_t nameBytes = 32;

// Known to the server as well.
inline constexpr std::uint32_t width = 0x100;
inline constexpr std::uint32_t height = 0x104;
inline constexpr std::uint32_t sensorHeight = 0x118;
inline constexpr std::uint32_t sensorWidth = 0x11c;
inline constexpr std::uint32_t acquisition = 0x124; // 1 = frames are being taken
inline constexpr std::uint32_t pixelFormat = 0x128;
inline constexpr std::uint32_t acquisitionMode = 0x12c;
inline constexpr std::uint32_t offsetX = 0x130;
inline constexpr std::uint32_t offsetY = 0x134;
inline constexpr std::uint32_t framePeriodUs = 0x138;

inline constexpr std::uint32_t acquisitionModeContinuous = 1;
inline constexpr std::uint32_t acquisitionModeSingleFrame = 2;

// Of GigE Vision itself: bytes of a packet of the stream, with all its headers.
inline constexpr std::uint32_t streamPacketSize = 0xd04;

// Our own.
inline constexpr std::uint32_t exposureAuto = 0x8000;
inline constexpr std::uint32_t gainAuto = 0x8004;
inline constexpr std::uint32_t balanceWhiteAuto = 0x8008;
inline constexpr std::uint32_t exposureTimeFloat64 = 0x8018; // microseconds
inline constexpr std::uint32_t gainFloat64 = 0x8020;         // dB
inline constexpr std::uint32_t targetBrightnessFloat64 = 0x8028;
inline constexpr std::uint32_t balanceRatioFloat64 = 0x8030; // red; green and blue follow
inline constexpr std::uint32_t balanceRatioStep = 8;

// The first region of the automatic functions; the second follows.
inline constexpr std::uint32_t regionOffsetX = 0x8050;
inline constexpr std::uint32_t regionOffsetY = 0x8054;
inline constexpr std::uint32_t regionWidth = 0x8058;
inline constexpr std::uint32_t regionHeight = 0x805c;
inline constexpr std::uint32_t regionUseBrightness = 0x8060;
inline constexpr std::uint32_t regionUseWhiteBalance = 0x8064;
inline constexpr std::uint32_t regionStep = 32;

inline constexpr std::uint32_t timestampLatchValue64 = 0x8108; // nanoseconds

} // namespace tessaro::camera_register
