#include "compare/wafer_truth.h"

#include "json_members.h"

#include <QByteArray>
#include <QJsonDocument>

namespace tessaro {
namespace {

TrueFlake FlakeOf(const QJsonObject& object) {
    TrueFlake flake;
    flake.layers = IntegerMember(object, "layers");
    flake.areaUm2 = NumberMember(object, "area");
    flake.centre = PointOf(object.value(QLatin1String("centre")), "centre");
    for (const auto& corner : ArrayMember(object, "outline"))
        flake.outline.push_back(PointOf(corner, "outline"));
    return flake;
}

} // namespace

std::variant<std::vector<TrueFlake>, ReadingError> ReadWaferTruth(std::string_view text) {
    const QJsonDocument document =
        QJsonDocument::fromJson(QByteArray(text.data(), static_cast<qsizetype>(text.size())));
    if (!document.isObject())
        return ReadingError{"no JSON object"};
    const QJsonValue list = document.object().value(QLatin1String("flakes"));
    if (!list.isArray())
        return ReadingError{"\"flakes\" is no list"};
    std::vector<TrueFlake> flakes;
    try {
        for (const auto& flake : list.toArray())
            flakes.push_back(FlakeOf(flake.toObject()));
    } catch (const WrongMember& wrong) {
        return ReadingError{"flake " + std::to_string(flakes.size() + 1) + ": " + wrong.what()};
    }
    return flakes;
}

} // namespace tessaro
