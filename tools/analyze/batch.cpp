#include "analyze/batch.h"

#include "analyze/picture_analysis.h"
#include "analyze/result_files.h"
#include "analyze/white_balance.h"
#include "imaging/picture_to_frame.h"

#include <algorithm>
#include <condition_variable>
#include <exception>
#include <map>
#include <mutex>
#include <new>
#include <thread>
#include <utility>

namespace tessaro {
namespace {

constexpr std::string_view savedMimeType = "image/jpeg";
constexpr std::size_t headStartPerJob = 2; // pictures that may be finished before their turn

BatchResult Failed(const std::string& path, std::string reason) {
    BatchResult result;
    result.report.file = path;
    result.error = std::move(reason);
    return result;
}

void AnalyseDecoded(const Picture& picture, const BatchSettings& settings, BatchPlatform& platform,
                    BatchResult& result) {
    FrameBuffer frame;
    if (settings.balance)
        BalancedFrame(picture, frame);
    else
        PictureToFrame(picture, frame);

    Picture annotated;
    std::unique_ptr<DrawingSurface> surface;
    if (settings.annotate) {
        annotated = FrameToPicture(frame);
        surface = platform.makeSurface(annotated);
    }
    std::string file = std::move(result.report.file);
    result.report = AnalyzeFrame(frame, settings.settings, surface.get());
    result.report.file = std::move(file);
    result.report.pictureWidth = picture.width;
    result.report.pictureHeight = picture.height;
    surface.reset();
    if (!settings.annotate)
        return;
    auto encoded = platform.files.Encode(annotated, savedMimeType);
    if (const PictureError* error = std::get_if<PictureError>(&encoded))
        result.error = error->reason;
    else
        result.annotatedJpeg = std::move(std::get<std::vector<std::uint8_t>>(encoded));
}

/// Hands out the pictures in order to the threads and takes their results, which leave in the same order.
class OrderedWork {
public:
    OrderedWork(std::size_t count, std::size_t headStart) : m_count(count), m_headStart(headStart) {}

    /// The next picture to work on; m_count when there is none left. Waits while the oldest unfinished
    /// picture is too far behind.
    std::size_t Next() {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this] { return m_next == m_count || m_next < m_delivered + m_headStart; });
        return m_next == m_count ? m_count : m_next++;
    }

    void Finish(std::size_t index, BatchResult result) {
        const std::lock_guard lock(m_mutex);
        m_results.emplace(index, std::move(result));
        m_changed.notify_all();
    }

    /// The result of the next picture in order.
    BatchResult Deliver() {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this] { return m_results.contains(m_delivered); });
        BatchResult result = std::move(m_results.extract(m_delivered).mapped());
        ++m_delivered;
        m_changed.notify_all();
        return result;
    }

private:
    const std::size_t m_count;
    const std::size_t m_headStart;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::size_t m_next = 0;
    std::size_t m_delivered = 0;
    std::map<std::size_t, BatchResult> m_results;
};

} // namespace

BatchResult AnalysePicture(const std::string& path, const BatchSettings& settings, BatchPlatform& platform) {
    try {
        const auto bytes = ReadFile(path);
        if (const FileError* error = std::get_if<FileError>(&bytes))
            return Failed(path, error->reason);
        const auto decoded = platform.files.Decode(std::get<std::vector<std::uint8_t>>(bytes));
        if (const PictureError* error = std::get_if<PictureError>(&decoded))
            return Failed(path, error->reason);
        BatchResult result;
        result.report.file = path;
        AnalyseDecoded(std::get<Picture>(decoded), settings, platform, result);
        return result;
    } catch (const std::bad_alloc&) {
        return Failed(path, "not enough memory");
    } catch (const std::exception& error) {
        return Failed(path, error.what());
    }
}

void AnalyseBatch(const std::vector<std::string>& paths, const BatchSettings& settings,
                  BatchPlatform& platform, const std::function<void(BatchResult)>& finished) {
    const std::size_t jobs = std::min(paths.size(), static_cast<std::size_t>(std::max(1, settings.jobs)));
    OrderedWork work(paths.size(), jobs * (1 + headStartPerJob));
    std::vector<std::jthread> threads;
    for (std::size_t job = 0; job < jobs; ++job) {
        threads.emplace_back([&] {
            for (std::size_t index = work.Next(); index < paths.size(); index = work.Next())
                work.Finish(index, AnalysePicture(paths[index], settings, platform));
        });
    }
    for (std::size_t index = 0; index < paths.size(); ++index)
        finished(work.Deliver());
}

} // namespace tessaro
