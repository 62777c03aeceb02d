#pragma once

#include "imaging/frame_buffer.h"
#include "platform/drawing_surface.h"

#include <cstdint>

namespace tessaro {

inline constexpr std::int32_t fieldStepUm = 400; // between neighbouring fields, in X and in Y alike

/// What the scan, the pump and the stage windows share. The ranges of the scan are settings.
struct ScanState {
    std::int32_t scanning = 0;      // 1 while a scan runs
    std::int32_t stopRequested = 0; // set by the stop question and by quitting; cleared by the next scan
                                    // and by the coarse search
    std::int32_t paused = 0;        // changes a status text and nothing else: a paused scan keeps moving
    std::int32_t originX = 0;       // um, the first field
    std::int32_t originY = 0;
    std::int32_t zOrigin = 0; // um, focus heights at the origin and at the far ends of both ranges
    std::int32_t zXmax = 0;
    std::int32_t zYmax = 0;
    SurfaceRectangle imageArea{0, 0, frameWidth, frameHeight}; // of the main window, for imported pictures
};

} // namespace tessaro
