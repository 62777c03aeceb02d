#include "analyze/batch_output.h"

#include "analyze/complain.h"
#include "analyze/report_json.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <system_error>
#include <variant>
#include <vector>

namespace tessaro {
namespace {

/// Whether writing to the file would destroy one that the options tell to read.
bool IsInput(const std::string& file, const AnalyzeOptions& options) {
    std::vector<std::string> inputs = options.pictures;
    if (options.settingsFile)
        inputs.push_back(*options.settingsFile);
    return std::any_of(inputs.begin(), inputs.end(), [&](const std::string& input) {
        std::error_code ignored;
        return std::filesystem::equivalent(input, file, ignored);
    });
}

std::variant<std::filesystem::path, FileError> SaveAnnotated(const BatchResult& result,
                                                             const std::filesystem::path& folder) {
    if (!result.saveError.empty())
        return FileError{result.saveError};
    const std::string stem = std::filesystem::path(result.report.file).stem().string();
    return WriteNewFile(folder, stem, "jpg", result.annotatedJpeg);
}

} // namespace

std::string BatchOutput::Open(const AnalyzeOptions& options) {
    if (options.saveFolder) {
        m_saveFolder = *options.saveFolder;
        std::error_code error;
        std::filesystem::create_directories(m_saveFolder, error);
        std::error_code ignored;
        if (!std::filesystem::is_directory(m_saveFolder, ignored))
            return "cannot make the folder '" + *options.saveFolder + "'" +
                   (error ? ": " + error.message() : std::string());
    }
    if (options.jsonFile && *options.jsonFile != "-") {
        if (IsInput(*options.jsonFile, options))
            return "'" + *options.jsonFile + "' is one of the files to read";
        m_jsonFile.reset(std::fopen(options.jsonFile->c_str(), "w"));
        if (!m_jsonFile)
            return "cannot write '" + *options.jsonFile + "': " + std::strerror(errno);
    }
    m_json = options.jsonFile ? (m_jsonFile ? m_jsonFile.get() : m_output) : nullptr;
    return {};
}

void BatchOutput::Take(const BatchResult& result) {
    if (!result.error.empty()) {
        ++m_totals.failed;
        Complain(result.report.file + ": " + result.error, m_errors);
        return;
    }
    ++m_totals.analysed;
    m_totals.found += result.report.found;
    Write(m_json != nullptr ? m_json : m_output,
          m_json != nullptr ? ReportJson(result.report) + "\n" : ReportText(result.report));
    if (!m_saveFolder.empty())
        Save(result);
}

bool BatchOutput::Close() {
    if (m_json == nullptr && m_totals.analysed + m_totals.failed > 1)
        Write(m_output, SummaryText(m_totals));
    if (m_jsonFile && std::fclose(m_jsonFile.release()) != 0)
        WriteFailed();
    if (m_writeFailed)
        Complain("the results could not be written whole: " + m_writeError, m_errors);
    return m_totals.failed == 0 && m_totals.unsaved == 0 && !m_writeFailed;
}

void BatchOutput::Write(std::FILE* file, const std::string& text) {
    if (std::fputs(text.c_str(), file) < 0 || std::fflush(file) != 0)
        WriteFailed();
}

void BatchOutput::WriteFailed() {
    if (!m_writeFailed)
        m_writeError = std::strerror(errno);
    m_writeFailed = true;
}

void BatchOutput::Save(const BatchResult& result) {
    const auto saved = SaveAnnotated(result, m_saveFolder);
    if (const FileError* error = std::get_if<FileError>(&saved)) {
        ++m_totals.unsaved;
        Complain(result.report.file + ": the annotated picture could not be saved: " + error->reason,
                 m_errors);
        return;
    }
    const std::string name = std::get<std::filesystem::path>(saved).string();
    if (m_json == nullptr)
        Write(m_output, "    saved as " + name + "\n");
    else
        Complain(result.report.file + ": saved as " + name, m_errors);
}

} // namespace tessaro
