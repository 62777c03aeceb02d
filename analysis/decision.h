#pragma once

#include "analysis/field_analysis.h"

namespace tessaro {

/// Refines, scores and labels every grain of the last grouping, in order; frames and counts those that score
/// at least the threshold. Returns the number of single layers in this field. The total of the run grows by
/// one for the first of them, by two for the second, and so on. Saving the field's images is the caller's.
int DecideSingleLayers(FieldAnalysis& field);

} // namespace tessaro
