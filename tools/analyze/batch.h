#pragma once

#include "analyze/picture_report.h"
#include "app/settings.h"
#include "platform/drawing_surface.h"
#include "platform/picture_files.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace tessaro {

/// How to analyse the pictures of a batch.
struct BatchSettings {
    Settings settings;
    bool balance = false;
    bool annotate = false; // also make the annotated picture
    int jobs = 1;
};

/// What became of one picture: a report, or an error that says why there is none.
struct BatchResult {
    PictureReport report;
    std::string error;
    std::vector<std::uint8_t> annotatedJpeg; // with `annotate`
};

/// The platform that a batch works with. Both are called from several threads at once.
struct BatchPlatform {
    PictureFiles& files;
    std::function<std::unique_ptr<DrawingSurface>(Picture&)> makeSurface; // draws into the picture given
};

BatchResult AnalysePicture(const std::string& path, const BatchSettings& settings, BatchPlatform& platform);

/// Analyses the pictures, several at a time, and calls `finished` on the calling thread for each, in the
/// order given. At most a few pictures more than are worked on are held in memory.
void AnalyseBatch(const std::vector<std::string>& paths, const BatchSettings& settings,
                  BatchPlatform& platform, const std::function<void(BatchResult)>& finished);

} // namespace tessaro
