#pragma once

#include "focus/auto_focus.h"
#include "focus/focus_curve.h"
#include "support/scripted_focus_view.h"
#include "support/shell_fixture.h"
#include "support/travelling_port.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <sstream>
#include <string>
#include <vector>

namespace tessaro {

using Texts = std::vector<std::string>;

/// Both searches on a stage that travels and a field whose sharpness the test makes up. A frame takes 40 ms
/// and shows the field as it was at their beginning.
class SearchFixture : public ShellFixture {
protected:
    static constexpr std::uint32_t frameMs = 40;

    SearchFixture() {
        stage.machine.serial = &line;
        stage.hComm = line.line;
        focus.focusSpeed = 200;
        view.onGrab = [this] { ui.clock.Sleep(frameMs); };
    }

    double Z() const { return line.Um(axisZ); }

    /// Every frame alike.
    void BeFlat(float score, float value) {
        view.sharpness = [score, value] { return FocusFigures{0.0F, 0.0F, score, value}; };
    }
    /// Of Z in um at the moment at which a frame is begun.
    void Be(const std::function<double(double)>& score, const std::function<double(double)>& value) {
        view.sharpness = [this, score, value] {
            return FocusFigures{0.0F, 0.0F, static_cast<float>(score(Z())), static_cast<float>(value(Z()))};
        };
    }
    static double Peak(double height, double width, double distance) {
        return height * std::exp(-distance * distance / (2.0 * width * width));
    }

    void ClickAt(std::uint64_t time) {
        ui.messages.PostAt(time, {windows.main, MessageKind::LeftButtonPress});
    }
    /// While a scan runs: a click at that time, and the question whether to stop answered with Yes.
    void StopScanAt(std::uint64_t time) {
        scan.scanning = 1;
        ui.boxes.answers.push_back(true);
        ClickAt(time);
    }
    void At(std::uint64_t time, std::function<void()> act) {
        m_acts.push_back(std::move(act));
        ui.messages.PostAt(
            time, {WindowHandle::None, MessageKind::Other, 0, static_cast<std::uint32_t>(m_acts.size() - 1)});
        ui.messages.onDispatch = [this](const Message& message) {
            if (message.kind == MessageKind::Other)
                m_acts[message.position]();
        };
    }
    void QuitAt(std::uint64_t time) {
        At(time, [this] { ui.messages.PostQuit(0); });
    }

    Texts Progress() const { return ui.dialogs.TextsOf(panel::progress); }
    /// Those of the climb, without what the moves tell.
    Texts ClimbSteps() const {
        Texts steps;
        for (const std::string& text : Progress())
            if (text.starts_with("Focusing step:"))
                steps.push_back(text);
        return steps;
    }
    /// How the searches have ended, in the order in which they did.
    Texts Outcomes() const {
        Texts outcomes;
        std::istringstream lines(curveText.str());
        for (std::string each; std::getline(lines, each);)
            if (!each.ends_with(','))
                outcomes.push_back(each.substr(each.rfind(',') + 1));
        return outcomes;
    }
    std::int64_t CallsOf(const std::string& call) const {
        return std::count(view.calls.begin(), view.calls.end(), call);
    }

    TravellingPort line{ui.clock};
    StageMotion motion{stage, pump, status, ui.clock};
    FocusControl focus;
    float focusValue = 10.0F;
    ScriptedFocusView view{focusValue};
    std::ostringstream curveText; // without the names of its columns
    FocusCurve curve{curveText, ui.clock, false};
    AutoFocus autoFocus{{view, focus, focusValue, scan, stage, motion, pump, liveView, liveTimer, status,
                         ui.boxes, windows, &curve}};

private:
    std::vector<std::function<void()>> m_acts;
};

} // namespace tessaro
