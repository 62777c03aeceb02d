#include "analysis/decision.h"

#include "analysis/flake_score.h"
#include "analysis/grain_edges.h"
#include "analysis/labels.h"
#include "analysis/refinement.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <limits>

namespace tessaro {
namespace {

void Report(FieldAnalysis& field, int found) {
    if (field.status == nullptr)
        return;
    std::array<char, 48> text{};
    const int length = std::snprintf(text.data(), text.size(), "%d single layer detected!", found);
    field.status->ShowTotalFound(field.findings.totalFound);
    field.status->ShowInformation({text.data(), static_cast<std::size_t>(length)});
}

/// A scan that is never reset comes to the end of the numbers, and stays there.
void AddToTotal(std::int32_t& total, int found) {
    constexpr std::int32_t largest = std::numeric_limits<std::int32_t>::max();
    total = total > largest - found ? largest : total + found;
}

/// Scores grain g and draws its score; returns whether it is a single layer. Its edges are at full resolution
/// then.
bool DecideGrain(FieldAnalysis& field, FlakeScorer& scorer, int g) {
    const auto index = static_cast<std::size_t>(g);
    GrainFindings& findings = field.findings;
    findings.singleLayer[index] = 0;
    findings.reducedPixels[index] = field.grains.grains[index].count;
    if (field.grains.grains[index].count == 0 || !RefineGrain(field, g))
        return false;
    const float score = scorer.Score(g);
    findings.scores[index] = score;
    const bool is_single_layer = score >= field.settings.scoreThreshold;
    findings.singleLayer[index] = is_single_layer ? 1 : 0;
    StoreExtent(findings.edges, g, GrainExtremes(field.grains.grains[index], 1));
    if (field.surface != nullptr)
        DrawScore(*field.surface, findings.edges, g, score);
    return is_single_layer;
}

} // namespace

int DecideSingleLayers(FieldAnalysis& field) {
    FlakeScorer scorer(field);
    int found = 0;
    for (int g = 0; g < field.findings.groupCount; ++g) {
        if (!DecideGrain(field, scorer, g))
            continue;
        ++found;
        if (field.surface != nullptr)
            DrawSingleLayerFrame(*field.surface, field.findings.edges, g);
        AddToTotal(field.findings.totalFound, found);
        Report(field, found);
    }
    return found;
}

} // namespace tessaro
