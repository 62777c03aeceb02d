#pragma once

#include "analysis/field_analysis.h"

namespace tessaro {

/// Groups the candidates of the field into its grain table, with the minimum flake area of the settings, and
/// computes the grains' edges.
void GroupGrains(FieldAnalysis& field);

} // namespace tessaro
