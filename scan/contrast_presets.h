#pragma once

#include <algorithm>
#include <array>
#include <cstdint>

namespace tessaro {

/// Materials by their index in the settings; any other has no preset and no name.
namespace material {
inline constexpr std::int32_t graphene = 0;
inline constexpr std::int32_t hbn = 1;
inline constexpr std::int32_t tmdc = 2;
} // namespace material

/// Substrates by their place in the list that the operator chooses from.
namespace substrate {
inline constexpr std::int32_t sio2 = 0;
inline constexpr std::int32_t glass = 1;
inline constexpr std::int32_t sapphire = 2;
} // namespace substrate

inline constexpr std::array<const char*, 3> substrateNames = {"SiO2 (300nm)", "glass", "sapphire"};

/// What a single layer of a material looks like on a substrate, where that is known.
struct ContrastPreset {
    std::int32_t material;
    std::int32_t substrate;
    std::array<float, 3> targetContrast; // percent, [red, green, blue]
    float tolerance;                     // percentage points
};

inline constexpr std::array<ContrastPreset, 4> contrastPresets = {
    {{material::graphene, substrate::sio2, {-12.0F, -8.0F, -2.0F}, 6.0F},
     {material::hbn, substrate::sio2, {-20.0F, 17.0F, 3.0F}, 10.0F},
     {material::hbn, substrate::glass, {3.0F, 6.0F, 9.0F}, 5.0F},
     {material::tmdc, substrate::sio2, {-80.0F, 20.0F, 0.0F}, 20.0F}}};

/// Null for a pair that has none.
constexpr const ContrastPreset* PresetFor(std::int32_t material, std::int32_t substrate) {
    const auto* const found = std::ranges::find_if(contrastPresets, [&](const ContrastPreset& preset) {
        return preset.material == material && preset.substrate == substrate;
    });
    return found != contrastPresets.end() ? found : nullptr;
}

} // namespace tessaro
