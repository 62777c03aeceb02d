#include "twin/truth.h"

#include "text/json_writer.h"

namespace tessaro {
namespace {

constexpr int decimals = 3;

void WritePoint(JsonWriter& json, Vertex point) {
    json.Open('[');
    json.Value(point.x);
    json.Value(point.y);
    json.Close(']');
}

void WriteFlake(JsonWriter& json, const WaferFlake& flake) {
    json.Open('{');
    json.Member("layers", flake.layers);
    json.Member("area", flake.AreaUm2());
    json.Key("centre");
    WritePoint(json, OutlineCentre(flake.outline));
    json.Key("outline");
    json.Open('[');
    for (const Vertex& corner : flake.outline)
        WritePoint(json, corner);
    json.Close(']');
    json.Close('}');
}

} // namespace

std::string WaferTruthJson(const Wafer& wafer) {
    JsonWriter json(decimals);
    json.Open('{');
    json.Key("flakes");
    json.Open('[');
    for (const WaferFlake& flake : wafer.Flakes()) {
        json.BreakLine();
        WriteFlake(json, flake);
    }
    json.Close(']');
    json.Close('}');
    return json.Take() + '\n';
}

} // namespace tessaro
