#pragma once

#include "analysis/grain_report.h"
#include "text/json_writer.h"

namespace tessaro {

inline constexpr int reportDecimals = 6; // of the numbers in reports

/// What every report says of a grain, as members of an object that the caller opens and closes.
void WriteGrainMembers(JsonWriter& json, const GrainReport& grain);

} // namespace tessaro
