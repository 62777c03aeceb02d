#pragma once

#include "analyze/batch.h"
#include "analyze/options.h"
#include "analyze/report_table.h"
#include "analyze/result_files.h"

#include <cstdio>
#include <filesystem>
#include <string>

namespace tessaro {

/// Where results go as they come in: JSON lines or readable text, annotated pictures, errors.
class BatchOutput {
public:
    BatchOutput(std::FILE* output, std::FILE* errors) : m_output(output), m_errors(errors) {}

    /// Makes the folder and opens the file that the options ask for. Returns what went wrong, or nothing.
    std::string Open(const AnalyzeOptions& options);

    void Take(const BatchResult& result);

    /// Returns whether every picture was analysed and every result written.
    bool Close();

private:
    void Write(std::FILE* file, const std::string& text);
    void WriteFailed();
    void Save(const BatchResult& result);

    std::FILE* m_output;
    std::FILE* m_errors;
    std::filesystem::path m_saveFolder;
    OpenFile m_jsonFile;
    std::FILE* m_json = nullptr; // null: readable text on the output
    BatchTotals m_totals;
    bool m_writeFailed = false;
    std::string m_writeError;
};

} // namespace tessaro
