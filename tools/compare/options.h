#pragma once

#include "compare/scan_comparison.h"

#include <span>
#include <string>
#include <string_view>

namespace tessaro {

/// What the command line of tessaro-compare asks for.
struct CompareOptions {
    std::string reportFile;
    std::string truthFile;
    ComparisonOptions comparison;
    bool list = false;
    bool images = false;
    bool help = false;
    bool version = false;
};

/// The arguments behind the program's name. Returns an empty text, or what is wrong with them.
std::string ParseCompareOptions(std::span<const std::string_view> arguments, CompareOptions& options);

std::string_view CompareHelp();

} // namespace tessaro
