#pragma once

#include "app/settings.h"

#include <array>
#include <optional>
#include <string>
#include <vector>

namespace tessaro {

/// What the command line asks for. Settings that were not given are empty.
struct AnalyzeOptions {
    std::optional<std::array<float, 3>> target; // percent, [red, green, blue]
    std::optional<float> tolerance;
    std::optional<int> minimumArea; // um^2
    std::optional<float> threshold;
    std::optional<std::string> settingsFile;
    std::optional<std::string> jsonFile; // "-": standard output
    std::optional<std::string> saveFolder;
    std::optional<int> jobs;
    bool balance = false;
    bool help = false;
    bool version = false;
    std::vector<std::string> pictures;
};

inline constexpr int maximumJobs = 256;

/// Parses the arguments, argv[0] being the program. Returns an empty text, or what is wrong with them.
std::string ParseOptions(int argc, char* const* argv, AnalyzeOptions& options);

/// Replaces the settings that the command line gives.
void ApplyOptions(const AnalyzeOptions& options, Settings& settings);

std::string AnalyzeUsage();

} // namespace tessaro
