#pragma once

#include "simulated_field/planar_geometry.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace tessaro {

/// One grain of a field, as the report has it.
struct ReportedGrain {
    Vertex centre; // the mean of its pixels, seldom the middle of the box; um of the stage
    PixelBox box;  // frame pixels, the last column and row included
    int pixels = 0;
    double score = 0.0;
    bool single = false;
};

/// One field, as the report has it. Where the stage stood is the middle of the frame.
struct ReportedField {
    int scan = 1;
    int field = 0;
    int row = 0;
    int column = 0;
    Vertex position; // um
    int found = 0;
    std::vector<ReportedGrain> grains;
    std::vector<std::string> images;
    std::vector<std::string> problems;
};

/// The last line of a scan.
struct ReportedEnd {
    int scan = 1;
    std::string why; // "completed", "stopped", ...
};

struct ReportFile {
    std::vector<ReportedField> fields;
    std::vector<ReportedEnd> ends; // of each scan that has come to one
    int tornLines = 0;             // begun, but not whole
};

/// Why a file is none of what it should be: a phrase, such as "line 3: no \"row\"".
struct ReadingError {
    std::string reason;
};

/// The lines that "tessaro --report" writes. A line that begins as those do and breaks off is left out and
/// counted: the program was ended while it wrote it, or the disk was full.
std::variant<ReportFile, ReadingError> ReadReportFile(std::string_view text);

} // namespace tessaro
