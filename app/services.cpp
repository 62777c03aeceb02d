#include "app/services.h"

#include <iostream>

namespace tessaro {
namespace {

UserInterface WithBoxes(const UserInterface& ui, MessageBoxes& boxes) {
    return {ui.clock,   ui.messages, ui.windows, ui.dialogs, boxes,
            ui.chooser, ui.drawing,  ui.folders, ui.pictures};
}

} // namespace

ReportedState StateToReport(const Globals& globals) {
    return {globals.stage,    globals.camera,   globals.frame,
            globals.measured, globals.findings, globals.grainTable};
}

Services::Services(Globals& g, UserInterface adapters, Devices devices, const Listeners& listeners)
    : globals(g), heardBoxes(adapters.boxes, listeners.boxes), ui(WithBoxes(adapters, heardBoxes)),
      status(ui.dialogs, g.windows, g.stage, g.shownPosition, listeners.status),
      liveView(g.liveTimer, ui.messages, g.windows),
      pump(ui.clock, ui.messages, ui.boxes, liveView, status, g.scan, g.stage, g.windows),
      stageMotion(g.stage, pump, status, adapters.clock),
      camera(g.camera, devices.cameras, status, pump, ui.clock, std::cout),
      screen(g.screen, ui.drawing, ui.windows, g.windows, status, pump),
      images(g.folders, ui.folders, ui.pictures, ui.clock, screen, ui.drawing, g.windows, status, g.stage,
             listeners.images),
      focusMeter(g.measured, g.focusValue, status),
      focusView(camera, screen, focusMeter, g.frame, g.measured),
      autoFocus({focusView, g.focusControl, g.focusValue, g.scan, g.stage, stageMotion, pump, liveView,
                 g.liveTimer, status, ui.boxes, g.windows, listeners.focusCurve}),
      analysisStatus(status), currentField({g, ui.drawing, camera, screen, images, analysisStatus}),
      tiltPlane({focusView, autoFocus, g.stage, stageMotion, pump, status, g.scan, g.settings}),
      scanRun({currentField, images, tiltPlane, g.focusControl, g.stage, stageMotion, pump, liveView,
               g.liveTimer, status, g.scan, g.settings, g.findings.totalFound, listeners.scan}),
      controlPanel({ui.dialogs, ui.windows, g.windows, g.settings, g.focusControl, g.scan, g.stage,
                    stageMotion, autoFocus, tiltPlane, currentField, scanRun, liveView, g.liveTimer, status}),
      contrastDialog(
          {ui.dialogs, g.settings, g.contrastChoices, g.frame, g.measured, g.focusValue, currentField}),
      aboutBox(ui.dialogs), motorController(ui.windows, ui.drawing, g.windows, liveView, g.liveTimer,
                                            stageMotion, status, pump, [this] { RefreshView(); }),
      portDialog(ui.dialogs, g.windows, g.stage, [this] { camera.InitializeCamera(); }),
      stageDialog(ui.dialogs, g.stage, stageMotion, g.settings, status) {
    g.stage.machine = {&devices.serial, &ui.boxes, &ui.clock};
}

void Services::RefreshView() {
    camera.GrabFrame(1);
    screen.ShowBuffer(globals.camera.workingFrame.Data());
}

} // namespace tessaro
