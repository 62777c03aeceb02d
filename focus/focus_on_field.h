#pragma once

#include "camera/camera.h"
#include "focus/focus_meter.h"
#include "focus/focus_view.h"
#include "imaging/screen_view.h"

namespace tessaro {

/// The field as the camera sees it.
class FocusOnField : public FocusView {
public:
    FocusOnField(Camera& camera, Screen& screen, FocusMeter& meter, FrameRecord& frame,
                 const FrameMeasurements& measured)
        : m_camera(camera), m_screen(screen), m_meter(meter), m_frame(frame), m_measured(measured) {}

    void GrabAndDraw() override;
    float FocusScore() override;
    void UpdateFocusMeasures() override;
    FocusFigures Figures() const override;

private:
    Camera& m_camera;
    Screen& m_screen;
    FocusMeter& m_meter;
    FrameRecord& m_frame; // the working frame
    const FrameMeasurements& m_measured;
};

} // namespace tessaro
