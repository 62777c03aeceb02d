#include "reference/plain_analysis.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdio>

namespace tessaro::reference {
namespace {

void DrawScore(PlainAnalysis& analysis, std::size_t slot, float score) {
    if (analysis.surface == nullptr)
        return;
    const GrainEdges& edges = analysis.findings.edges;
    const int cx = (edges.EdgeRight[slot].x + edges.EdgeLeft[slot].x) / 2;
    const int row = WindowRow(edges.EdgeMaxRow[slot].y) - 14;
    analysis.surface->DrawText("Score:" + LabelNumber(score), SurfaceRectangle{cx - 10, row, cx + 10, row},
                               TextAlignment::Centre, black);
}

void DrawRedFrame(PlainAnalysis& analysis, std::size_t slot) {
    if (analysis.surface == nullptr)
        return;
    const GrainEdges& edges = analysis.findings.edges;
    const SurfaceRectangle corners = {edges.EdgeLeft[slot].x, WindowRow(edges.EdgeMinRow[slot].y),
                                      edges.EdgeRight[slot].x, WindowRow(edges.EdgeMaxRow[slot].y)};
    analysis.surface->DrawFrame(corners, 2, pureRed);
}

void Report(PlainAnalysis& analysis, int found) {
    // The running count is added, not one, on purpose: three hits in a field raise the total by 1, 2 and 3.
    analysis.findings.totalFound += found;
    if (analysis.status == nullptr)
        return;
    analysis.status->ShowTotalFound(analysis.findings.totalFound);
    analysis.status->ShowInformation(std::to_string(found) + " single layer detected!");
}

} // namespace

int DecideSingleLayers(PlainAnalysis& analysis) {
    GrainFindings& findings = analysis.findings;
    GrainEdges& edges = findings.edges;
    int found = 0;
    for (int g = 0; g < findings.groupCount; ++g) {
        const auto slot = static_cast<std::size_t>(g);
        findings.singleLayer[slot] = 0;
        if (analysis.grains.grains[slot].count == 0 || !RefineGrain(analysis, g))
            continue;

        const float score = FlakeScore(analysis, g);
        findings.scores[slot] = score;
        findings.singleLayer[slot] = score >= analysis.settings.scoreThreshold ? 1 : 0;

        GrainExtremes(analysis.grains.grains[slot], 1, edges.EdgeLeft[slot], edges.EdgeRight[slot],
                      edges.EdgeMinRow[slot], edges.EdgeMaxRow[slot]);
        DrawScore(analysis, slot, score);
        if (findings.singleLayer[slot] != 0) {
            ++found;
            DrawRedFrame(analysis, slot);
            Report(analysis, found);
        }
    }
    return found;
}

std::string LabelNumber(float value) {
    // A number that is not finite reads alike on every platform, whatever the sign of a nan.
    if (std::isnan(value))
        return "nan";
    if (std::isinf(value))
        return value > 0.0F ? "inf" : "-inf";
    std::array<char, 64> text = {};
    std::snprintf(text.data(), text.size(), "%.0f", static_cast<double>(value));
    return text.data();
}

} // namespace tessaro::reference
