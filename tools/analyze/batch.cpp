#include "analyze/batch.h"

#include "analyze/picture_analysis.h"
#include "analyze/result_files.h"
#include "analyze/white_balance.h"
#include "imaging/picture_to_frame.h"

#include <algorithm>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <new>
#include <optional>
#include <thread>
#include <utility>

namespace tessaro {
namespace {

constexpr std::string_view savedMimeType = "image/jpeg";
constexpr const char* noMemoryReason = "not enough memory";
constexpr std::size_t headStartPerJob = 2; // pictures that may be finished before their turn

BatchResult Failed(const std::string& path, std::string reason) {
    BatchResult result;
    result.report.file = path;
    result.error = std::move(reason);
    return result;
}

/// Whatever goes wrong here, the report is there already.
void EncodeAnnotated(const Picture& annotated, PictureFiles& files, BatchResult& result) {
    try {
        auto encoded = files.Encode(annotated, savedMimeType);
        if (const PictureError* error = std::get_if<PictureError>(&encoded))
            result.saveError = error->reason;
        else
            result.annotatedJpeg = std::move(std::get<std::vector<std::uint8_t>>(encoded));
    } catch (const std::bad_alloc&) {
        result.saveError = noMemoryReason;
    } catch (const std::exception& error) {
        result.saveError = error.what();
    }
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
    if (settings.annotate)
        EncodeAnnotated(annotated, platform.files, result);
}

/// Hands out the pictures in order to the threads and takes their results, which leave in the same order.
class OrderedWork {
public:
    OrderedWork(std::size_t count, std::size_t headStart)
        : m_count(count), m_headStart(headStart), m_results(count) {}

    /// The next picture to work on; m_count when there is none left. Waits while the oldest unfinished
    /// picture is too far behind.
    std::size_t Next() {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this] { return m_next == m_count || m_next < m_delivered + m_headStart; });
        return m_next == m_count ? m_count : m_next++;
    }

    /// Takes no memory: this is where a thread that has run out of it reports.
    void Finish(std::size_t index, std::optional<BatchResult> result) {
        const std::lock_guard lock(m_mutex);
        m_results[index] = {true, std::move(result)};
        m_changed.notify_all();
    }

    /// The result of the next picture in order; none when memory did not even suffice for an error.
    std::optional<BatchResult> Deliver() {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this] { return m_results[m_delivered].finished; });
        std::optional<BatchResult> result = std::exchange(m_results[m_delivered].result, std::nullopt);
        ++m_delivered;
        m_changed.notify_all();
        return result;
    }

    /// Leaves no picture to work on: nobody waits in Next any longer.
    void Stop() {
        const std::lock_guard lock(m_mutex);
        m_next = m_count;
        m_changed.notify_all();
    }

private:
    struct Slot {
        bool finished = false;
        std::optional<BatchResult> result;
    };

    const std::size_t m_count;
    const std::size_t m_headStart;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::size_t m_next = 0;
    std::size_t m_delivered = 0;
    std::vector<Slot> m_results; // one for each picture
};

/// Lets the threads come to an end when results are no longer taken: without it joining them would wait for
/// ever.
class StopAtEnd {
public:
    explicit StopAtEnd(OrderedWork& work) : m_work(work) {}
    ~StopAtEnd() { m_work.Stop(); }
    StopAtEnd(const StopAtEnd&) = delete;
    StopAtEnd& operator=(const StopAtEnd&) = delete;

private:
    OrderedWork& m_work;
};

/// AnalysePicture for a thread, which no exception may leave; nothing when memory does not suffice for the
/// error that says so.
std::optional<BatchResult> TryToAnalyse(const std::string& path, const BatchSettings& settings,
                                        BatchPlatform& platform) {
    try {
        return AnalysePicture(path, settings, platform);
    } catch (const std::bad_alloc&) {
        return std::nullopt;
    }
}

/// As many threads as the machine lets start, at most `jobs`.
std::vector<std::jthread> StartThreads(std::size_t jobs, const BatchPlatform& platform,
                                       const std::function<void()>& work) {
    std::vector<std::jthread> threads;
    threads.reserve(jobs);
    try {
        while (threads.size() < jobs)
            threads.push_back(platform.startThread(work));
    } catch (const std::exception&) {
        // Those that run do the work.
    }
    return threads;
}

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
        return Failed(path, noMemoryReason);
    } catch (const std::exception& error) {
        return Failed(path, error.what());
    }
}

void AnalyseBatch(const std::vector<std::string>& paths, const BatchSettings& settings,
                  BatchPlatform& platform, const std::function<void(BatchResult)>& finished) {
    const std::size_t jobs = std::min(paths.size(), static_cast<std::size_t>(std::max(1, settings.jobs)));
    OrderedWork work(paths.size(), jobs * (1 + headStartPerJob));
    std::vector<std::jthread> threads;
    const StopAtEnd stop(work);
    threads = StartThreads(jobs, platform, [&] {
        for (std::size_t index = work.Next(); index < paths.size(); index = work.Next())
            work.Finish(index, TryToAnalyse(paths[index], settings, platform));
    });
    for (const std::string& path : paths) {
        std::optional<BatchResult> result =
            threads.empty() ? TryToAnalyse(path, settings, platform) : work.Deliver();
        finished(result ? std::move(*result) : Failed(path, noMemoryReason));
    }
}

} // namespace tessaro
