#pragma once

#include "analysis/contrast_table.h"
#include "analysis/flake_analyzer.h"
#include "analysis/grain.h"
#include "analysis/grain_outline.h"
#include "analysis/grouping_scratch.h"
#include "analysis/match_counts.h"

#include <array>

namespace tessaro {

/// Working memory of the analysis, kept so that no field allocates any. Nothing in it outlives the operation
/// that uses it but what is worked out from unchanged input. About 18 MB.
struct AnalysisScratch {
    ContrastTable contrastTable;
    GroupingScratch grouping;
    std::array<Candidate, candidateCapacity> pixelCandidates = {}; // of the grain being refined
    GrainTable localGrains = {};                                   // of the grain being refined
    MatchCounts matchCounts;
    GrainOutline outline; // of the grain being scored
};

} // namespace tessaro
