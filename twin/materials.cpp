#include "twin/materials.h"

#include <algorithm>
#include <cstddef>

namespace tessaro {
namespace {

struct Preset {
    Material material;
    Substrate substrate;
    ChannelValues contrastPercent;
};

constexpr std::array<Preset, 4> presets = {{{Material::graphene, Substrate::sio2, {-12.0, -8.0, -2.0}},
                                            {Material::hbn, Substrate::sio2, {-20.0, 17.0, 3.0}},
                                            {Material::hbn, Substrate::glass, {3.0, 6.0, 9.0}},
                                            {Material::tmdc, Substrate::sio2, {-80.0, 20.0, 0.0}}}};

template<typename Kind>
std::optional<Kind> Named(std::string_view name, const std::array<std::string_view, 3>& names) {
    const auto* const found = std::ranges::find(names, name);
    if (found == names.end())
        return std::nullopt;
    return static_cast<Kind>(found - names.begin());
}

} // namespace

std::optional<Material> MaterialNamed(std::string_view name) {
    return Named<Material>(name, {"graphene", "hbn", "tmdc"});
}

std::optional<Substrate> SubstrateNamed(std::string_view name) {
    return Named<Substrate>(name, {"sio2", "glass", "sapphire"});
}

ChannelValues SingleLayerContrastPercent(Material material, Substrate substrate) {
    const auto preset = std::ranges::find_if(presets, [&](const Preset& candidate) {
        return candidate.material == material && candidate.substrate == substrate;
    });
    return preset != presets.end() ? preset->contrastPercent
                                   : SingleLayerContrastPercent(material, Substrate::sio2);
}

} // namespace tessaro
