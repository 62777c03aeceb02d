#include "support/background_program.h"
#include "support/running_twin.h"
#include "support/temporary_folder.h"
#include "text/number_reading.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <span>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

// Whether a long scan needs more and more: the operator's program scans a large simulated wafer by itself,
// and its memory, threads and open files are looked at behind each field. Needs the camera's port,
// 127.0.0.1:3956.

namespace tessaro {
namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

constexpr const char* help = "Usage: tessaro-scan-soak [OPTION]...\n"
                             "Scans a large simulated wafer with the operator's program, without a display "
                             "and with a fast stage, and\n"
                             "writes a table of the memory, threads and open files that the program has.\n"
                             "\n"
                             "  --fields N         at least so many fields, 100 to 5000 (650)\n"
                             "  --seed N           the wafer (1)\n"
                             "  --time-factor F    the stage moves so many times as fast (20)\n"
                             "  --help             says this\n"
                             "\n"
                             "Exit status: 0 the scan came to its end, lost neither camera nor stage, and "
                             "all three stayed as they\n"
                             "were behind the first 50 fields; 1 not so; 2 wrong usage.\n";

constexpr int usageError = 2;
constexpr int failed = 1;
constexpr int columns = 25; // of 10 mm
constexpr int rangeX = 10;  // mm
constexpr int settled = 50; // fields, after which nothing may grow
constexpr int rowOfTable = 50;
constexpr int originUm = 600;
constexpr long mostGrowthKb = 2048; // what an allocator may keep for itself
constexpr std::chrono::hours mostTime{2};

struct SoakWishes {
    int fields = 650;
    int seed = 1;
    double timeFactor = 20.0;
    bool help = false;
};

bool TakeValue(std::string_view option, std::string_view value, SoakWishes& wishes) {
    if (option == "--fields")
        return ReadNumber(value, 2 * settled, 5000, wishes.fields);
    if (option == "--seed")
        return ReadNumber(value, 0, 1'000'000, wishes.seed);
    return option == "--time-factor" && ReadNumber(value, 0.01, 1000.0, wishes.timeFactor);
}

bool ParseWishes(std::span<char*> arguments, SoakWishes& wishes) {
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string_view option = arguments[i];
        if (option == "--help") {
            wishes.help = true;
            continue;
        }
        const std::string_view value = i + 1 < arguments.size() ? arguments[++i] : "";
        if (!TakeValue(option, value, wishes))
            return false;
    }
    return true;
}

/// An odd number of rows is one row more.
int FieldsOf(int rangeY) {
    return (rangeY * 1000 / 400 + 1) / 2 * 2 * columns;
}

/// In mm: as few rows as have so many fields.
int RangeY(int fields) {
    int range = 1;
    while (FieldsOf(range) < fields)
        ++range;
    return range;
}

/// What a process holds.
struct Holdings {
    int field = 0;
    long memoryKb = 0; // that is in use
    long mostKb = 0;   // that ever was
    int threads = 0;
    int files = 0;
};

Holdings HoldingsOf(int process, int field) {
    const fs::path folder = fs::path("/proc") / std::to_string(process);
    Holdings holdings = {.field = field};
    std::ifstream status(folder / "status");
    for (std::string key; status >> key;) {
        if (key == "VmRSS:")
            status >> holdings.memoryKb;
        else if (key == "VmHWM:")
            status >> holdings.mostKb;
        else if (key == "Threads:")
            status >> holdings.threads;
    }
    std::error_code error;
    fs::directory_iterator files(folder / "fd", error);
    for (; !error && files != fs::directory_iterator(); files.increment(error))
        ++holdings.files;
    return holdings;
}

/// Counts the fields of a report as it is written.
class FieldCount {
public:
    explicit FieldCount(const fs::path& report) : m_report(report) {}

    int Now() {
        if (!m_file.is_open())
            m_file.open(m_report, std::ios::binary);
        m_file.clear(); // of the end that it came to the time before
        for (std::istreambuf_iterator<char> byte(m_file), end; byte != end; ++byte)
            m_lines += *byte == '\n' ? 1 : 0;
        return m_lines;
    }

private:
    fs::path m_report;
    std::ifstream m_file;
    int m_lines = 0;
};

void WriteRow(const Holdings& now, double seconds) {
    std::printf("| %d | %.0f | %ld | %ld | %d | %d |\n", now.field, seconds, now.memoryKb, now.mostKb,
                now.threads, now.files);
    std::fflush(stdout);
}

/// The least and the most of something in some fields.
template<typename Member>
struct Span {
    Member least;
    Member most;

    Span(std::span<const Holdings> fields, Member Holdings::*member)
        : least(fields.front().*member), most(least) {
        for (const Holdings& field : fields) {
            least = std::min(least, field.*member);
            most = std::max(most, field.*member);
        }
    }
};

/// Threads and files swing with the images that are taken, and memory with the grains of a field. So what is
/// held in the last fields is compared with the span of those that follow the first ones.
bool IsConstant(const std::vector<Holdings>& seen) {
    const auto behindFirst =
        std::find_if(seen.begin(), seen.end(), [](const Holdings& at) { return at.field > settled; });
    if (seen.end() - behindFirst < 2)
        return false;
    const std::span<const Holdings> all(behindFirst, seen.end());
    const std::span<const Holdings> early = all.first(std::min<std::size_t>(settled, all.size() / 2));
    const std::span<const Holdings> late = all.last(early.size());
    const Span memory(late, &Holdings::memoryKb);
    const Span memoryEarly(early, &Holdings::memoryKb);
    const Span threads(all, &Holdings::threads);
    const Span threadsEarly(early, &Holdings::threads);
    const Span files(all, &Holdings::files);
    const Span filesEarly(early, &Holdings::files);
    std::printf("memory: %ld to %ld kB in fields %d to %d, %ld to %ld kB in the last %d\n", memoryEarly.least,
                memoryEarly.most, early.front().field, early.back().field, memory.least, memory.most,
                static_cast<int>(late.size()));
    std::printf("threads: %d to %d, then never more than %d\n", threadsEarly.least, threadsEarly.most,
                threads.most);
    std::printf("open files: %d to %d, then never more than %d\n", filesEarly.least, filesEarly.most,
                files.most);
    return memory.most <= memoryEarly.most + mostGrowthKb && threads.most <= threadsEarly.most &&
           files.most <= filesEarly.most;
}

/// What the program held behind each field that was seen in time.
std::vector<Holdings> Watch(BackgroundProgram& program, const fs::path& report, int fields) {
    std::puts("| field | s | memory kB | most kB | threads | open files |\n|---|---|---|---|---|---|");
    FieldCount count(report);
    std::vector<Holdings> seen;
    const auto start = Clock::now();
    int nextRow = 1;
    Eventually(
        [&] {
            const int field = count.Now();
            if (!program.IsRunning())
                return true;
            if (field == 0 || field > fields || (!seen.empty() && field == seen.back().field))
                return false;
            const Holdings now = HoldingsOf(program.Process(), field);
            if (now.threads == 0)
                return false; // it is about to end
            seen.push_back(now);
            if (field >= nextRow) {
                WriteRow(now, std::chrono::duration<double>(Clock::now() - start).count());
                nextRow = (field / rowOfTable + 1) * rowOfTable;
            }
            return false;
        },
        mostTime);
    return seen;
}

int SavedImages(const fs::path& home) {
    int count = 0;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(home))
        count += entry.path().extension() == ".jpg" ? 1 : 0;
    return count;
}

int Soak(const SoakWishes& wishes) {
    const TemporaryFolder home;
    const std::string stage = home.Path() / "stage";
    const fs::path report = home.Path() / "report.jsonl";
    const int rangeY = RangeY(wishes.fields);
    const std::string origin = std::to_string(originUm) + "," + std::to_string(originUm);
    fs::create_directories(home.Path() / "Desktop" / "Image_Data");
    std::ofstream(home.Path() / "Desktop" / "Image_Data" / "Config.txt")
        << "3,-12,-8,-2,6,10,10,100,4,35"; // finds what there is
    RunningTwin twin(TESSARO_TWIN,
                     {"--quiet", "--seed", std::to_string(wishes.seed), "--wafer-mm",
                      std::to_string(std::max(rangeX, rangeY) + 2), "--at", origin + ",0", "--time-factor",
                      std::to_string(wishes.timeFactor), "--stage-link", stage});
    if (!twin.IsReady()) {
        std::fprintf(stderr, "tessaro-scan-soak: the simulated microscope does not start: %s\n",
                     twin.Errors().c_str());
        return failed;
    }
    BackgroundProgram program(
        TESSARO_PROGRAM,
        {"--camera", "127.0.0.1", "--stage-port", stage, "--scan", "--no-tilt", "--x-range",
         std::to_string(rangeX), "--y-range", std::to_string(rangeY), "--origin", origin, "--report", report},
        {{"HOME", home.Path()}, {"XDG_CONFIG_HOME", ""}, {"QT_QPA_PLATFORM", "offscreen"}},
        home.Path() / "errors");
    const std::vector<Holdings> seen = Watch(program, report, FieldsOf(rangeY));
    const int exitStatus = program.ExitStatus().value_or(-1);
    const bool constant = IsConstant(seen);
    std::printf("%d images saved, looked at %d times, exit status %d: %s\n", SavedImages(home.Path()),
                static_cast<int>(seen.size()), exitStatus, constant ? "constant" : "NOT constant");
    const std::string errors = ReadText(home.Path() / "errors"); // of a camera that was lost, for example
    std::fputs(errors.c_str(), stdout);
    return exitStatus == 0 && constant && errors.empty() ? 0 : failed;
}

} // namespace
} // namespace tessaro

int main(int argc, char** argv) {
    using namespace tessaro;
    SoakWishes wishes;
    if (!ParseWishes({argv + 1, static_cast<std::size_t>(argc - 1)}, wishes)) {
        std::fputs("tessaro-scan-soak: wrong usage\nTry 'tessaro-scan-soak --help'.\n", stderr);
        return usageError;
    }
    if (wishes.help) {
        std::fputs(help, stdout);
        return 0;
    }
    return Soak(wishes);
}
