#include "focus/focus_on_field.h"

namespace tessaro {

void FocusOnField::GrabAndDraw() {
    m_camera.GrabFrame(1);
    m_screen.ShowBuffer(m_frame.pixels);
}

float FocusOnField::FocusScore() {
    return m_meter.FocusScore(m_frame);
}

void FocusOnField::UpdateFocusMeasures() {
    m_meter.UpdateFocusMeasures(m_frame);
}

FocusFigures FocusOnField::Figures() const {
    return MeasureFocus(m_measured.reduced);
}

} // namespace tessaro
