#include "compare/comparison_table.h"
#include "compare/image_check.h"
#include "compare/report_file.h"
#include "compare/scan_comparison.h"
#include "compare/wafer_truth.h"
#include "platform/qt/qt_picture_files.h"
#include "platform/qt/qt_runtime.h"
#include "support/background_program.h"
#include "support/running_twin.h"
#include "text/number_reading.h"
#include "text/plain_text.h"
#include "text/whole_file.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

// How good a scan is: the operator's program scans simulated wafers by itself, in real time, and its reports
// are held against the truth. A row for each wafer. Needs the camera's port, 127.0.0.1:3956.

namespace tessaro {
namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

constexpr const char* help =
    "Usage: tessaro-scan-table [OPTION]...\n"
    "Scans simulated wafers with the operator's program, without a display, and writes a table of how many "
    "of\n"
    "their single layers it found, and how fast. What was missed, or is none, is listed below its row.\n"
    "\n"
    "  --seeds LIST       the wafers, separated by commas (1,2,3)\n"
    "  --range MM         side of the area, 1 to 20 (2)\n"
    "  --tilt X,Y         by how many um the focus rises along a um of X and of Y (0.002,-0.0015)\n"
    "  --defocus UM       how far from the focus the scan begins, -20 to 20 (3)\n"
    "  --threshold S      score from which a grain counts as a single layer (35)\n"
    "  --time-factor F    the stage moves so many times as fast (1)\n"
    "  --folder FOLDER    where reports, truths and images are kept (scan-table)\n"
    "  --help             says this\n"
    "\n"
    "Exit status: 0 all scans came to their ends, found 9 of 10, reported no more than 1 of 10 that is\n"
    "anything else, and left the images that they reported; 1 not so; 2 wrong usage.\n";

constexpr int usageError = 2;
constexpr int failed = 1;
constexpr double originUm = 600.0;
constexpr double marginMm = 1.5; // of the wafer around the area
constexpr std::chrono::minutes mostTime{60};

struct UsageError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

struct TableWishes {
    std::vector<std::uint64_t> seeds = {1, 2, 3};
    int rangeMm = 2;
    std::array<double, 2> tilt = {0.002, -0.0015}; // um of Z per um
    double defocusUm = 3.0;
    double threshold = 35.0;
    double timeFactor = 1.0;
    std::string folder = "scan-table";
    bool help = false;
};

std::vector<std::uint64_t> Seeds(std::string_view list) {
    std::vector<std::uint64_t> seeds;
    while (!list.empty()) {
        const std::string_view part = list.substr(0, list.find(','));
        list.remove_prefix(std::min(part.size() + 1, list.size()));
        if (!ReadNumber<std::uint64_t>(part, 0, UINT64_MAX, seeds.emplace_back()))
            return {};
    }
    return seeds;
}

bool TakeValue(std::string_view option, std::string_view value, TableWishes& wishes) {
    if (option == "--seeds")
        return !(wishes.seeds = Seeds(value)).empty();
    if (option == "--range")
        return ReadNumber(value, 1, 20, wishes.rangeMm);
    if (option == "--tilt")
        return ReadNumbers(value, -0.05, 0.05, wishes.tilt);
    if (option == "--defocus")
        return ReadNumber(value, -20.0, 20.0, wishes.defocusUm);
    if (option == "--threshold")
        return ReadNumber(value, -1000.0, 1000.0, wishes.threshold);
    if (option == "--time-factor")
        return ReadNumber(value, 0.01, 1000.0, wishes.timeFactor);
    wishes.folder = option == "--folder" ? value : "";
    return !wishes.folder.empty();
}

TableWishes ParseWishes(std::span<char*> arguments) {
    TableWishes wishes;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string_view option = arguments[i];
        if (option == "--help") {
            wishes.help = true;
            continue;
        }
        const std::string_view value = i + 1 < arguments.size() ? arguments[++i] : "";
        if (!TakeValue(option, value, wishes))
            throw UsageError(Joined({"'", option, " ", value, "' is not understood"}));
    }
    return wishes;
}

void Write(const fs::path& file, const std::string& text) {
    if (!WriteWholeFile(file.string(), text))
        throw std::runtime_error("cannot write '" + file.string() + "'");
}

/// A desktop of its own for the program, with the settings that it scans by.
void MakeDesktop(const fs::path& desktop, double threshold) {
    fs::remove_all(desktop / "Image_Data");
    fs::remove_all(desktop / "Image_Detail");
    fs::create_directories(desktop / "Image_Data");
    fs::create_directories(desktop / ".config");
    Write(desktop / ".config" / "user-dirs.dirs", "XDG_DESKTOP_DIR=\"" + desktop.string() + "\"\n");
    Write(desktop / "Image_Data" / "Config.txt", "3,-12,-8,-2,6,10,10,100,4," + NumberText(threshold, 2));
}

std::vector<std::string> TwinOptions(const TableWishes& wishes, std::uint64_t seed, const fs::path& desktop) {
    const double focus = (wishes.tilt[0] + wishes.tilt[1]) * originUm;
    return {"--quiet",
            "--seed",
            std::to_string(seed),
            "--wafer-mm",
            NumberText(wishes.rangeMm + marginMm, 1),
            "--tilt",
            NumberText(wishes.tilt[0], 6) + "," + NumberText(wishes.tilt[1], 6),
            "--at",
            NumberText(originUm, 0) + "," + NumberText(originUm, 0) + "," +
                NumberText(focus + wishes.defocusUm, 3),
            "--time-factor",
            NumberText(wishes.timeFactor, 3),
            "--truth",
            desktop / "wafer.json",
            "--stage-link",
            desktop / "stage"};
}

/// How long a scan took, by what its report had when.
struct ScanTimes {
    int exitStatus = -1;
    double allSeconds = 0.0;   // of the program, from its start to its end
    double fieldSeconds = 0.0; // from the end of the first field to that of the last
    int fieldsMeanwhile = 0;   // that were finished then

    double FieldsAMinute() const { return fieldSeconds > 0.0 ? fieldsMeanwhile * 60.0 / fieldSeconds : 0.0; }
};

std::size_t FieldLines(const fs::path& report) {
    const std::string text = ReadText(report);
    std::size_t lines = 0;
    for (std::size_t at = text.find("\"field\":"); at != std::string::npos;
         at = text.find("\"field\":", at + 1))
        ++lines;
    return lines;
}

ScanTimes Scan(const TableWishes& wishes, const fs::path& desktop) {
    const std::string range = std::to_string(wishes.rangeMm);
    const std::string origin = NumberText(originUm, 0);
    const fs::path report = desktop / "report.jsonl";
    fs::remove(report);
    const auto start = Clock::now();
    const auto since = [](Clock::time_point from) {
        return std::chrono::duration<double>(Clock::now() - from).count();
    };
    BackgroundProgram program(TESSARO_PROGRAM,
                              {"--camera", "127.0.0.1", "--stage-port", desktop / "stage", "--scan",
                               "--x-range", range, "--y-range", range, "--origin", origin + "," + origin,
                               "--report", report},
                              {{"XDG_CONFIG_HOME", desktop / ".config"}, {"QT_QPA_PLATFORM", "offscreen"}},
                              desktop / "errors.txt", desktop / "output.txt");
    ScanTimes times;
    Clock::time_point first = start;
    std::size_t atFirst = 0;
    std::size_t seen = 0;
    const auto look = [&] {
        const std::size_t lines = FieldLines(report);
        if (seen == 0 && lines > 0) {
            first = Clock::now();
            atFirst = lines;
        }
        if (lines > seen)
            times.fieldSeconds = since(first);
        seen = lines;
        times.fieldsMeanwhile = static_cast<int>(lines - atFirst);
        return !program.IsRunning();
    };
    Eventually(look, mostTime);
    times.allSeconds = since(start);
    times.exitStatus = program.ExitStatus().value_or(-1);
    return times;
}

/// What one scan, or all together, came to.
struct Score {
    int fields = 0;
    int wanted = 0;
    int found = 0;
    int reported = 0;
    int wrong = 0;
    int again = 0;
    int imageFaults = 0;

    void Add(const Score& other) {
        fields += other.fields;
        wanted += other.wanted;
        found += other.found;
        reported += other.reported;
        wrong += other.wrong;
        again += other.again;
        imageFaults += other.imageFaults;
    }
    bool IsGood() const { return found * 10 >= wanted * 9 && wrong * 10 <= reported && imageFaults == 0; }
};

template<typename Content>
Content Checked(std::variant<Content, ReadingError> read) {
    if (const ReadingError* const error = std::get_if<ReadingError>(&read))
        throw std::runtime_error(error->reason);
    return std::get<Content>(std::move(read));
}

Score Compare(const fs::path& desktop, std::string& list) {
    const ReportFile report = Checked(ReadReportFile(ReadText(desktop / "report.jsonl")));
    const ScanComparison comparison =
        CompareScan(report.fields, Checked(ReadWaferTruth(ReadText(desktop / "wafer.json"))));
    QtPictureFiles pictures;
    const std::vector<std::string> faults = CheckImages(report.fields, pictures).faults;
    list = ComparisonList(comparison);
    for (const std::string& fault : faults)
        list += fault + '\n';
    return {.fields = comparison.fields,
            .wanted = static_cast<int>(comparison.wanted.size()),
            .found = comparison.Found(),
            .reported = static_cast<int>(comparison.reported.size()),
            .wrong = comparison.Wrong(),
            .again = comparison.Again(),
            .imageFaults = static_cast<int>(faults.size())};
}

void WriteRow(const std::string& name, const Score& score, const std::string& times) {
    const auto share = [](int part, int all) { return all > 0 ? 100.0 * part / all : 0.0; };
    std::printf("| %s | %d | %d | %d (%.1f %%) | %d | %d (%.1f %%) | %d | %d | %s |\n", name.c_str(),
                score.fields, score.wanted, score.found, share(score.found, score.wanted), score.reported,
                score.wrong, share(score.wrong, score.reported), score.again, score.imageFaults,
                times.c_str());
}

/// False where the scan did not come to its end.
bool ScanWafer(const TableWishes& wishes, std::uint64_t seed, Score& all) {
    const fs::path desktop = fs::absolute(wishes.folder) / ("seed-" + std::to_string(seed));
    MakeDesktop(desktop, wishes.threshold);
    RunningTwin twin(TESSARO_TWIN, TwinOptions(wishes, seed, desktop));
    if (!twin.IsReady())
        throw std::runtime_error("the simulated microscope does not start: " + twin.Errors());
    const ScanTimes times = Scan(wishes, desktop);
    std::string list;
    const Score score = Compare(desktop, list);
    WriteRow(std::to_string(seed), score,
             NumberText(times.allSeconds, 1) + " | " + NumberText(times.fieldSeconds, 1) + " | " +
                 NumberText(times.FieldsAMinute(), 1) + " | " + std::to_string(times.exitStatus));
    std::fputs(list.c_str(), stdout);
    std::fflush(stdout);
    all.Add(score);
    return times.exitStatus == 0;
}

int WriteTable(const TableWishes& wishes) {
    const QtRuntime runtime;
    std::puts("| seed | fields | single layers | found | reported | anything else | again | image faults | s "
              "in all | "
              "s of fields | fields a minute | exit |\n|---|---|---|---|---|---|---|---|---|---|---|---|");
    std::fflush(stdout); // or the programs that are started would write it as well
    Score all;
    bool good = true;
    for (const std::uint64_t seed : wishes.seeds)
        good = ScanWafer(wishes, seed, all) && good;
    WriteRow("all", all, "| | |");
    return good && all.IsGood() ? 0 : failed;
}

} // namespace
} // namespace tessaro

int main(int argc, char** argv) {
    using namespace tessaro;
    try {
        const TableWishes wishes = ParseWishes({argv + 1, static_cast<std::size_t>(argc - 1)});
        if (!wishes.help)
            return WriteTable(wishes);
        std::fputs(help, stdout);
        return 0;
    } catch (const UsageError& error) {
        std::fprintf(stderr, "tessaro-scan-table: %s\nTry 'tessaro-scan-table --help'.\n", error.what());
        return usageError;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "tessaro-scan-table: %s\n", error.what());
        return failed;
    }
}
