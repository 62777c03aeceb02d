#include "analyze/picture_analysis.h"

#include "analysis/candidates.h"
#include "analysis/decision.h"
#include "analysis/field_analysis.h"
#include "analysis/frame_statistics.h"
#include "analysis/grouping.h"

#include <memory>

namespace tessaro {
namespace {

class OverflowWatch : public StatusSink {
public:
    void ShowInformation(std::string_view text) override { overflow = overflow || text == grainOverflowText; }
    void ShowTotalFound(std::int32_t) override {}

    bool overflow = false;
};

std::vector<int> PixelCounts(const FieldAnalysis& field) {
    std::vector<int> counts;
    counts.reserve(static_cast<std::size_t>(field.findings.groupCount));
    for (int g = 0; g < field.findings.groupCount; ++g)
        counts.push_back(field.grains.grains[static_cast<std::size_t>(g)].count);
    return counts;
}

GrainReport ReportGrain(const FieldAnalysis& field, std::size_t g, int reducedPixels) {
    const GrainEdges& edges = field.findings.edges;
    return {
        .grain = static_cast<int>(g),
        .reducedPixels = reducedPixels,
        .pixels = field.grains.grains[g].count,
        .left = edges.EdgeLeft[g].x,
        .right = edges.EdgeRight[g].x,
        .minRow = edges.EdgeMinRow[g].y,
        .maxRow = edges.EdgeMaxRow[g].y,
        .score = field.findings.scores[g],
        .subScores = field.findings.subScores[g],
        .single = field.findings.singleLayer[g] != 0,
    };
}

} // namespace

PictureReport AnalyzeFrame(const FrameBuffer& frame, const Settings& settings, DrawingSurface* surface) {
    const auto memory = std::make_unique<AnalysisMemory>();
    FieldAnalysis field = memory->Bind(settings);
    OverflowWatch watch;
    field.surface = surface;
    field.status = &watch;
    field.frame.pixels = frame.Data();

    PictureReport report;
    ComputeFrameStatistics(field.frame, field.frame, field.measured);
    report.noise = field.measured.noiseLevel;
    report.bgPeak = field.frame.bgPeak;
    FindCandidates(field, false);
    report.candidates = field.analyzer.candidateCount;
    RejectNoise(field.analyzer);
    report.live = LiveCandidates(field.analyzer);
    GroupGrains(field);
    report.groups = field.findings.groupCount;
    const std::vector<int> reducedPixels = PixelCounts(field);

    report.found = DecideSingleLayers(field);
    for (std::size_t g = 0; g < reducedPixels.size(); ++g) {
        report.kept += reducedPixels[g] != 0 ? 1 : 0;
        if (field.grains.grains[g].count != 0)
            report.grains.push_back(ReportGrain(field, g, reducedPixels[g]));
    }
    report.overflow = watch.overflow;
    return report;
}

} // namespace tessaro
