#pragma once

#include "focus/focus_measures.h"

namespace tessaro {

/// What a search for the focus sees of the field under the lens.
class FocusView {
public:
    virtual ~FocusView() = default;

    /// Takes a frame of one exposure and shows it in the main window.
    virtual void GrabAndDraw() = 0;

    /// Measure the frame that was taken last, and show what they measure: the score alone, or all figures,
    /// which sets the focus value.
    virtual float FocusScore() = 0;
    virtual void UpdateFocusMeasures() = 0;

    /// All figures of the last measurement's frame, shown nowhere.
    virtual FocusFigures Figures() const = 0;
};

} // namespace tessaro
