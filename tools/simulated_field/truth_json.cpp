#include "simulated_field/truth_json.h"

#include "simulated_field/plain_text.h"

#include <string_view>

namespace tessaro {

namespace {

constexpr int decimals = 3;

std::string SubstrateJson(const ChannelValues& substrate) {
    return Joined({"[", NumberText(substrate[0], decimals), ", ", NumberText(substrate[1], decimals), ", ",
                   NumberText(substrate[2], decimals), "]"});
}

std::string OutlineJson(const Outline& outline) {
    std::string json = "[";
    std::string_view separator;
    for (const Vertex& corner : outline) {
        json += Joined(
            {separator, "[", NumberText(corner.x, decimals), ", ", NumberText(corner.y, decimals), "]"});
        separator = ", ";
    }
    json += "]";
    return json;
}

std::string BoxJson(const PixelBox& box) {
    return Joined({R"({"left": )", std::to_string(box.left), R"(, "right": )", std::to_string(box.right),
                   R"(, "minRow": )", std::to_string(box.minRow), R"(, "maxRow": )",
                   std::to_string(box.maxRow), "}"});
}

std::string FlakeJson(const SimulatedFlake& flake) {
    return Joined({R"({"layers": )", std::to_string(flake.layers), R"(, "area_um2": )",
                   NumberText(FlakeAreaUm2(flake), decimals), R"(, "outline": )", OutlineJson(flake.outline),
                   R"(, "box": )", BoxJson(FlakeBox(flake)), "}"});
}

std::string FlakesJson(const std::vector<SimulatedFlake>& flakes) {
    std::string json = "[";
    std::string_view separator = "\n    ";
    for (const SimulatedFlake& flake : flakes) {
        json += Joined({separator, FlakeJson(flake)});
        separator = ",\n    ";
    }
    json += flakes.empty() ? "]" : "\n  ]";
    return json;
}

} // namespace

std::string TruthJson(const SimulatedField& field, std::uint64_t seed) {
    return Joined({"{\n", R"(  "seed": )", std::to_string(seed), ",\n", R"(  "substrate": )",
                   SubstrateJson(field.substrate), ",\n", R"(  "flakes": )", FlakesJson(field.flakes),
                   "\n}\n"});
}

} // namespace tessaro
