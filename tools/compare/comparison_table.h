#pragma once

#include "compare/report_file.h"
#include "compare/scan_comparison.h"

#include <string>

namespace tessaro {

/// The figures, a line each.
std::string ComparisonTable(const ReportFile& report, const ScanComparison& comparison,
                            const ComparisonOptions& options);

/// Every single layer that was missed, and everything reported that is none; empty where all is well.
std::string ComparisonList(const ScanComparison& comparison);

} // namespace tessaro
