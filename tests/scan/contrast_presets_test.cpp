#include "scan/contrast_presets.h"

#include <gtest/gtest.h>

namespace tessaro {
namespace {

using Contrasts = std::array<float, 3>;

void ExpectPreset(std::int32_t material, std::int32_t substrate, const Contrasts& contrast, float tolerance) {
    const ContrastPreset* preset = PresetFor(material, substrate);
    ASSERT_NE(preset, nullptr);
    EXPECT_EQ(preset->targetContrast, contrast);
    EXPECT_EQ(preset->tolerance, tolerance);
}

TEST(ContrastPresets, TellWhatGrapheneLooksLikeOnOxide) {
    ExpectPreset(0, 0, {-12.0F, -8.0F, -2.0F}, 6.0F);
}

TEST(ContrastPresets, TellWhatBoronNitrideLooksLikeOnOxideAndOnGlass) {
    ExpectPreset(1, 0, {-20.0F, 17.0F, 3.0F}, 10.0F);
    ExpectPreset(1, 1, {3.0F, 6.0F, 9.0F}, 5.0F);
}

TEST(ContrastPresets, TellWhatDichalcogenidesLookLikeOnOxide) {
    ExpectPreset(2, 0, {-80.0F, 20.0F, 0.0F}, 20.0F);
}

TEST(ContrastPresets, KnowNoOtherPair) {
    int known = 0;
    for (std::int32_t material = -1; material <= 5; ++material)
        for (std::int32_t substrate = -1; substrate <= 3; ++substrate)
            known += PresetFor(material, substrate) != nullptr ? 1 : 0;
    EXPECT_EQ(known, 4) << "those above";
}

TEST(SubstrateNames, StandInTheOrderOfTheirIndices) {
    EXPECT_STREQ(substrateNames[substrate::sio2], "SiO2 (300nm)");
    EXPECT_STREQ(substrateNames[substrate::glass], "glass");
    EXPECT_STREQ(substrateNames[substrate::sapphire], "sapphire");
}

} // namespace
} // namespace tessaro
