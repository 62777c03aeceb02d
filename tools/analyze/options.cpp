#include "analyze/options.h"

#include <charconv>
#include <cmath>
#include <getopt.h>
#include <string_view>

namespace tessaro {
namespace {

enum OptionCode : int {
    targetOption = 1,
    toleranceOption,
    minimumAreaOption,
    thresholdOption,
    settingsOption,
    balanceOption,
    jsonOption,
    saveOption,
    jobsOption,
    helpOption,
    versionOption,
};

constexpr option longOptions[] = {
    {"target", required_argument, nullptr, targetOption},
    {"tolerance", required_argument, nullptr, toleranceOption},
    {"min-area", required_argument, nullptr, minimumAreaOption},
    {"threshold", required_argument, nullptr, thresholdOption},
    {"settings", required_argument, nullptr, settingsOption},
    {"balance", no_argument, nullptr, balanceOption},
    {"json", required_argument, nullptr, jsonOption},
    {"save", required_argument, nullptr, saveOption},
    {"jobs", required_argument, nullptr, jobsOption},
    {"help", no_argument, nullptr, helpOption},
    {"version", no_argument, nullptr, versionOption},
    {nullptr, 0, nullptr, 0},
};

/// The whole text as a number, whatever the locale.
template<typename Number>
bool ParseNumber(std::string_view text, Number& number) {
    if (text.starts_with('+'))
        text.remove_prefix(1);
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size();
}

bool ParseFinite(std::string_view text, float& number) {
    return ParseNumber(text, number) && std::isfinite(number);
}

bool ParseTarget(std::string_view text, std::array<float, 3>& target) {
    for (std::size_t channel = 0; channel < target.size(); ++channel) {
        const std::size_t comma = text.find(',');
        const bool last = channel + 1 == target.size();
        if (last != (comma == std::string_view::npos) || !ParseFinite(text.substr(0, comma), target[channel]))
            return false;
        text.remove_prefix(last ? text.size() : comma + 1);
    }
    return true;
}

std::string Wrong(std::string_view name, std::string_view wanted, std::string_view given) {
    return std::string(name) + " takes " + std::string(wanted) + ", not '" + std::string(given) + "'";
}

/// What is wrong with the argument that getopt_long has just refused, `last` being the last one it finished.
std::string Refused(int code, std::string_view last) {
    if (code == ':')
        return "option '" + std::string(last) + "' needs a value";
    if (optopt < 0 ||
        optopt > versionOption) // a short option: the argument that it stands in may not be finished
        return std::string("unknown or unclear option '-") + static_cast<char>(optopt) + "'";
    return "unknown or unclear option '" + std::string(last) + "'";
}

/// Takes over one option; returns what is wrong with its argument, or nothing.
std::string TakeOption(int code, std::string_view argument, AnalyzeOptions& options) {
    switch (code) {
    case targetOption:
        if (std::array<float, 3> target{}; ParseTarget(argument, target))
            options.target = target;
        else
            return Wrong("--target", "three contrasts in percent such as -12,-8,-2", argument);
        break;
    case toleranceOption:
        if (float tolerance = 0.0F; ParseFinite(argument, tolerance) && tolerance >= 0)
            options.tolerance = tolerance;
        else
            return Wrong("--tolerance", "a number of percentage points from 0 up", argument);
        break;
    case minimumAreaOption:
        if (int area = 0; ParseNumber(argument, area) && area >= 0)
            options.minimumArea = area;
        else
            return Wrong("--min-area", "a whole number of square micrometres from 0 up", argument);
        break;
    case thresholdOption:
        if (float threshold = 0.0F; ParseFinite(argument, threshold))
            options.threshold = threshold;
        else
            return Wrong("--threshold", "a number of score points", argument);
        break;
    case jobsOption:
        if (int jobs = 0; ParseNumber(argument, jobs) && jobs >= 1 && jobs <= maximumJobs)
            options.jobs = jobs;
        else
            return Wrong("--jobs", "a whole number from 1 to " + std::to_string(maximumJobs), argument);
        break;
    case settingsOption:
        options.settingsFile = argument;
        break;
    case jsonOption:
        options.jsonFile = argument;
        break;
    case saveOption:
        options.saveFolder = argument;
        break;
    case balanceOption:
        options.balance = true;
        break;
    case helpOption:
        options.help = true;
        break;
    case versionOption:
        options.version = true;
        break;
    default:
        break;
    }
    return {};
}

} // namespace

std::string ParseOptions(int argc, char* const* argv, AnalyzeOptions& options) {
    optind = 0; // start over, even after an earlier call
    opterr = 0;
    for (;;) {
        const int code = getopt_long(argc, argv, ":", longOptions, nullptr);
        if (code == -1)
            break;
        if (code == '?' || code == ':')
            return Refused(code, argv[optind - 1]);
        if (std::string wrong = TakeOption(code, optarg == nullptr ? "" : optarg, options); !wrong.empty())
            return wrong;
    }
    options.pictures.assign(argv + optind, argv + argc);
    if (options.pictures.empty() && !options.help && !options.version)
        return "no picture given";
    return {};
}

void ApplyOptions(const AnalyzeOptions& options, Settings& settings) {
    settings.targetContrast = options.target.value_or(settings.targetContrast);
    settings.contrastTolerance = options.tolerance.value_or(settings.contrastTolerance);
    settings.minimumFlakeArea = options.minimumArea.value_or(settings.minimumFlakeArea);
    settings.scoreThreshold = options.threshold.value_or(settings.scoreThreshold);
}

std::string AnalyzeUsage() {
    return R"(Usage: tessaro-analyze [options] PICTURE...

Finds single-layer flakes in microscope pictures (JPEG, PNG, TIFF, BMP, PPM). A picture of
1232 x 1028 is taken pixel by pixel, any other is stretched to that size.

  --target R,G,B    contrast of a single layer against the substrate, percent (-12,-8,-2)
  --tolerance T     how far each contrast may be off, percentage points (6)
  --min-area A      smallest flake, square micrometres (100)
  --threshold S     score from which a grain counts as a single layer (70)
  --settings FILE   take these from a Config.txt; options given here win over it
  --balance         first scale red and blue so that the substrate is grey, as a camera's
                    white balance would
  --json FILE       write one JSON object a picture, a line each, in the order given
                    (-: standard output)
  --save DIR        save each picture with scores and frames drawn in, as a new JPEG whose
                    name is told (with --json on standard error)
  --jobs N          pictures to work on at a time (default: the machine's cores)
  --help            show this text
  --version         show the version

Exit status: 0 all pictures analysed, 1 some could not be analysed or a result not be
written, 2 wrong usage.
)";
}

} // namespace tessaro
