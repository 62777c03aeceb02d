#pragma once

#include "analysis/field_analysis.h"
#include "imaging/image_files.h"
#include "scan/scan_state.h"

namespace tessaro {

/// DecideSingleLayers, and then saves the field's images if it has a single layer, or none while the stage
/// stands exactly at the scan origin: the first field of a scan is always kept. Returns the number of single
/// layers.
int DecideAndSaveSingleLayers(FieldAnalysis& field, const FrameBuffer& frame, ImageFiles& images,
                              const ImageFolders& folders, const StageLink& stage, const ScanState& scan);

} // namespace tessaro
