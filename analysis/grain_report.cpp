#include "analysis/grain_report.h"

#include <cstddef>
#include <cstdint>

namespace tessaro {
namespace {

GrainReport ReportGrain(const GrainTable& grains, const GrainFindings& findings, std::size_t g) {
    const GrainEdges& edges = findings.edges;
    return {
        .grain = static_cast<int>(g),
        .reducedPixels = findings.reducedPixels[g],
        .pixels = grains.grains[g].count,
        .left = edges.EdgeLeft[g].x,
        .right = edges.EdgeRight[g].x,
        .minRow = edges.EdgeMinRow[g].y,
        .maxRow = edges.EdgeMaxRow[g].y,
        .score = findings.scores[g],
        .subScores = findings.subScores[g],
        .single = findings.singleLayer[g] != 0,
    };
}

} // namespace

std::vector<GrainReport> ReportGrains(const GrainTable& grains, const GrainFindings& findings) {
    std::vector<GrainReport> reports;
    for (std::size_t g = 0; g < static_cast<std::size_t>(findings.groupCount); ++g) {
        if (grains.grains[g].count != 0)
            reports.push_back(ReportGrain(grains, findings, g));
    }
    return reports;
}

std::array<double, 2> GrainCentre(const Grain& grain) {
    constexpr double middle = 0.5; // of a pixel
    std::int64_t right = 0;
    std::int64_t up = 0;
    for (std::size_t i = 0; i < static_cast<std::size_t>(grain.count); ++i) {
        right += grain.pixels[i].x;
        up += grain.pixels[i].y;
    }
    const auto count = static_cast<double>(grain.count);
    return {static_cast<double>(right) / count + middle, static_cast<double>(up) / count + middle};
}

} // namespace tessaro
