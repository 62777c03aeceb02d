#pragma once

#include "camera/camera_session.h"

#include <cstddef>
#include <span>

namespace tessaro {

/// So many exposures are averaged in one go.
inline constexpr std::size_t exposuresAtOnce = 4;

/// How many samples an image has for the session's buffers: its width times its height, but no more than
/// were sent, nor than the buffers hold.
std::int32_t SampleCount(const GrabResult& image);

/// Into the accumulator: the first replaces what is there, later ones are added to it, in 16 bits. Beyond the
/// samples it stays.
void AddExposure(CameraSession& session, const GrabResult& image, bool first);

/// From the accumulator to the working frame by way of the raw and the converted frame, all that byteCount
/// covers.
void ShowMean(CameraSession& session, int frames);

/// Adds 1 to 4 whole exposures of the sensor's size and shows their mean: the same as one after another, in
/// one pass over memory.
void ShowMeanOf(CameraSession& session, std::span<const GrabResult* const> exposures);

} // namespace tessaro
