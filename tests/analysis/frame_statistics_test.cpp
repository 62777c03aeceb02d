#include "analysis/frame_statistics.h"
#include "support/analysis_fixture.h"

namespace tessaro {
namespace {

class FrameStatistics : public AnalysisFixture {};

TEST_F(FrameStatistics, OfAUniformFrameAreItsIntensityEverywhereAndNoNoise) {
    painter.Fill({137, 137, 137});
    Measure();
    EXPECT_EQ(field.frame.bgPeak, (std::array<double, 3>{137, 137, 137}));
    EXPECT_EQ(field.frame.bgPeakSum, 411);
    EXPECT_EQ(field.measured.noiseLevel, 0.0F);
    for (int channel = 0; channel < 3; ++channel) {
        for (int gx = 0; gx < gridSize; ++gx) {
            for (int gy = 0; gy < gridSize; ++gy)
                ASSERT_EQ(field.measured.background.Measured(channel, gx, gy), 137.0F);
        }
    }
}

TEST_F(FrameStatistics, KeepTheChannelsApart) {
    painter.Fill({10, 20, 30});
    Measure();
    EXPECT_EQ(field.frame.bgPeak, (std::array<double, 3>{10, 20, 30}));
    EXPECT_EQ(field.measured.background.Measured(2, 15, 15), 30.0F);
    EXPECT_EQ(field.measured.reduced.Get(1, 307, 256), 20.0F);
}

TEST_F(FrameStatistics, TakeTheLowerOfTwoEquallyFrequentIntensities) {
    painter.Fill({80, 80, 80});
    PaintReduced(0, 0, 154, 257, {200, 60, 200}); // half of the 308 columns
    Measure();
    EXPECT_EQ(field.frame.bgPeak, (std::array<double, 3>{80, 60, 80}));
}

TEST_F(FrameStatistics, CompareLaterIntensitiesWithABestCountOfSixteenBits) {
    // 256 columns of 257 rows are 65,792 reduced pixels at 50, kept as 256: the 2 columns (514) at 90 beat
    // them. The 50 columns at 40 are walked before 50 and lose to its full count.
    painter.Fill({50, 50, 50});
    PaintReduced(256, 0, 2, 257, {90, 90, 90});
    PaintReduced(258, 0, 50, 257, {40, 40, 40});
    Measure();
    EXPECT_EQ(field.frame.bgPeak[0], 90);
}

TEST_F(FrameStatistics, KeepTheCountOfTheDarkestIntensityInSixteenBitsToo) {
    PaintReduced(256, 0, 2, 257, {90, 90, 90}); // 514 against 65,792 + 12,850 at 0, kept as 13,106
    Measure();
    EXPECT_EQ(field.frame.bgPeak[0], 0);
    PaintReduced(256, 0, 52, 257, {90, 90, 90}); // 13,364 against 65,792, kept as 256
    Measure();
    EXPECT_EQ(field.frame.bgPeak[0], 90);
}

TEST_F(FrameStatistics, StoreMeansWithTheirFractionAndCountThemTruncated) {
    painter.Fill({99, 99, 99});
    painter.Rectangle(400, 400, 1, 1, {114, 99, 99}); // one of 16 pixels is 15 brighter
    Measure();
    EXPECT_EQ(field.measured.reduced.Get(0, 100, 100), 99.9375F);
    EXPECT_EQ(field.frame.bgPeak[0], 99);
}

TEST_F(FrameStatistics, MeasureNoiseBetweenRowsOfTheMiddleFifthOnly) {
    painter.Fill({100, 100, 100});
    painter.Rectangle(0, 0, frameWidth, 411, {140, 100, 100}); // ends below row 411: its step is outside
    painter.Rectangle(0, 617, frameWidth, 411,
                      {140, 100, 100}); // begins above row 616: its step is outside too
    Measure();
    EXPECT_EQ(field.measured.noiseLevel, 0.0F);
    painter.Rectangle(0, 616, frameWidth, 1,
                      {141, 100, 100}); // row 615 is the last that is compared with the next
    Measure();
    EXPECT_EQ(field.measured.noiseLevel, 41.0F / 205.0F);
}

TEST_F(FrameStatistics, MeasureNoiseOfTheCurrentFrameEvenWhenAnotherIsPassed) {
    painter.Fill({100, 100, 100});
    for (int y = 0; y < frameHeight; y += 2)
        painter.Rectangle(0, y, frameWidth, 1, {103, 100, 100});
    FramePainter other;
    other.Fill({60, 60, 60});
    FrameRecord passed;
    passed.pixels = other.frame.Data();
    ComputeFrameStatistics(field.frame, passed, field.measured);
    EXPECT_EQ(field.measured.noiseLevel, 3.0F);
    EXPECT_EQ(passed.bgPeak[0], 60);
    EXPECT_EQ(field.frame.bgPeak[0], 0);
    EXPECT_EQ(field.measured.reduced.Get(0, 5, 5), 60.0F);
}

TEST_F(FrameStatistics, GiveABlockWithoutPixelsNearThePeakTheGlobalPeak) {
    painter.Fill({150, 150, 150});
    painter.Rectangle(5 * gridBlockWidth, 3 * gridBlockHeight, gridBlockWidth, gridBlockHeight, {60, 60, 60});
    Measure();
    EXPECT_EQ(field.measured.background.Measured(0, 5, 3), 150.0F);
}

TEST_F(FrameStatistics, GiveABlockItsOwnPeakWithinTwentyFiveOfTheGlobalOne) {
    painter.Fill({150, 150, 150});
    painter.Rectangle(5 * gridBlockWidth, 3 * gridBlockHeight, gridBlockWidth, gridBlockHeight,
                      {126, 174, 175});
    Measure();
    EXPECT_EQ(field.measured.background.Measured(0, 5, 3), 126.0F);
    EXPECT_EQ(field.measured.background.Measured(1, 5, 3), 174.0F);
    EXPECT_EQ(field.measured.background.Measured(2, 5, 3), 150.0F)
        << "25 above the peak is outside the window";
}

struct WindowCase {
    int peak;
    int blockIntensity;
    int expected;
};

class BackgroundWindow : public FrameStatistics, public testing::WithParamInterface<WindowCase> {};

TEST_P(BackgroundWindow, EndsAtTheRangeOfIntensities) {
    const auto [peak, blockIntensity, expected] = GetParam();
    painter.Fill({peak, peak, peak});
    painter.Rectangle(0, 0, gridBlockWidth, gridBlockHeight,
                      {blockIntensity, blockIntensity, blockIntensity});
    Measure();
    EXPECT_EQ(field.measured.background.Measured(0, 0, 0), static_cast<float>(expected));
}

INSTANTIATE_TEST_SUITE_P(AroundPeaks10And240, BackgroundWindow,
                         testing::Values(WindowCase{10, 0, 0}, WindowCase{10, 34, 34}, WindowCase{10, 35, 10},
                                         WindowCase{240, 214, 240}, WindowCase{240, 215, 215},
                                         WindowCase{240, 255, 255}));

TEST_F(FrameStatistics, CountTheRowsBelowTheLastBlockInNoBlock) {
    painter.Fill({100, 100, 100});
    painter.Rectangle(0, 15 * gridBlockHeight, frameWidth, gridBlockHeight / 2, {110, 110, 110});
    painter.Rectangle(0, 16 * gridBlockHeight, frameWidth, 4, {110, 110, 110});
    Measure();
    // Half of the block is 110 and half is 100; rows 1024 to 1027 would tip it.
    EXPECT_EQ(field.measured.background.Measured(0, 4, 15), 100.0F);
}

TEST_F(FrameStatistics, OfABlackFrameAreZero) {
    Measure();
    EXPECT_EQ(field.frame.bgPeakSum, 0);
    EXPECT_EQ(field.measured.background.Measured(0, 8, 8), 0.0F);
}

} // namespace
} // namespace tessaro
