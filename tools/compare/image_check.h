#pragma once

#include "compare/report_file.h"
#include "platform/picture_files.h"

#include <string>
#include <vector>

namespace tessaro {

struct ImageFindings {
    std::vector<std::string> faults; // a sentence each
    std::vector<std::string> others; // files beside the images that the report does not name
};

/// Faults are files that the report names and that are not there or no sound JPEG files, and fields with
/// another number of images than they ought to have. That is two for a field in which something was found and
/// for the one at the origin, the first, whose images may be missing where the stage stands beside the origin
/// by a fraction of a step; none for any other; fewer where the line of the field tells of problems. Other
/// files are none: an operator saves images too, and scans that begin in the same minute share a folder.
ImageFindings CheckImages(const std::vector<ReportedField>& fields, PictureFiles& pictures);

} // namespace tessaro
