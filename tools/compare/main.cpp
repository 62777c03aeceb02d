// tessaro-compare: the report of a scan, held against the truth of the simulated wafer.

#include "compare/comparison_table.h"
#include "compare/image_check.h"
#include "compare/options.h"
#include "compare/report_file.h"
#include "compare/scan_comparison.h"
#include "compare/wafer_truth.h"
#include "platform/qt/qt_picture_files.h"
#include "platform/qt/qt_runtime.h"
#include "text/whole_file.h"

#include <cstddef>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <optional>
#include <set>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace {

using namespace tessaro;

enum ExitStatus : int { compared = 0, imagesDiffer = 1, notWritten = 1, wrongUsage = 2 };

/// A file that cannot be compared.
struct BadInput : std::runtime_error {
    using std::runtime_error::runtime_error;
};

void Complain(const std::string& text) {
    std::fprintf(stderr, "tessaro-compare: %s\n", text.c_str());
}

std::string TextOf(const std::string& file) {
    if (std::optional<std::string> text = ReadWholeFile(file))
        return *std::move(text);
    throw BadInput("cannot read '" + file + "'");
}

template<typename Content>
Content Checked(std::variant<Content, ReadingError> read, const std::string& file, const char* what) {
    if (const ReadingError* const error = std::get_if<ReadingError>(&read))
        throw BadInput("'" + file + "' is no " + what + ": " + error->reason);
    return std::get<Content>(std::move(read));
}

ExitStatus ReportImages(const ReportFile& report) {
    const QtRuntime runtime;
    QtPictureFiles pictures;
    const auto [faults, others] = CheckImages(report.fields, pictures);
    std::size_t images = 0;
    std::set<std::string> folders;
    for (const ReportedField& field : report.fields) {
        images += field.images.size();
        for (const std::string& image : field.images)
            folders.insert(std::filesystem::path(image).parent_path());
    }
    std::printf("%-46s %5zu%s\n", "images", images, faults.empty() ? ", all there and sound" : "");
    for (const std::string& folder : folders)
        std::printf("  in %s\n", folder.c_str());
    for (const std::string& other : others)
        std::printf("  not in the report: %s\n", other.c_str());
    std::fflush(stdout);
    for (const std::string& fault : faults)
        Complain(fault);
    return faults.empty() ? compared : imagesDiffer;
}

void CheckForFields(const ReportFile& report, const std::string& file) {
    if (!report.fields.empty())
        return;
    const std::string why =
        report.ends.empty() ? std::string() : ", the scan ended: " + report.ends.back().why;
    throw BadInput("the report '" + file + "' has no field" + why);
}

ExitStatus Compare(const CompareOptions& options) {
    const ReportFile report =
        Checked(ReadReportFile(TextOf(options.reportFile)), options.reportFile, "report of a scan");
    CheckForFields(report, options.reportFile);
    const std::vector<TrueFlake> flakes =
        Checked(ReadWaferTruth(TextOf(options.truthFile)), options.truthFile, "truth of a wafer");
    const ScanComparison comparison = CompareScan(report.fields, flakes, options.comparison);
    std::fputs(ComparisonTable(report, comparison, options.comparison).c_str(), stdout);
    if (options.list)
        std::fputs(ComparisonList(comparison).c_str(), stdout);
    return options.images ? ReportImages(report) : compared;
}

ExitStatus Start(std::span<const std::string_view> arguments) {
    CompareOptions options;
    if (const std::string wrong = ParseCompareOptions(arguments, options); !wrong.empty()) {
        Complain(wrong + "\nTry 'tessaro-compare --help'.");
        return wrongUsage;
    }
    if (options.help || options.version) {
        std::fputs(options.help ? std::string(CompareHelp()).c_str()
                                : "tessaro-compare " TESSARO_VERSION "\n",
                   stdout);
        return compared;
    }
    return Compare(options);
}

} // namespace

int main(int argc, char** argv) {
    try {
        const std::vector<std::string_view> arguments(argv + 1, argv + argc);
        const ExitStatus status = Start(arguments);
        if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0)
            return status;
        Complain("standard output cannot be written");
        return notWritten;
    } catch (const std::exception& error) {
        Complain(error.what());
        return wrongUsage;
    }
}
