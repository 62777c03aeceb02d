#pragma once

#include "app/live_view.h"
#include "app/message_pump.h"
#include "app/resource_ids.h"
#include "app/status_lines.h"
#include "platform/fake/fake_user_interface.h"
#include "platform/fake/scripted_serial_port.h"
#include "scan/control_panel_ids.h"
#include "scan/scan_state.h"
#include "stage/stage_link.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tessaro {

/// A main window, a motor controller window and an open control panel, with the pump that keeps them alive.
class ShellFixture : public testing::Test {
protected:
    ShellFixture() {
        ui.windows.RegisterWindowClass({"main", &m_ignoring});
        ui.windows.RegisterWindowClass({"popup", &m_ignoring});
        windows.main = ui.windows.MakeWindow({"main", "Main"});
        windows.motorController = ui.windows.MakeWindow({"popup", "Popup"});
        windows.controlPanel = ui.dialogs.CreateModeless(resource::controlPanel, windows.main, m_silent);
        stage.machine = {&port, &ui.boxes, &ui.clock};
        stage.hComm = port.Open(port.PortName(3));
        port.TakeAnyWrite();
    }

    void ClosePanel() {
        ui.dialogs.DestroyModeless(windows.controlPanel);
        windows.controlPanel = WindowHandle::None;
    }

    std::string PanelText(int controlId) {
        return ui.dialogs.ItemText(windows.controlPanel, controlId, 1000);
    }
    std::vector<std::string> Information() const { return ui.dialogs.TextsOf(panel::information); }
    bool LiveTimerRuns() const { return ui.messages.TimerRuns(windows.main, liveTimerId); }

    FakeUserInterface ui;
    ProgramWindows windows;
    ScriptedSerialPorts port{ui.clock};
    StageLink stage;
    ScanState scan;
    LiveTimer liveTimer;
    ShownPosition shownPosition;
    StatusLines status{ui.dialogs, windows, stage, shownPosition};
    LiveView liveView{liveTimer, ui.messages, windows};
    MessagePump pump{ui.clock, ui.messages, ui.boxes, liveView, status, scan, stage, windows};

private:
    class IgnoringWindow : public WindowProcedure {
    public:
        bool HandleMessage(const Message&) override { return true; }
    };
    class SilentDialog : public DialogProcedure {
    public:
        void Initialize(WindowHandle) override {}
        void Command(WindowHandle, int, Notification) override {}
    };

    IgnoringWindow m_ignoring;
    SilentDialog m_silent;
};

} // namespace tessaro
