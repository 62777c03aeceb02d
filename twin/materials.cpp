#include "twin/materials.h"

#include "scan/contrast_presets.h"

#include <algorithm>

namespace tessaro {
namespace {

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
    const ContrastPreset* preset =
        PresetFor(static_cast<std::int32_t>(material), static_cast<std::int32_t>(substrate));
    if (preset == nullptr)
        return SingleLayerContrastPercent(material, Substrate::sio2);
    ChannelValues contrast{};
    std::ranges::copy(preset->targetContrast, contrast.begin());
    return contrast;
}

} // namespace tessaro
