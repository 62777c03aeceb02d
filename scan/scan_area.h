#pragma once

#include "app/settings.h"
#include "scan/scan_state.h"

#include <algorithm>
#include <cstdint>
#include <limits>

namespace tessaro {

/// A range of the settings in um. Clamped to what a position can hold.
constexpr std::int32_t RangeUm(std::int32_t rangeMm) {
    constexpr std::int64_t umPerMm = 1000;
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(rangeMm * umPerMm,
                                                              std::numeric_limits<std::int32_t>::min(),
                                                              std::numeric_limits<std::int32_t>::max()));
}

/// The far ends of the scan area, um.
constexpr std::int64_t FarX(const ScanState& scan, const Settings& settings) {
    return std::int64_t{scan.originX} + RangeUm(settings.xRange);
}
constexpr std::int64_t FarY(const ScanState& scan, const Settings& settings) {
    return std::int64_t{scan.originY} + RangeUm(settings.yRange);
}

/// Fields along a range; none where it is shorter than the way between two of them.
constexpr std::int32_t FieldsAlong(std::int32_t rangeMm) {
    return RangeUm(rangeMm) / fieldStepUm;
}

} // namespace tessaro
