#pragma once

#include "analyze/picture_report.h"
#include "app/settings.h"
#include "imaging/frame_buffer.h"
#include "platform/drawing_surface.h"

namespace tessaro {

/// Analyses one frame from a fresh start, so that the report depends on nothing but the arguments. Frames,
/// labels and scores are drawn on the surface unless it is null. The report's file and picture size are left
/// empty.
PictureReport AnalyzeFrame(const FrameBuffer& frame, const Settings& settings, DrawingSurface* surface);

} // namespace tessaro
