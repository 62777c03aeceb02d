#pragma once

#include "analyze/picture_report.h"

#include <string>

namespace tessaro {

/// The lines that a person reads about one picture: what was found, then one line for each grain, those below
/// the threshold included, with its place in the picture's own pixels from the top left. Its area is told
/// only of a picture of the frame's size. Ends with a line feed.
std::string ReportText(const PictureReport& report);

/// Totals over a batch.
struct BatchTotals {
    int analysed = 0; // pictures
    int failed = 0;   // pictures that gave no report
    int unsaved = 0;  // annotated pictures
    int found = 0;    // single layers
};

/// One line, which ends with a line feed.
std::string SummaryText(const BatchTotals& totals);

} // namespace tessaro
