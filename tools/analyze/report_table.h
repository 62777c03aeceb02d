#pragma once

#include "analyze/picture_report.h"

#include <string>

namespace tessaro {

/// The lines that a person reads about one picture: what was found, then one line for each single layer with
/// its place in the picture's own pixels from the top left. Ends with a line feed.
std::string ReportText(const PictureReport& report);

/// Totals over a batch. Ends with a line feed.
std::string SummaryText(int analysed, int failed, int found);

} // namespace tessaro
