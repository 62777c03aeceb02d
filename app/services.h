#pragma once

#include "analysis/field_analysis.h"
#include "analysis/panel_status.h"
#include "app/about_box.h"
#include "app/current_field.h"
#include "app/globals.h"
#include "app/heard_message_boxes.h"
#include "app/live_view.h"
#include "app/message_pump.h"
#include "app/status_lines.h"
#include "camera/camera.h"
#include "focus/auto_focus.h"
#include "focus/focus_meter.h"
#include "focus/focus_on_field.h"
#include "imaging/image_files.h"
#include "imaging/image_save_listener.h"
#include "imaging/screen_view.h"
#include "platform/devices.h"
#include "platform/user_interface.h"
#include "scan/contrast_dialog.h"
#include "scan/control_panel.h"
#include "scan/scan_listener.h"
#include "scan/scan_report.h"
#include "scan/scan_run.h"
#include "scan/tilt_plane.h"
#include "stage/motor_controller.h"
#include "stage/port_dialog.h"
#include "stage/stage_dialog.h"
#include "stage/stage_motion.h"

namespace tessaro {

/// Who is told what a run of the program does; null where nobody is.
struct Listeners {
    FocusCurve* focusCurve = nullptr; // what the searches for the focus see
    ScanListener* scan = nullptr;
    ImageSaveListener* images = nullptr;
    MessageBoxListener* boxes = nullptr;
    StatusListener* status = nullptr; // the texts for the operator
};

/// What a report of the scans reads.
ReportedState StateToReport(const Globals& globals);

/// Everything that acts on the globals, put together on one set of adapters.
struct Services {
    Services(Globals& g, UserInterface adapters, Devices devices, const Listeners& listeners = {});
    Services(const Services&) = delete;
    Services& operator=(const Services&) = delete;

    Globals& globals;
    HeardMessageBoxes heardBoxes;
    UserInterface ui; // with the boxes above
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
    CurrentField currentField;
    TiltPlane tiltPlane;
    ScanRun scanRun;
    ControlPanel controlPanel;
    ContrastDialog contrastDialog;
    AboutBox aboutBox;
    MotorController motorController;
    PortDialog portDialog;
    StageDialog stageDialog;

private:
    void RefreshView();
};

} // namespace tessaro
