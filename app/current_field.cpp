#include "app/current_field.h"

#include "analysis/candidates.h"
#include "analysis/decision_with_images.h"
#include "analysis/frame_statistics.h"
#include "analysis/grouping.h"

namespace tessaro {

/// What a step of the analysis works on, drawing on the main window while this lives.
class CurrentField::OnWindow {
public:
    explicit OnWindow(const Reach& reach)
        : m_drawing(reach.drawing), m_context(m_drawing.GetWindowContext(reach.globals.windows.main)),
          m_field{.settings = reach.globals.settings,
                  .frame = reach.globals.frame,
                  .measured = reach.globals.measured,
                  .analyzer = reach.globals.analyzer,
                  .grains = *reach.globals.grainTable,
                  .findings = reach.globals.findings,
                  .scratch = reach.globals.scratch,
                  .surface = m_drawing.Surface(m_context),
                  .status = &reach.status} {}
    ~OnWindow() { m_drawing.ReleaseContext(m_context); }
    OnWindow(const OnWindow&) = delete;
    OnWindow& operator=(const OnWindow&) = delete;

    FieldAnalysis& Get() { return m_field; }

private:
    WindowDrawing& m_drawing;
    DeviceContext m_context;
    FieldAnalysis m_field;
};

void CurrentField::GrabFrame(int exposures) {
    m_reach.camera.GrabFrame(exposures);
}

void CurrentField::ComputeFrameStatistics() {
    tessaro::ComputeFrameStatistics(m_globals.frame, m_globals.frame, m_globals.measured);
}

void CurrentField::ShowFrame() {
    m_reach.screen.ShowBuffer(m_globals.camera.workingFrame.Data());
}

void CurrentField::FindCandidates(bool paint) {
    if (!CanAnalyse())
        return;
    OnWindow field(m_reach);
    tessaro::FindCandidates(field.Get(), paint);
}

void CurrentField::RejectNoise() {
    tessaro::RejectNoise(m_globals.analyzer);
}

void CurrentField::GroupGrains() {
    if (!CanAnalyse())
        return;
    OnWindow field(m_reach);
    tessaro::GroupGrains(field.Get());
}

void CurrentField::DecideSingleLayers() {
    if (!CanAnalyse())
        return;
    OnWindow field(m_reach);
    DecideAndSaveSingleLayers(field.Get(), m_globals.camera.workingFrame, m_reach.images, m_globals.folders,
                              m_globals.stage, m_globals.scan);
}

} // namespace tessaro
