#include "simulated_field/truth_json.h"

#include "text/json_writer.h"

namespace tessaro {

namespace {

constexpr int decimals = 3;

void WriteOutline(JsonWriter& json, const Outline& outline) {
    json.Open('[');
    for (const Vertex& corner : outline) {
        json.Open('[');
        json.Value(corner.x);
        json.Value(corner.y);
        json.Close(']');
    }
    json.Close(']');
}

void WriteBox(JsonWriter& json, const PixelBox& box) {
    json.Open('{');
    json.Member("left", box.left);
    json.Member("right", box.right);
    json.Member("minRow", box.minRow);
    json.Member("maxRow", box.maxRow);
    json.Close('}');
}

void WriteFlake(JsonWriter& json, const SimulatedFlake& flake) {
    json.Open('{');
    json.Member("layers", flake.layers);
    json.Member("area_um2", FlakeAreaUm2(flake));
    json.Key("outline");
    WriteOutline(json, flake.outline);
    json.Key("box");
    WriteBox(json, FlakeBox(flake));
    json.Close('}');
}

} // namespace

std::string TruthJson(const SimulatedField& field, std::uint64_t seed) {
    JsonWriter json(decimals);
    json.Open('{');
    json.Member("seed", seed);
    json.Key("substrate");
    json.Open('[');
    for (const double intensity : field.substrate)
        json.Value(intensity);
    json.Close(']');
    json.Key("flakes");
    json.Open('[');
    for (const SimulatedFlake& flake : field.flakes) {
        json.BreakLine();
        WriteFlake(json, flake);
    }
    json.Close(']');
    json.Close('}');
    return json.Take() + '\n';
}

} // namespace tessaro
