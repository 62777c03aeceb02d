#include "compare/options.h"

#include "text/number_reading.h"
#include "text/plain_text.h"

#include <vector>

namespace tessaro {
namespace {

constexpr double largestAreaUm2 = 1e6;
constexpr double largestToleranceUm = 100.0;

/// The number that an option with a value sets; null for any other argument.
double* NumberOf(std::string_view option, ComparisonOptions& options) {
    if (option == "--min-area")
        return &options.minimumAreaUm2;
    return option == "--tolerance" ? &options.toleranceUm : nullptr;
}

bool TakeFlag(std::string_view argument, CompareOptions& options) {
    bool* const flag = argument == "--list"      ? &options.list
                       : argument == "--images"  ? &options.images
                       : argument == "--help"    ? &options.help
                       : argument == "--version" ? &options.version
                                                 : nullptr;
    if (flag != nullptr)
        *flag = true;
    return flag != nullptr;
}

std::string TakeFiles(const std::vector<std::string_view>& files, CompareOptions& options) {
    if (files.size() != 2)
        return "a report and a truth are needed, not " + std::to_string(files.size()) + " files";
    options.reportFile = files[0];
    options.truthFile = files[1];
    return {};
}

} // namespace

std::string ParseCompareOptions(std::span<const std::string_view> arguments, CompareOptions& options) {
    std::vector<std::string_view> files;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string_view argument = arguments[i];
        const std::size_t equals = argument.find('=');
        const std::string_view name = argument.substr(0, equals);
        if (TakeFlag(argument, options))
            continue;
        if (double* const number = NumberOf(name, options.comparison)) {
            if (equals == std::string_view::npos && i + 1 == arguments.size())
                return Joined({"option '", name, "' needs a value"});
            const std::string_view value =
                equals == std::string_view::npos ? arguments[++i] : argument.substr(equals + 1);
            const double largest =
                number == &options.comparison.toleranceUm ? largestToleranceUm : largestAreaUm2;
            if (!ReadNumber(value, 0.0, largest, *number))
                return Joined(
                    {name, " takes a number from 0 to ", NumberText(largest, 0), ", not '", value, "'"});
        } else if (argument.starts_with('-')) {
            return Joined({"unknown option '", argument, "'"});
        } else {
            files.push_back(argument);
        }
    }
    return options.help || options.version ? std::string() : TakeFiles(files, options);
}

std::string_view CompareHelp() {
    return "Usage: tessaro-compare [OPTION]... REPORT TRUTH\n"
           "Holds the report of a scan (tessaro --report) against what truly is on the simulated wafer\n"
           "(tessaro-twin --truth): how many of its single layers were found, and how many of those\n"
           "reported are anything else. A flake counts once, however many fields show it. In the area\n"
           "lies what some field shows wholly, where the analysis looks for candidates; what the border\n"
           "of every field cuts need not be found, and is right when it is reported.\n"
           "\n"
           "  --min-area A    the smallest flake that is to be found, um^2 (150); smaller ones that are\n"
           "                  reported are right as well\n"
           "  --tolerance T   how far a reported one may lie from its flake, um (3)\n"
           "  --list          tell where the missed and the wrong ones are\n"
           "  --images        look whether the images of the report are on the disk; others beside them\n"
           "                  are named, which is no fault\n"
           "  --help          show this and exit\n"
           "  --version       show the version and exit\n"
           "\n"
           "Exit status: 0 compared, 1 the images are not those of the report, or the figures could not\n"
           "be written, 2 wrong usage, or a file that is no report, one without any field, or no truth.\n";
}

} // namespace tessaro
