#pragma once

#include "analyze/picture_report.h"

#include <string>

namespace tessaro {

/// The report as one JSON object on one line, without a line feed. Six decimals whatever the locale; a number
/// that is not finite is null; bytes of the file name that are no UTF-8 become U+FFFD.
std::string ReportJson(const PictureReport& report);

} // namespace tessaro
