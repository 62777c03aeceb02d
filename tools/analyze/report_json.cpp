#include "analyze/report_json.h"

#include "text/json_writer.h"

#include <string_view>

namespace tessaro {
namespace {

constexpr int decimals = 6;

void WriteGrain(JsonWriter& json, const GrainReport& grain) {
    json.Open('{');
    json.Member("grain", grain.grain);
    json.Member("reducedPixels", grain.reducedPixels);
    json.Member("pixels", grain.pixels);
    json.Member("left", grain.left);
    json.Member("right", grain.right);
    json.Member("minRow", grain.minRow);
    json.Member("maxRow", grain.maxRow);
    json.Member("score", double{grain.score});
    json.Member("BG", double{grain.subScores.BG});
    json.Member("Cont", double{grain.subScores.Cont});
    json.Member("Size", double{grain.subScores.Size});
    json.Member("EgSp", double{grain.subScores.EgSp});
    json.Member("PR", double{grain.subScores.PR});
    json.Member("HST", double{grain.subScores.HST});
    json.Member("DfNx", double{grain.subScores.DfNx});
    json.Member("single", grain.single);
    json.Close('}');
}

} // namespace

std::string ReportJson(const PictureReport& report) {
    JsonWriter json(decimals);
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
    for (const GrainReport& grain : report.grains)
        WriteGrain(json, grain);
    json.Close(']');
    json.Member("found", report.found);
    json.Member("overflow", report.overflow);
    json.Close('}');
    return json.Take();
}

} // namespace tessaro
