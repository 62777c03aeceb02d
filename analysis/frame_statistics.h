#pragma once

#include "analysis/frame_measurements.h"
#include "imaging/frame_buffer.h"

namespace tessaro {

/// The statistics pass that every frame goes through before anything else looks at it:
/// 1. noise level, always of `current`, the frame on record, whichever frame is passed;
/// 2. the reduced image of `frame`;
/// 3. the dominant intensity of each channel of the reduced image, into frame.bgPeak and frame.bgPeakSum;
/// 4. the dominant intensity within 25 of it in each of 16 x 16 blocks of the full frame, as the measured
///    background.
///
/// Returns 0.
int ComputeFrameStatistics(const FrameRecord& current, FrameRecord& frame, FrameMeasurements& measured);

} // namespace tessaro
