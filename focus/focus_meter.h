#pragma once

#include "analysis/frame_measurements.h"
#include "app/status_lines.h"
#include "imaging/frame_buffer.h"

namespace tessaro {

/// Measures how sharp a frame is and shows it on the control panel.
class FocusMeter {
public:
    FocusMeter(FrameMeasurements& measured, float& focusValue, StatusLines& status)
        : m_measured(measured), m_focusValue(focusValue), m_status(status) {}

    /// Runs the statistics pass on the frame first. Returns 1.
    int UpdateFocusMeasures(FrameRecord& frame);

    /// The same pass, then the score alone: the Laplacian of distance 5, with three decimals. The focus value
    /// stays as it was.
    float FocusScore(FrameRecord& frame);

private:
    FrameMeasurements& m_measured;
    float& m_focusValue;
    StatusLines& m_status;
};

} // namespace tessaro
