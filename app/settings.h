#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace tessaro {

/// The ten settings that outlive a run, in the order of the line in Config.txt. A fresh object holds the
/// defaults.
struct Settings {
    std::int32_t portNumber = 3;                                  // COM port of the stage controller
    std::array<float, 3> targetContrast = {-12.0F, -8.0F, -2.0F}; // percent, [red, green, blue]
    float contrastTolerance = 6.0F;                               // percentage points, each channel alike
    std::int32_t xRange = 10;                                     // mm
    std::int32_t yRange = 10;                                     // mm
    std::int32_t minimumFlakeArea = 100;                          // um^2
    std::int32_t material = 4;    // 0 graphene, 1 hBN, 2 TMDc, 4 contrast taken from a probed pixel
    float scoreThreshold = 70.0F; // a grain that scores at least this is a single layer
};

inline constexpr int settingsFieldCount = 10;

/// Reads "%d,%f,%f,%f,%f,%d,%d,%d,%d,%f" from the start of the text, whatever the locale. Fields up to the
/// first that does not parse are taken, the rest keep their values; a number that its type cannot hold does
/// not parse. Returns the number of fields taken.
int ReadSettingsLine(std::string_view text, Settings& settings);

} // namespace tessaro
