#pragma once

#include "simulated_field/simulated_field.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

namespace tessaro {

// In the order in which the operator's program counts them.
enum class Material : std::uint8_t { graphene, hbn, tmdc };
enum class Substrate : std::uint8_t { sio2, glass, sapphire };

/// The names of the command line; nothing for any other.
std::optional<Material> MaterialNamed(std::string_view name);
std::optional<Substrate> SubstrateNamed(std::string_view name);

/// What one layer looks like against the substrate, in percent. Pairs that the operator's presets do not know
/// look as the material does on SiO2.
ChannelValues SingleLayerContrastPercent(Material material, Substrate substrate);

} // namespace tessaro
