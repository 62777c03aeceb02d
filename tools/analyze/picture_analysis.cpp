#include "analyze/picture_analysis.h"

#include "analysis/candidates.h"
#include "analysis/decision.h"
#include "analysis/field_analysis.h"
#include "analysis/frame_statistics.h"
#include "analysis/grouping.h"

#include <algorithm>
#include <cstdint>
#include <memory>

namespace tessaro {
namespace {

class OverflowWatch : public StatusSink {
public:
    void ShowInformation(std::string_view text) override { overflow = overflow || text == grainOverflowText; }
    void ShowTotalFound(std::int32_t) override {}

    bool overflow = false;
};

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
    report.found = DecideSingleLayers(field);
    report.grains = ReportGrains(field.grains, field.findings);
    report.kept = static_cast<int>(std::count_if(field.findings.reducedPixels.begin(),
                                                 field.findings.reducedPixels.begin() + report.groups,
                                                 [](std::int32_t pixels) { return pixels != 0; }));
    report.overflow = watch.overflow;
    return report;
}

} // namespace tessaro
