#pragma once

#include "analyze/picture_report.h"
#include "app/settings.h"
#include "platform/drawing_surface.h"
#include "platform/picture_files.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <utility>
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
    std::vector<std::uint8_t> annotatedJpeg; // with `annotate`, unless there is a saveError
    std::string saveError;                   // why there is no annotated picture; the report stands
};

/// The platform that a batch works with. The first two are called from several threads at once.
struct BatchPlatform {
    PictureFiles& files;
    std::function<std::unique_ptr<DrawingSurface>(Picture&)> makeSurface; // draws into the picture given

    /// Runs the work in a thread of its own; throws when the machine has none to give.
    std::function<std::jthread(std::function<void()>)> startThread = [](std::function<void()> work) {
        return std::jthread(std::move(work));
    };
};

BatchResult AnalysePicture(const std::string& path, const BatchSettings& settings, BatchPlatform& platform);

/// Analyses the pictures, several at a time, and calls `finished` on the calling thread for each, in the
/// order given. At most a few pictures more than are worked on are held in memory. Does with fewer threads,
/// or the calling one alone, where no more can be started. An exception of `finished` ends the batch and
/// comes out when the pictures that are being worked on are done.
void AnalyseBatch(const std::vector<std::string>& paths, const BatchSettings& settings,
                  BatchPlatform& platform, const std::function<void(BatchResult)>& finished);

} // namespace tessaro
