#pragma once

#include "analysis/field_analysis.h"
#include "analysis/panel_status.h"
#include "app/about_box.h"
#include "app/globals.h"
#include "app/live_view.h"
#include "app/message_pump.h"
#include "app/status_lines.h"
#include "camera/camera.h"
#include "focus/auto_focus.h"
#include "focus/focus_meter.h"
#include "focus/focus_on_field.h"
#include "imaging/image_files.h"
#include "imaging/screen_view.h"
#include "platform/devices.h"
#include "platform/user_interface.h"
#include "scan/control_panel.h"
#include "stage/motor_controller.h"
#include "stage/port_dialog.h"
#include "stage/stage_dialog.h"
#include "stage/stage_motion.h"

namespace tessaro {

/// Everything that acts on the globals, put together on one set of adapters.
struct Services {
    Services(Globals& g, UserInterface adapters, Devices devices, FocusCurve* focusCurve = nullptr);
    Services(const Services&) = delete;
    Services& operator=(const Services&) = delete;

    Globals& globals;
    UserInterface ui;
    StatusLines status;
    LiveView liveView;
    MessagePump pump;
    StageMotion stageMotion;
    Camera camera;
    Screen screen;
    ImageFiles images;
    FocusMeter focusMeter;
    FocusOnField focusView;
    AutoFocus autoFocus;
    PanelStatus analysisStatus;
    ControlPanel controlPanel;
    AboutBox aboutBox;
    MotorController motorController;
    PortDialog portDialog;
    StageDialog stageDialog;

private:
    void RefreshView();
};

} // namespace tessaro
