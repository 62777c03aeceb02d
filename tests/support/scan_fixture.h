#pragma once

#include "scan/control_panel.h"
#include "support/arriving_port.h"
#include "support/scripted_field.h"
#include "support/scripted_focus_view.h"
#include "support/shell_fixture.h"

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace tessaro {

/// Keeps what it is told about scans.
class RecordedScans : public ScanListener {
public:
    void ScanBegins() override { ++begun; }
    void FieldFinished(const ScannedField& field) override { fields.push_back(field); }
    void ScanEnds(ScanEnd why) override { ends.push_back(why); }

    /// Row and column of each field.
    std::vector<std::pair<int, int>> Places() const {
        std::vector<std::pair<int, int>> places;
        for (const ScannedField& field : fields)
            places.emplace_back(field.row, field.column);
        return places;
    }

    int begun = 0;
    std::vector<ScannedField> fields;
    std::vector<ScanEnd> ends;
};

/// All that a scan and the control panel work on: a stage that arrives at once, a field that takes no time,
/// and a made-up focus. The panel that is open is one that does nothing.
class ScanFixture : public ShellFixture {
protected:
    using Texts = std::vector<std::string>;

    ScanFixture() {
        stage.machine.serial = &arriving;
        stage.hComm = arriving.line;
        arriving.remembersCalls = false;
    }

    /// In whole motor steps, multiples of 5 um for example.
    void StandAt(double x, double y, double z) {
        stage.position = {x, y, z};
        for (std::size_t axis = 0; axis < axisCount; ++axis)
            arriving.steps[axis] = static_cast<std::int32_t>(stage.position[axis] * 8.0 / 5.0);
    }

    /// The operator clicks on the main window, and answers the question.
    void ClickIn(std::uint64_t milliseconds, bool answer) {
        ui.messages.PostAt(ui.clock.now + milliseconds, {windows.main, MessageKind::LeftButtonPress});
        ui.boxes.answers.push_back(answer);
    }
    void ChooseIn(std::uint64_t milliseconds, std::uint32_t command) {
        ui.messages.PostAt(ui.clock.now + milliseconds, {windows.main, MessageKind::Command, command});
    }

    /// What happens when a command is sent for the n-th time.
    template<typename Action>
    void When(const std::string& command, Action action, int time = 1) {
        arriving.onCommand = [command, action, left = time](const std::string& sent) mutable {
            if (sent == command && --left == 0)
                action();
        };
    }

    Texts Progress() const { return ui.dialogs.TextsOf(panel::progress); }

    ArrivingPort arriving{ui.clock}; // 1 um is 1.6 steps
    Settings settings;
    FocusControl focus;
    StageMotion motion{stage, pump, status, ui.clock};
    float focusValue = 10.0F;
    ScriptedFocusView view{focusValue};
    AutoFocus autoFocus{
        {view, focus, focusValue, scan, stage, motion, pump, liveView, liveTimer, status, ui.boxes, windows}};
    ScriptedField field;
    ImageFolders folders{ui.folders};
    ScreenView screenView;
    Screen screen{screenView, ui.drawing, ui.windows, windows, status, pump};
    ImageFiles images{folders, ui.folders, ui.pictures, ui.clock, screen, ui.drawing, windows, status, stage};
    std::int32_t totalFound = 0;
    TiltPlane tilt{{view, autoFocus, stage, motion, pump, status, scan, settings}};
    RecordedScans told;
    ScanReach scanReach{field,    images,    tilt,   focus, stage,    motion,     pump,
                        liveView, liveTimer, status, scan,  settings, totalFound, &told};
    ScanRun scanRun{scanReach};
};

/// With the real panel, closed at first.
class ControlPanelTest : public ScanFixture {
protected:
    static constexpr auto owner = static_cast<WindowHandle>(5);

    ControlPanelTest() { ClosePanel(); }

    FakeDialogs::Dialog& Open() {
        panel.Open(owner);
        return dialogs.dialogs.at(windows.controlPanel);
    }

    void Press(int controlId) { dialogs.Notify(windows.controlPanel, controlId, Notification::Clicked); }
    void Type(int controlId, const std::string& text) {
        dialogs.SetItemText(windows.controlPanel, controlId, text);
    }

    FakeDialogs& dialogs = ui.dialogs;
    ControlPanel panel{{dialogs, ui.windows, windows, settings, focus, scan, stage, motion, autoFocus, tilt,
                        field, scanRun, liveView, liveTimer, status}};
};

} // namespace tessaro
