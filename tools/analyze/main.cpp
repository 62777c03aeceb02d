#include "analyze/batch.h"
#include "analyze/batch_output.h"
#include "analyze/complain.h"
#include "analyze/options.h"
#include "analyze/result_files.h"
#include "platform/posix/standard_streams.h"
#include "platform/qt/qt_drawing_surface.h"
#include "platform/qt/qt_picture_files.h"
#include "platform/qt/qt_runtime.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <exception>
#include <memory>
#include <string>
#include <thread>
#include <unistd.h>

namespace {

using namespace tessaro;

enum ExitStatus : int { allAnalysed = 0, someFailed = 1, wrongUsage = 2 };

constexpr std::size_t manyPictures = 4; // from here on a progress line helps

int RefuseUsage(const std::string& text) {
    Complain(text);
    std::fputs("Try 'tessaro-analyze --help'.\n", stderr);
    return wrongUsage;
}

/// A line on the terminal that says how far the batch is, out of the way while anything else is written.
class ProgressLine {
public:
    explicit ProgressLine(std::size_t count)
        : m_count(count), m_shown(count >= manyPictures && isatty(2) != 0) {}

    void Show(std::size_t done) const {
        if (m_shown)
            std::fprintf(stderr, "\r%zu of %zu pictures", done, m_count);
    }

    void Clear() const {
        if (m_shown)
            std::fputs("\r\033[K", stderr);
    }

private:
    std::size_t m_count;
    bool m_shown;
};

/// Returns what went wrong, or nothing.
std::string ReadSettings(const AnalyzeOptions& options, Settings& settings) {
    if (options.settingsFile) {
        const auto bytes = ReadFile(*options.settingsFile);
        if (const FileError* error = std::get_if<FileError>(&bytes))
            return "cannot read the settings '" + *options.settingsFile + "': " + error->reason;
        const auto& text = std::get<std::vector<std::uint8_t>>(bytes);
        const int taken =
            ReadSettingsLine({reinterpret_cast<const char*>(text.data()), text.size()}, settings);
        if (taken < settingsFieldCount)
            Complain("'" + *options.settingsFile + "' gives " + std::to_string(taken) + " of " +
                     std::to_string(settingsFieldCount) + " settings; the others keep their defaults");
    }
    ApplyOptions(options, settings);
    return {};
}

int CoreCount() {
    return static_cast<int>(std::max(1U, std::thread::hardware_concurrency()));
}

int Run(const AnalyzeOptions& options) {
    BatchSettings batch;
    if (const std::string wrong = ReadSettings(options, batch.settings); !wrong.empty())
        return RefuseUsage(wrong);
    batch.balance = options.balance;
    batch.annotate = options.saveFolder.has_value();
    batch.jobs = options.jobs.value_or(CoreCount());

    BatchOutput output(stdout, stderr);
    if (const std::string wrong = output.Open(options); !wrong.empty())
        return RefuseUsage(wrong);

    const QtRuntime runtime;
    QtPictureFiles files;
    BatchPlatform platform{files,
                           [](Picture& picture) { return std::make_unique<QtDrawingSurface>(picture); }};
    const ProgressLine progress(options.pictures.size());
    std::size_t done = 0;
    progress.Show(done);
    AnalyseBatch(options.pictures, batch, platform, [&](const BatchResult& result) {
        progress.Clear();
        output.Take(result);
        progress.Show(++done);
    });
    progress.Clear();
    return output.Close() ? allAnalysed : someFailed;
}

/// Returns the exit status.
int Print(const std::string& text) {
    if (std::fputs(text.c_str(), stdout) >= 0 && std::fflush(stdout) == 0)
        return allAnalysed;
    Complain(std::string("cannot write: ") + std::strerror(errno));
    return someFailed;
}

int Start(int argc, char** argv) {
    AnalyzeOptions options;
    if (const std::string wrong = ParseOptions(argc, argv, options); !wrong.empty())
        return RefuseUsage(wrong);
    if (options.help)
        return Print(AnalyzeUsage());
    if (options.version)
        return Print("tessaro-analyze " TESSARO_VERSION "\n");
    return Run(options);
}

} // namespace

int main(int argc, char** argv) {
    OccupyClosedStreams();
    // A reader that goes away ("| head") and a file-size limit show as failed writes.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    try {
        return Start(argc, argv);
    } catch (const std::exception& error) {
        Complain(error.what());
        return someFailed;
    }
}
