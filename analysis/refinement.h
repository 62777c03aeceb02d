#pragma once

#include "analysis/field_analysis.h"

namespace tessaro {

/// Repeats the detection at full resolution inside grain g, whose pixels are reduced ones: its pixels become
/// those of the local grain that LargestGrain picks, and it is empty when none is left. The edges of g must
/// have been computed at scale 4. Returns whether the grain still has pixels.
bool RefineGrain(FieldAnalysis& field, int g);

} // namespace tessaro
