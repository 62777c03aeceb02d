#include "simulated_field/pattern_fields.h"
#include "simulated_field/random_field.h"
#include "support/analysis_pair.h"
#include "support/drawn_frames.h"
#include "support/sanitizer.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

namespace tessaro {
namespace {

Settings SettingsWithThreshold(float threshold) {
    Settings settings;
    settings.scoreThreshold = threshold;
    return settings;
}

/// Flakes, thick flakes and specks on a substrate with uneven light.
void PaintScene(FramePainter& painter, int flakes) {
    painter.Fill(substrate100);
    for (int gx = 0; gx < 16; ++gx) {
        const int level = 96 + painter.Below(9);
        painter.Rectangle(gx * 77, 0, 77, 514, {level, level, level});
    }
    for (int i = 0; i < flakes; ++i) {
        const int level = 96 + painter.Below(9);
        const FramePainter::Rgb colour{level * 88 / 100, level * 92 / 100, level * 98 / 100};
        painter.Disk(painter.Below(frameWidth), painter.Below(frameHeight), 8 + painter.Below(40), colour);
    }
    for (int i = 0; i < flakes; ++i)
        painter.Disk(painter.Below(frameWidth), painter.Below(frameHeight), painter.Below(30), {60, 150, 70});
    painter.AddNoise(3);
}

TEST(ReferenceEquality, HoldsOnScenesWithFlakesFieldAfterField) {
    AnalysisPair pair(SettingsWithThreshold(20));
    int grains = 0;
    for (std::uint32_t seed = 1; seed <= 4; ++seed) {
        FramePainter painter(seed);
        PaintScene(painter, 40);
        pair.AnalyseField(painter.frame, seed % 2 == 0);
        grains += pair.GrainsLeft();
    }
    EXPECT_GT(grains, 20);
}

TEST(ReferenceEquality, HoldsOnPureNoise) {
    AnalysisPair pair(SettingsWithThreshold(0));
    FramePainter painter(7);
    painter.Scatter();
    pair.AnalyseField(painter.frame);
}

TEST(ReferenceEquality, HoldsOnSpeckleThatOverflowsTheGrains) {
    for (const int percent : {8, 20, 35, 60}) {
        Settings settings = SettingsWithThreshold(-50);
        settings.minimumFlakeArea = 10;
        AnalysisPair pair(settings);
        FramePainter painter(static_cast<std::uint32_t>(percent));
        painter.Fill(substrate100);
        painter.Speckle(percent, singleLayer100);
        pair.AnalyseField(painter.frame);
    }
}

TEST(ReferenceEquality, HoldsOnSimulatedFieldsWithFlakesOfAllKinds) {
    AnalysisPair pair(SettingsWithThreshold(35));
    for (std::uint64_t seed = 1; seed <= 3; ++seed) {
        FrameBuffer frame;
        DrawField(RandomField(seed, 30, 20), seed, frame);
        pair.AnalyseField(frame);
        EXPECT_GT(pair.GrainsLeft(), 5);
    }
}

TEST(ReferenceEquality, HoldsOnBlobsAtTheGrainCapacity) {
    AnalysisPair pair(SettingsWithThreshold(-50));
    pair.AnalyseField(HugeBlobs());
    EXPECT_EQ(pair.Fast().findings.groupCount, 2);
}

TEST(ReferenceEquality, HoldsOnBlobsBeyondTheCandidateList) {
    AnalysisPair pair(SettingsWithThreshold(-50));
    pair.AnalyseField(HugeBlobs(maximumBlobSideBlocks));
    EXPECT_EQ(pair.Fast().analyzer.candidateCount, candidateCapacity);
}

TEST(ReferenceEquality, HoldsOnAsManyGrainsAsTheTableTakes) {
    AnalysisPair pair(SettingsWithThreshold(-50));
    pair.AnalyseField(GridOfSquares(297));
    EXPECT_EQ(pair.GrainsLeft(), 297);
    pair.AnalyseField(GridOfSquares(380));
    EXPECT_EQ(pair.Fast().findings.groupCount, 297);
}

TEST(ReferenceEquality, HoldsWithOneBackgroundABlock) {
    AnalysisPair pair(SettingsWithThreshold(10));
    pair.Fast().analyzer.useInterpolatedBackground = 0;
    pair.Plain().analyzer.useInterpolatedBackground = 0;
    FramePainter painter(5);
    PaintScene(painter, 40);
    pair.AnalyseField(painter.frame);
    EXPECT_GT(pair.GrainsLeft(), 0);
}

TEST(ReferenceEquality, HoldsWhenGrainsAreDecidedTwice) {
    AnalysisPair pair(SettingsWithThreshold(10));
    FramePainter painter(6);
    PaintScene(painter, 30);
    pair.AnalyseField(painter.frame);
    pair.Decide();
    pair.Decide();
}

TEST(ReferenceEquality, HoldsWithSettingsThatNobodyMeans) {
    using Limits = std::numeric_limits<float>;
    FramePainter painter(9);
    PaintScene(painter, 20);
    std::vector<float> odds = {Limits::quiet_NaN(), -3e38F};
    if (!addressSanitizer) // which makes each of them take ten times as long
        odds.insert(odds.end(), {Limits::infinity(), -Limits::infinity(), 3e38F});
    for (const float odd : odds) {
        for (const int field : {0, 1, 2}) {
            SCOPED_TRACE(testing::Message() << odd << " as setting " << field);
            Settings settings = SettingsWithThreshold(20);
            (field == 0   ? settings.targetContrast[1]
             : field == 1 ? settings.contrastTolerance
                          : settings.scoreThreshold) = odd;
            for (const int interpolated : {1, 0}) {
                AnalysisPair pair(settings);
                pair.Fast().analyzer.useInterpolatedBackground = interpolated;
                pair.Plain().analyzer.useInterpolatedBackground = interpolated;
                pair.AnalyseField(painter.frame);
            }
        }
    }
}

TEST(ReferenceEquality, HoldsOnBlackAndWhiteFrames) {
    AnalysisPair pair(SettingsWithThreshold(0));
    FramePainter painter;
    pair.AnalyseField(painter.frame);
    painter.Fill({255, 255, 255});
    pair.AnalyseField(painter.frame);
    painter.Rectangle(200, 200, 300, 300, {0, 0, 0});
    pair.AnalyseField(painter.frame);
}

} // namespace
} // namespace tessaro
