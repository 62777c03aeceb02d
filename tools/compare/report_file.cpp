#include "compare/report_file.h"

#include "json_members.h"

#include <QByteArray>
#include <QJsonDocument>
#include <QString>

#include <algorithm>
#include <optional>

namespace tessaro {
namespace {

/// Nothing where the line is no JSON object.
std::optional<QJsonObject> ObjectIn(std::string_view line) {
    const QJsonDocument document =
        QJsonDocument::fromJson(QByteArray(line.data(), static_cast<qsizetype>(line.size())));
    return document.isObject() ? std::optional(document.object()) : std::nullopt;
}

/// Whether the line could be one that breaks off.
bool BeginsAsReported(std::string_view line) {
    constexpr std::string_view beginning = R"({"scan":)";
    return !line.empty() && beginning.starts_with(line.substr(0, beginning.size()));
}

/// A number that is not finite is null.
double ScoreOf(const QJsonObject& object) {
    return object.value(QLatin1String("score")).isNull() ? 0.0 : NumberMember(object, "score");
}

ReportedGrain GrainOf(const QJsonObject& object) {
    ReportedGrain grain;
    grain.centre = PointOf(object.value(QLatin1String("centre")), "centre");
    grain.box = {IntegerMember(object, "left"), IntegerMember(object, "right"),
                 IntegerMember(object, "minRow"), IntegerMember(object, "maxRow")};
    grain.pixels = IntegerMember(object, "pixels");
    grain.score = ScoreOf(object);
    const QJsonValue single = object.value(QLatin1String("single"));
    if (!single.isBool())
        throw NoMember("single", "true or false");
    grain.single = single.toBool();
    return grain;
}

std::vector<std::string> TextsOf(const QJsonArray& list) {
    std::vector<std::string> texts;
    for (const auto& value : list)
        texts.push_back(value.toString().toStdString());
    return texts;
}

ReportedField FieldOf(const QJsonObject& object, int scan) {
    ReportedField field;
    field.scan = scan;
    field.field = IntegerMember(object, "field");
    field.row = IntegerMember(object, "row");
    field.column = IntegerMember(object, "column");
    field.position = {NumberMember(object, "x"), NumberMember(object, "y")};
    field.found = IntegerMember(object, "found");
    for (const auto& grain : ArrayMember(object, "grains"))
        field.grains.push_back(GrainOf(grain.toObject()));
    field.images = TextsOf(ArrayMember(object, "images"));
    field.problems = TextsOf(object.value(QLatin1String("problems")).toArray()); // need not be there
    return field;
}

void AddLine(const QJsonObject& object, ReportFile& report) {
    const int scan = object.contains(QLatin1String("scan")) ? IntegerMember(object, "scan") : 1;
    if (object.contains(QLatin1String("end")))
        report.ends.push_back({scan, object.value(QLatin1String("end")).toString().toStdString()});
    else
        report.fields.push_back(FieldOf(object, scan));
}

} // namespace

std::variant<ReportFile, ReadingError> ReadReportFile(std::string_view text) {
    ReportFile report;
    for (int number = 1; !text.empty(); ++number) {
        const std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(line.size() + 1, text.size()));
        const std::string place = "line " + std::to_string(number) + ": ";
        const std::optional<QJsonObject> object = ObjectIn(line);
        if (!object && !BeginsAsReported(line))
            return ReadingError{place + "no line of a report"};
        try {
            report.tornLines += object ? 0 : 1;
            if (object)
                AddLine(*object, report);
        } catch (const WrongMember& wrong) {
            return ReadingError{place + wrong.what()};
        }
    }
    return report;
}

} // namespace tessaro
