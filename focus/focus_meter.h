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

    /// The medium-scale Laplacian alone, after the statistics pass: the cheaper call of the focus searches.
    /// Shown with three decimals where the other call shows two; focusValue keeps its value.
    float FocusScore(FrameRecord& frame);

private:
    void Show(int box, const char* format, float value);

    FrameMeasurements& m_measured;
    float& m_focusValue;
    StatusLines& m_status;
};

} // namespace tessaro
