#include "analysis/decision_with_images.h"

#include "analysis/decision.h"

namespace tessaro {

int DecideAndSaveSingleLayers(FieldAnalysis& field, const FrameBuffer& frame, ImageFiles& images,
                              const ImageFolders& folders, const StageLink& stage, const ScanState& scan) {
    const int found = DecideSingleLayers(field);
    const bool atOrigin = stage.position[axisX] == static_cast<double>(scan.originX) &&
                          stage.position[axisY] == static_cast<double>(scan.originY);
    if (found == 0 && !atOrigin)
        return found;
    // Without a session's folder the images would be lost.
    if (folders.sessionMade == 0)
        images.MakeSessionFolders(0);
    images.SavePlainImage(frame, field.findings);
    images.SaveDetailImage();
    return found;
}

} // namespace tessaro
