#include "focus_trials.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <fstream>
#include <span>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <unistd.h>
#include <vector>

// How well the searches for the focus do: many trials on the simulated microscope, in virtual time, and a row
// of the table for every set of conditions.

namespace tessaro {
namespace {

constexpr const char* help =
    "Usage: tessaro-focus-table [OPTION]...\n"
    "Lets the searches for the focus find it on many simulated wafers, and writes a table of where they "
    "ended.\n"
    "LISTs are separated by commas; there is a row for each combination.\n"
    "\n"
    "  --seeds N[,FIRST]   so many trials a row, one for each seed from FIRST on (2,1)\n"
    "  --search LIST       coarse, fine, coarse+fine, coarse+panel+fine, coarse+fine+fine (coarse+fine)\n"
    "  --speeds LIST       um/s of the coarse search (450)\n"
    "  --grabs LIST        ms that the camera takes for a frame (40)\n"
    "  --gains LIST        dB, with so much less exposure time (0)\n"
    "  --levels LIST       of bare substrate (140)\n"
    "  --told              the controller tells the progress of Z\n"
    "  --upwards           the climb begins upwards\n"
    "  --curves FOLDER     keeps the curve of every trial there\n"
    "  --help              says this\n";

constexpr int usageError = 2;
constexpr int failed = 1;

struct Search {
    const char* name;
    FocusManner manner;
    double mostDefocusUm;
};

constexpr std::array<Search, 5> searches = {{{"coarse", FocusManner::Coarse, 900.0},
                                             {"fine", FocusManner::Fine, 30.0},
                                             {"coarse+fine", FocusManner::CoarseFine, 300.0},
                                             {"coarse+panel+fine", FocusManner::CoarsePanelFine, 300.0},
                                             {"coarse+fine+fine", FocusManner::CoarseFineTwice, 300.0}}};

struct UsageError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

struct TableWishes {
    std::vector<int> seeds = {2, 1}; // the number of them, and the first
    std::vector<Search> searches = {tessaro::searches[2]};
    std::vector<int> speeds = {450}; // um/s
    std::vector<int> grabs = {40};   // ms
    std::vector<int> gains = {0};    // dB
    std::vector<int> levels = {140};
    bool told = false;    // the progress of Z
    bool upwards = false; // begins the climb
    std::string curves;   // a folder; empty: they are not kept
    bool help = false;
};

std::vector<std::string> Parts(std::string_view list) {
    std::vector<std::string> parts;
    std::istringstream all{std::string(list)};
    for (std::string part; std::getline(all, part, ',');)
        parts.push_back(part);
    return parts;
}

std::vector<int> Numbers(std::string_view option, std::string_view list) {
    std::vector<int> numbers;
    for (const std::string& part : Parts(list)) {
        int number = 0;
        const char* const end = part.data() + part.size();
        if (std::from_chars(part.data(), end, number).ptr != end || number < 0 || part.empty())
            throw UsageError(std::string(option) + ": '" + part + "' is no whole number");
        numbers.push_back(number);
    }
    if (numbers.empty())
        throw UsageError(std::string(option) + " needs a value");
    return numbers;
}

std::vector<Search> Searches(std::string_view list) {
    std::vector<Search> chosen;
    for (const std::string& part : Parts(list)) {
        const std::size_t before = chosen.size();
        for (const Search& search : searches)
            if (part == search.name)
                chosen.push_back(search);
        if (chosen.size() == before)
            throw UsageError("--search: '" + part + "' is not known");
    }
    if (chosen.empty())
        throw UsageError("--search needs a value");
    return chosen;
}

/// Whether the option was one without a value.
bool TakeFlag(std::string_view option, TableWishes& wishes) {
    if (option == "--told")
        wishes.told = true;
    else if (option == "--upwards")
        wishes.upwards = true;
    else if (option == "--help")
        wishes.help = true;
    else
        return false;
    return true;
}

void TakeValue(std::string_view option, std::string_view value, TableWishes& wishes) {
    if (option == "--seeds")
        wishes.seeds = Numbers(option, value);
    else if (option == "--search")
        wishes.searches = Searches(value);
    else if (option == "--speeds")
        wishes.speeds = Numbers(option, value);
    else if (option == "--grabs")
        wishes.grabs = Numbers(option, value);
    else if (option == "--gains")
        wishes.gains = Numbers(option, value);
    else if (option == "--levels")
        wishes.levels = Numbers(option, value);
    else if (option == "--curves")
        wishes.curves = value;
    else
        throw UsageError("unknown argument '" + std::string(option) + "'");
}

TableWishes ParseWishes(std::span<char*> arguments) {
    TableWishes wishes;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string_view option = arguments[i];
        if (TakeFlag(option, wishes))
            continue;
        const std::string_view value = i + 1 < arguments.size() ? arguments[++i] : "";
        TakeValue(option, value, wishes);
    }
    return wishes;
}

constexpr int quickGrabMs = 60;
constexpr std::uint32_t afterExposureBeginsMs = 45; // a slow grab waits for its exposure, and is then quick

GrabTiming TimingOf(int grabMs) {
    GrabTiming timing;
    timing.lastsMs = static_cast<std::uint32_t>(grabMs);
    if (grabMs > quickGrabMs)
        timing.exposureBeginsMs = timing.lastsMs - afterExposureBeginsMs;
    return timing;
}

std::string CurveFile(const Search& search, const FocusConditions& conditions, std::uint64_t seed) {
    return std::string(search.name) + "-level" + std::to_string(std::lround(conditions.level)) + "-gain" +
           std::to_string(std::lround(conditions.gainDb)) + "-grab" +
           std::to_string(conditions.timing.lastsMs) + "-speed" + std::to_string(conditions.speed) +
           (conditions.progress[2] ? "-told" : "") + (conditions.xTilt > 0.0F ? "-up-" : "-") +
           std::to_string(seed) + ".csv";
}

void KeepCurve(const std::string& file, const FlakeField& field, const FocusTrial& trial) {
    std::ofstream out(file);
    out << "# focus at " << field.place.z << " um, began " << trial.defocusUm << " um from it, ended "
        << trial.errorUm << " um from it after " << trial.seconds << " s, result " << trial.result << '\n'
        << trial.curve << "# exposed at, um from the focus:";
    for (const double z : trial.exposedAtZ)
        out << ' ' << z - field.place.z;
    out << '\n' << std::flush;
    if (!out)
        throw std::runtime_error("'" + file + "' cannot be written");
}

FocusTally Tally(const TableWishes& wishes, const Search& search, const FocusConditions& conditions) {
    std::vector<FocusTrial> trials;
    const auto first = static_cast<std::uint64_t>(wishes.seeds.size() > 1 ? wishes.seeds[1] : 1);
    const auto count = static_cast<std::uint64_t>(wishes.seeds[0]);
    for (std::uint64_t seed = first; seed < first + count; ++seed) {
        const FlakeField field(seed);
        trials.push_back(TryToFocus(field, seed, conditions));
        if (!wishes.curves.empty())
            KeepCurve(wishes.curves + '/' + CurveFile(search, conditions, seed), field, trials.back());
    }
    return FocusTally(trials);
}

void WriteRow(std::FILE* out, const Search& search, const FocusConditions& conditions,
              const FocusTally& tally) {
    std::fprintf(out, "| %s | %.0f | %.0f | %u | %d | %s | %d | %d | %d | %d | %.1f | %.1f | %.1f | %.1f |\n",
                 search.name, conditions.level, conditions.gainDb, conditions.timing.lastsMs,
                 conditions.speed, conditions.progress[2] ? "told" : "silent", tally.trials, tally.within3,
                 tally.within10, tally.within30, tally.medianUm, tally.ninetiethUm, tally.medianSeconds,
                 tally.longestSeconds);
    std::fflush(out); // it takes its time until the next
}

std::vector<FocusConditions> ConditionsOf(const TableWishes& wishes, const Search& search) {
    FocusConditions conditions;
    conditions.manner = search.manner;
    conditions.mostDefocusUm = search.mostDefocusUm;
    conditions.progress = {true, true, wishes.told};
    conditions.xTilt = wishes.upwards ? 0.001F : 0.0F;
    std::vector<FocusConditions> all;
    for (const int level : wishes.levels)
        for (const int gain : wishes.gains)
            for (const int grab : wishes.grabs)
                for (const int speed : wishes.speeds) {
                    conditions.level = level;
                    conditions.gainDb = gain;
                    conditions.timing = TimingOf(grab);
                    conditions.speed = speed;
                    all.push_back(conditions);
                }
    return all;
}

void WriteTable(std::FILE* out, const TableWishes& wishes) {
    std::fputs("| search | level | gain dB | grab ms | speed | Z | trials | 3 um | 10 um | 30 um | median | "
               "90 % | s | longest |\n",
               out);
    for (const Search& search : wishes.searches)
        for (const FocusConditions& conditions : ConditionsOf(wishes, search))
            WriteRow(out, search, conditions, Tally(wishes, search, conditions));
}

/// Standard output for the table alone: the link tells there of every command that it sends.
std::FILE* TakeStandardOutput() {
    std::FILE* const out = fdopen(dup(STDOUT_FILENO), "w");
    if (out == nullptr || std::freopen("/dev/null", "w", stdout) == nullptr)
        throw std::runtime_error("standard output cannot be had");
    return out;
}

} // namespace
} // namespace tessaro

int main(int argc, char** argv) {
    using namespace tessaro;
    try {
        const TableWishes wishes = ParseWishes({argv + 1, static_cast<std::size_t>(argc - 1)});
        if (wishes.help)
            std::fputs(help, stdout);
        else
            WriteTable(TakeStandardOutput(), wishes);
        return 0;
    } catch (const UsageError& error) {
        std::fprintf(stderr, "tessaro-focus-table: %s\nTry 'tessaro-focus-table --help'.\n", error.what());
        return usageError;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "tessaro-focus-table: %s\n", error.what());
        return failed;
    }
}
