#pragma once

#include "app/live_timer.h"
#include "app/live_view.h"
#include "app/message_pump.h"
#include "app/settings.h"
#include "app/status_lines.h"
#include "imaging/image_files.h"
#include "scan/field_work.h"
#include "scan/focus_control.h"
#include "scan/scan_listener.h"
#include "scan/scan_state.h"
#include "scan/tilt_plane.h"
#include "stage/stage_motion.h"

#include <cstdint>

namespace tessaro {

/// What a scan works on.
struct ScanReach {
    FieldWork& work;
    ImageFiles& images;
    TiltPlane& tilt;
    FocusControl& focus;
    StageLink& stage;
    StageMotion& motion;
    MessagePump& pump;
    LiveView& liveView;
    const LiveTimer& liveTimer;
    StatusLines& status;
    ScanState& scan;
    const Settings& settings;
    std::int32_t& totalFound;
    ScanListener* listener = nullptr; // null: nobody wants to know
};

/// Walks the stage over the scan area, field by field, and analyses every field. Modal: it returns when the
/// scan has ended, and pumps messages meanwhile, so that anything else may run inside it, another scan
/// included.
///
/// Rows are scanned in pairs, there and back. The second row of a pair is always scanned: an odd number of
/// rows is one row more. The percentage counts the steps between fields, not the fields.
/// A scan that was stopped, too, says that it has completed.
class ScanRun {
public:
    explicit ScanRun(const ScanReach& reach) : m_reach(reach) {}

    void RunScan();

private:
    ScanReach m_reach;
};

} // namespace tessaro
