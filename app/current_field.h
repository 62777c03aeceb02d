#pragma once

#include "analysis/status_sink.h"
#include "app/globals.h"
#include "camera/camera.h"
#include "imaging/image_files.h"
#include "imaging/screen_view.h"
#include "platform/user_interface.h"
#include "scan/field_work.h"

namespace tessaro {

/// The field under the lens, worked on in the globals and drawn in the main window.
class CurrentField : public FieldWork {
public:
    struct Reach {
        Globals& globals;
        WindowDrawing& drawing;
        Camera& camera;
        Screen& screen;
        ImageFiles& images;
        StatusSink& status;
    };

    explicit CurrentField(const Reach& reach) : m_reach(reach), m_globals(reach.globals) {}

    void GrabFrame(int exposures) override;
    void ComputeFrameStatistics() override;
    void ShowFrame() override;

    // Where there was no memory for the grain table at start-up, all but RejectNoise do nothing.
    void FindCandidates(bool paint) override;
    void RejectNoise() override;
    void GroupGrains() override;
    void DecideSingleLayers() override;

private:
    class OnWindow;
    bool CanAnalyse() const { return m_globals.grainTable != nullptr; }

    Reach m_reach;
    Globals& m_globals;
};

} // namespace tessaro
