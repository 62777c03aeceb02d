#pragma once

#include "analysis/analysis_scratch.h"
#include "analysis/flake_analyzer.h"
#include "analysis/frame_measurements.h"
#include "analysis/grain.h"
#include "app/live_timer.h"
#include "app/main_window_state.h"
#include "app/program_windows.h"
#include "app/settings.h"
#include "app/status_lines.h"
#include "camera/camera_session.h"
#include "imaging/frame_buffer.h"
#include "imaging/image_folders.h"
#include "imaging/screen_view.h"
#include "platform/folders.h"
#include "scan/contrast_choices.h"
#include "scan/focus_control.h"
#include "scan/scan_state.h"
#include "stage/stage_link.h"

#include <memory>

namespace tessaro {

/// All state that the operator's program shares. The first six are made in this order: the working folder is
/// there before anything else runs. About 50 MB: static storage or heap.
struct Globals {
    explicit Globals(Folders& platformFolders);
    Globals(const Globals&) = delete;
    Globals& operator=(const Globals&) = delete;

    StageLink stage;
    CameraSession camera;
    ScreenView screen;
    ScanState scan;
    ImageFolders folders;
    FlakeAnalyzer analyzer;

    Settings settings;
    ContrastChoices contrastChoices;
    LiveTimer liveTimer;
    ProgramWindows windows;
    MainWindowState mainWindow;
    ShownPosition shownPosition;
    FocusControl focusControl;
    float focusValue = 10.0F; // the last combined focus figure

    FrameRecord frame; // the working frame of the camera session
    FrameMeasurements measured;
    GrainFindings findings;
    AnalysisScratch scratch;

    // Taken at start-up and released at the end. The second is part of the memory budget and never used.
    std::unique_ptr<GrainTable> grainTable;
    std::unique_ptr<GrainTable> spareGrainTable;
};

/// The program's own, made before main.
Globals& ProgramGlobals();

} // namespace tessaro
