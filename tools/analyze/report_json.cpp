#include "analyze/report_json.h"

#include "analysis/grain_json.h"

#include <string_view>

namespace tessaro {
std::string ReportJson(const PictureReport& report) {
    JsonWriter json(reportDecimals);
    json.Open('{');
    json.Member("file", std::string_view(report.file));
    json.Member("noise", double{report.noise});
    json.Key("bgPeak");
    json.Open('[');
    for (const double peak : report.bgPeak)
        json.Value(peak);
    json.Close(']');
    json.Member("candidates", report.candidates);
    json.Member("live", report.live);
    json.Member("groups", report.groups);
    json.Member("kept", report.kept);
    json.Key("grains");
    json.Open('[');
    for (const GrainReport& grain : report.grains) {
        json.Open('{');
        WriteGrainMembers(json, grain);
        json.Close('}');
    }
    json.Close(']');
    json.Member("found", report.found);
    json.Member("overflow", report.overflow);
    json.Close('}');
    return json.Take();
}

} // namespace tessaro
