#include "scan/contrast_presets.h"
#include "twin/materials.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>

namespace tessaro {
namespace {

constexpr std::array materials = {Material::graphene, Material::hbn, Material::tmdc};
constexpr std::array substrates = {Substrate::sio2, Substrate::glass, Substrate::sapphire};

TEST(TwinMaterials, LookAsThePresetsOfTheOperatorsProgramSay) {
    for (const ContrastPreset& preset : contrastPresets) {
        const ChannelValues contrast = SingleLayerContrastPercent(static_cast<Material>(preset.material),
                                                                  static_cast<Substrate>(preset.substrate));
        EXPECT_TRUE(std::ranges::equal(contrast, preset.targetContrast))
            << preset.material << " on " << preset.substrate;
    }
}

TEST(TwinMaterials, LookAsOnOxideWhereThereIsNoPreset) {
    int without = 0;
    for (const Material material : materials) {
        for (const Substrate substrate : substrates) {
            if (PresetFor(static_cast<std::int32_t>(material), static_cast<std::int32_t>(substrate)) !=
                nullptr)
                continue;
            ++without;
            EXPECT_EQ(SingleLayerContrastPercent(material, substrate),
                      SingleLayerContrastPercent(material, Substrate::sio2));
        }
    }
    EXPECT_EQ(without, 5);
}

TEST(TwinMaterials, AreNamedInTheOperatorsOrder) {
    EXPECT_EQ(static_cast<std::int32_t>(*MaterialNamed("graphene")), material::graphene);
    EXPECT_EQ(static_cast<std::int32_t>(*MaterialNamed("hbn")), material::hbn);
    EXPECT_EQ(static_cast<std::int32_t>(*MaterialNamed("tmdc")), material::tmdc);
    EXPECT_EQ(static_cast<std::int32_t>(*SubstrateNamed("sio2")), substrate::sio2);
    EXPECT_EQ(static_cast<std::int32_t>(*SubstrateNamed("glass")), substrate::glass);
    EXPECT_EQ(static_cast<std::int32_t>(*SubstrateNamed("sapphire")), substrate::sapphire);
    EXPECT_FALSE(MaterialNamed("glass").has_value());
    EXPECT_FALSE(SubstrateNamed("hbn").has_value());
}

} // namespace
} // namespace tessaro
