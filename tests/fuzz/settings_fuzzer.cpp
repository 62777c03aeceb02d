#include "app/settings.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

// Any bytes as the line of Config.txt.

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    tessaro::Settings settings;
    const int taken = tessaro::ReadSettingsLine({reinterpret_cast<const char*>(data), size}, settings);
    if (taken < 0 || taken > tessaro::settingsFieldCount)
        std::abort();
    return 0;
}
