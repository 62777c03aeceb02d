#include "analysis/contrast.h"
#include "analysis/flake_score.h"
#include "analysis/pixel_access.h"
#include "support/analysis_pair.h"
#include "support/drawn_frames.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>

namespace tessaro {
namespace {

// Single formulas of the fast analysis beside the plain transcription's, on values where the order of
// operations and the kind of comparison show in the last bit.

class Arithmetic : public testing::Test {
protected:
    Arithmetic() {
        pair.Fast().frame.pixels = painter.frame.Data();
        pair.Plain().frame.pixels = painter.frame.Data();
    }

    /// Background cells of the same random values on both sides, whole intensities or with fractions.
    void ScatterBackground(int low, int high, int fractions = 1) {
        for (int channel = 0; channel < channelCount; ++channel) {
            for (int gx = 0; gx < gridSize; ++gx) {
                for (int gy = 0; gy < gridSize; ++gy) {
                    const float value =
                        static_cast<float>(low * fractions + painter.Below((high - low) * fractions)) /
                        static_cast<float>(fractions);
                    pair.Fast().measured.background.SetMeasured(channel, gx, gy, value);
                    pair.Plain().measured.background.SetMeasured(channel, gx, gy, value);
                }
            }
        }
    }

    void ScatterReduced() {
        for (int channel = 0; channel < channelCount; ++channel) {
            for (int x4 = 0; x4 < reducedWidth; ++x4) {
                for (int y4 = 0; y4 < reducedHeight; ++y4) {
                    const float value = static_cast<float>(80 * 16 + painter.Below(30 * 16)) / 16;
                    pair.Fast().measured.reduced.Set(channel, x4, y4, value);
                    pair.Plain().measured.reduced.Set(channel, x4, y4, value);
                }
            }
        }
    }

    /// Equal, or both undefined: below the last block the background may be 0.
    static bool Same(float a, float b) { return a == b || (std::isnan(a) && std::isnan(b)); }

    FramePainter painter{11};
    AnalysisPair pair{Settings{}};
};

TEST_F(Arithmetic, OfTheInterpolationIsThePlainOneAtEveryReducedPixel) {
    for (const int fractions : {1, 7}) {
        ScatterBackground(3, 250, fractions);
        for (int x4 = 0; x4 < reducedWidth; ++x4) {
            for (int y4 = 0; y4 < reducedHeight; ++y4) {
                ASSERT_EQ(InterpolateBackground(pair.Fast().measured.background, 1, x4, y4),
                          reference::InterpolateBackground(pair.Plain(), 1, x4, y4))
                    << x4 << ", " << y4;
            }
        }
    }
}

TEST_F(Arithmetic, OfTheReducedTestsIsThePlainOneAtEveryReducedPixel) {
    ScatterBackground(95, 106);
    ScatterReduced();
    int matches = 0;
    for (int x4 = 0; x4 < reducedWidth; ++x4) {
        for (int y4 = 0; y4 < reducedHeight; ++y4) {
            const int interpolated = static_cast<int>(ClassifyReducedPixel(pair.Fast(), x4, y4));
            const int byBlock = static_cast<int>(ClassifyReducedPixelByBlock(pair.Fast(), x4, y4));
            ASSERT_EQ(interpolated, reference::ClassifyReducedPixel(pair.Plain(), x4, y4))
                << x4 << ", " << y4;
            ASSERT_EQ(byBlock, reference::ClassifyReducedPixelByBlock(pair.Plain(), x4, y4))
                << x4 << ", " << y4;
            matches += interpolated == 1 ? 1 : 0;
        }
    }
    EXPECT_GT(matches, 1'000);
}

TEST_F(Arithmetic, OfTheCandidateSearchIsThePlainOneOnScatteredIntensities) {
    ScatterBackground(95, 106);
    ScatterReduced();
    pair.Candidates(true);
    EXPECT_GT(pair.Fast().analyzer.candidateCount, 1'000);
}

TEST_F(Arithmetic, OfThePixelTestsIsThePlainOneInTheFrameAndBesideIt) {
    ScatterBackground(95, 106);
    for (int y = 0; y < frameHeight; ++y) {
        for (int x = 0; x < frameWidth; ++x)
            painter.Set(x, y, {80 + painter.Below(20), 85 + painter.Below(15), 90 + painter.Below(15)});
    }
    int matches = 0;
    for (int x = -9; x < frameWidth + 9; ++x) {
        for (int y = -9; y < frameHeight + 9; ++y) {
            const int interpolated = static_cast<int>(ClassifyPixel(pair.Fast(), x, y));
            const int byBlock = static_cast<int>(ClassifyPixelByBlock(pair.Fast(), x, y));
            ASSERT_EQ(interpolated, reference::ClassifyPixel(pair.Plain(), x, y)) << x << ", " << y;
            ASSERT_EQ(byBlock, reference::ClassifyPixelByBlock(pair.Plain(), x, y)) << x << ", " << y;
            matches += interpolated;
        }
    }
    EXPECT_GT(matches, 10'000);
}

TEST_F(Arithmetic, OfDeviationsAndEdgesIsThePlainOneInTheFrameAndBesideIt) {
    ScatterBackground(1, 255);
    painter.Scatter();
    for (int i = 0; i < 20'000; ++i) {
        const int x = painter.Below(frameWidth + 20) - 10;
        const int y = painter.Below(frameHeight + 20) - 10;
        ASSERT_TRUE(
            Same(BackgroundDeviation(pair.Fast(), x, y), reference::BackgroundDeviation(pair.Plain(), x, y)));
        const int direction = painter.Below(4);
        EdgeSums sums;
        EdgeContrast(pair.Fast(), x, y, static_cast<EdgeDirection>(direction), sums);
        float sumA = 0;
        float sumB = 0;
        float sumC = 0;
        reference::EdgeContrast(pair.Plain(), x, y, direction, sumA, sumB, sumC);
        ASSERT_TRUE(Same(sums.sumA, sumA) && Same(sums.sumB, sumB) && Same(sums.sumC, sumC))
            << x << ", " << y;
    }
}

} // namespace
} // namespace tessaro
