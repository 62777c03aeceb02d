#include "analyze/batch.h"
#include "analyze/options.h"
#include "analyze/report_json.h"
#include "analyze/report_table.h"
#include "analyze/result_files.h"
#include "platform/qt/qt_drawing_surface.h"
#include "platform/qt/qt_picture_files.h"
#include "platform/qt/qt_runtime.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <exception>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <system_error>
#include <thread>
#include <unistd.h>

namespace {

using namespace tessaro;

enum ExitStatus : int { allAnalysed = 0, someFailed = 1, wrongUsage = 2 };

constexpr std::size_t manyPictures = 4; // from here on a progress line helps

void Complain(const std::string& text) {
    std::fprintf(stderr, "tessaro-analyze: %s\n", text.c_str());
}

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

/// Where results go as they come in: JSON lines or readable text, annotated pictures, errors.
class Results {
public:
    /// Returns what went wrong, or nothing.
    std::string Open(const AnalyzeOptions& options) {
        if (options.saveFolder) {
            m_saveFolder = *options.saveFolder;
            std::error_code error;
            std::filesystem::create_directories(m_saveFolder, error);
            if (!std::filesystem::is_directory(m_saveFolder))
                return "cannot make the folder '" + *options.saveFolder + "'" +
                       (error ? ": " + error.message() : std::string());
        }
        if (options.jsonFile && *options.jsonFile != "-") {
            std::vector<std::string> inputs = options.pictures;
            if (options.settingsFile)
                inputs.push_back(*options.settingsFile);
            for (const std::string& input : inputs) {
                std::error_code ignored;
                if (std::filesystem::equivalent(input, *options.jsonFile, ignored))
                    return "'" + *options.jsonFile + "' is one of the files to read";
            }
            m_jsonFile.reset(std::fopen(options.jsonFile->c_str(), "w"));
            if (!m_jsonFile)
                return "cannot write '" + *options.jsonFile + "': " + std::strerror(errno);
        }
        m_json = options.jsonFile ? (m_jsonFile ? m_jsonFile.get() : stdout) : nullptr;
        return {};
    }

    void Take(const BatchResult& result) {
        if (!result.error.empty()) {
            ++m_failed;
            Complain(result.report.file + ": " + result.error);
            return;
        }
        ++m_analysed;
        m_found += result.report.found;
        Write(m_json != nullptr ? m_json : stdout,
              m_json != nullptr ? ReportJson(result.report) + "\n" : ReportText(result.report));
        if (!m_saveFolder.empty())
            Save(result);
    }

    /// Returns the exit status.
    int Close() {
        if (m_json == nullptr && m_analysed + m_failed > 1)
            Write(stdout, SummaryText(m_analysed, m_failed, m_found));
        if (m_jsonFile && std::fclose(m_jsonFile.release()) != 0)
            WriteFailed();
        if (m_writeFailed)
            Complain("the results could not be written whole: " + m_writeError);
        return m_failed > 0 || m_writeFailed || m_saveFailed ? someFailed : allAnalysed;
    }

private:
    struct CloseFile {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };

    void Write(std::FILE* file, const std::string& text) {
        if (std::fputs(text.c_str(), file) < 0 || std::fflush(file) != 0)
            WriteFailed();
    }

    void WriteFailed() {
        if (!m_writeFailed)
            m_writeError = std::strerror(errno);
        m_writeFailed = true;
    }

    void Save(const BatchResult& result) {
        const std::string stem = std::filesystem::path(result.report.file).stem().string();
        const auto saved = WriteNewFile(m_saveFolder, stem, "jpg", result.annotatedJpeg);
        if (const FileError* error = std::get_if<FileError>(&saved)) {
            m_saveFailed = true;
            Complain(result.report.file + ": the annotated picture could not be saved: " + error->reason);
        } else if (m_json == nullptr) {
            Write(stdout, "    saved as " + std::get<std::filesystem::path>(saved).string() + "\n");
        }
    }

    std::filesystem::path m_saveFolder;
    std::unique_ptr<std::FILE, CloseFile> m_jsonFile;
    std::FILE* m_json = nullptr; // null: readable text on standard output
    int m_analysed = 0;
    int m_failed = 0;
    int m_found = 0;
    bool m_writeFailed = false;
    bool m_saveFailed = false;
    std::string m_writeError;
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

    Results results;
    if (const std::string wrong = results.Open(options); !wrong.empty())
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
        results.Take(result);
        progress.Show(++done);
    });
    progress.Clear();
    return results.Close();
}

int Start(int argc, char** argv) {
    AnalyzeOptions options;
    if (const std::string wrong = ParseOptions(argc, argv, options); !wrong.empty())
        return RefuseUsage(wrong);
    if (options.help) {
        std::fputs(AnalyzeUsage().c_str(), stdout);
        return allAnalysed;
    }
    if (options.version) {
        std::puts("tessaro-analyze " TESSARO_VERSION);
        return allAnalysed;
    }
    return Run(options);
}

} // namespace

int main(int argc, char** argv) {
    // A reader that goes away ("| head") and a file-size limit show as failed writes.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    try {
        return Start(argc, argv);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "tessaro-analyze: %s\n", error.what());
        return someFailed;
    }
}
