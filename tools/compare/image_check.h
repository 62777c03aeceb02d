#pragma once

#include "compare/report_file.h"
#include "platform/picture_files.h"

#include <string>
#include <vector>

namespace tessaro {

/// What is wrong with the images of a scan, a sentence each: files that the report names and that are not
/// there or no sound JPEG files, files beside them that it does not name, and fields with another number of
/// images than they ought to have. That is two for a field in which something was found and for the one at
/// the origin, the first, whose images may be missing where the stage stands beside the origin by a fraction
/// of a step; none for any other; fewer where the line of the field tells of problems.
std::vector<std::string> FindImageFaults(const std::vector<ReportedField>& fields, PictureFiles& pictures);

} // namespace tessaro
