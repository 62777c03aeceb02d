#pragma once

#include "focus/focus_view.h"

#include <functional>
#include <string>
#include <vector>

namespace tessaro {

/// A field that is as sharp as the test says at the moment at which a frame is taken.
class ScriptedFocusView : public FocusView {
public:
    explicit ScriptedFocusView(float& focusValue) : m_focusValue(focusValue) {}

    void GrabAndDraw() override {
        calls.emplace_back("grab");
        m_figures = sharpness();
        if (onGrab)
            onGrab();
    }
    float FocusScore() override {
        calls.emplace_back("score");
        return m_figures.laplaceM;
    }
    void UpdateFocusMeasures() override {
        calls.emplace_back("measures");
        m_focusValue = m_figures.focusValue;
    }
    FocusFigures Figures() const override { return m_figures; }

    std::function<FocusFigures()> sharpness = [] { return FocusFigures{0.0F, 0.0001F, 0.0001F, 0.001F}; };
    std::function<void()> onGrab; // a frame takes its time
    std::vector<std::string> calls;

private:
    float& m_focusValue;
    FocusFigures m_figures;
};

} // namespace tessaro
