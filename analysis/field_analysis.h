#pragma once

#include "analysis/analysis_scratch.h"
#include "analysis/flake_analyzer.h"
#include "analysis/frame_measurements.h"
#include "analysis/grain.h"
#include "analysis/status_sink.h"
#include "app/settings.h"
#include "imaging/frame_buffer.h"
#include "platform/drawing_surface.h"

namespace tessaro {

/// What the analysis of one field works on. It owns nothing: the operator's program binds its global objects,
/// tests and tessaro-analyze an AnalysisMemory of their own.
struct FieldAnalysis {
    const Settings& settings;
    FrameRecord& frame; // the current frame
    FrameMeasurements& measured;
    FlakeAnalyzer& analyzer;
    GrainTable& grains;
    GrainFindings& findings;
    AnalysisScratch& scratch;
    DrawingSurface* surface = nullptr; // null: everything is computed the same, nothing is drawn
    StatusSink* status = nullptr;      // null: nobody is told
};

/// A fresh set of everything a FieldAnalysis refers to, for one analysis on its own. About 35 MB: heap only.
struct AnalysisMemory {
    FrameRecord frame;
    FrameMeasurements measured;
    FlakeAnalyzer analyzer;
    GrainTable grains = {};
    GrainFindings findings;
    AnalysisScratch scratch;

    FieldAnalysis Bind(const Settings& settings) {
        return {settings, frame, measured, analyzer, grains, findings, scratch};
    }
};

} // namespace tessaro
