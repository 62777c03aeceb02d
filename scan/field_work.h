#pragma once

namespace tessaro {

/// What is done with the field under the lens: the steps of an analysis, each of which takes what the one
/// before has left.
class FieldWork {
public:
    virtual ~FieldWork() = default;

    virtual void GrabFrame(int exposures) = 0;
    virtual void ComputeFrameStatistics() = 0;
    virtual void ShowFrame() = 0;

    virtual void FindCandidates(bool paint) = 0;
    virtual void RejectNoise() = 0;
    virtual void GroupGrains() = 0; // with the minimum flake area of the settings, and the grains' edges
    virtual void DecideSingleLayers() = 0; // marks, counts and saves
};

/// From the frame that is there to the single layers in it.
inline void AnalyseFrame(FieldWork& work, bool paintCandidates) {
    work.FindCandidates(paintCandidates);
    work.RejectNoise();
    work.GroupGrains();
    work.DecideSingleLayers();
}

} // namespace tessaro
