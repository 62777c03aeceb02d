#include "analysis/detection.h"

#include "analysis/grain_edges.h"
#include "analysis/grouping.h"

namespace tessaro {

void GroupGrains(FieldAnalysis& field) {
    GroupCandidates(field, field.analyzer.candidates.data(), field.analyzer.candidateCount, field.grains,
                    field.findings.groupCount, MinimumReducedPixels(field.settings.minimumFlakeArea),
                    maximumGrainPixels);
    ComputeGrainEdges(field.grains, field.findings.groupCount, field.findings.edges);
}

} // namespace tessaro
