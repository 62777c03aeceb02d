#include "app/number_text.h"
#include "focus/focus_meter.h"
#include "reference/plain_analysis.h"
#include "reference/plain_focus.h"
#include "simulated_field/random_field.h"
#include "simulated_field/simulated_field.h"
#include "support/drawn_frames.h"
#include "support/shell_fixture.h"

#include <memory>

namespace tessaro {
namespace {

using ShownTexts = std::vector<std::pair<int, std::string>>;

class FocusMeterTest : public ShellFixture {
protected:
    FocusMeterTest() { frame.pixels = painter.frame.Data(); }

    FramePainter painter;
    FrameRecord frame;
    std::unique_ptr<FrameMeasurements> measured = std::make_unique<FrameMeasurements>();
    void PaintHalves() { // a deviation of 30, steps of 60
        painter.Fill({40, 40, 40});
        painter.Rectangle(0, 0, 616, frameHeight, {100, 100, 100});
    }

    float focusValue = 10.0F;
    FocusMeter meter{*measured, focusValue, status};
};

TEST_F(FocusMeterTest, ShowsFourFiguresOfAnEvenFrameInThisOrder) {
    painter.Fill(substrate100);
    EXPECT_EQ(meter.UpdateFocusMeasures(frame), 1);
    EXPECT_EQ(ui.dialogs.textsSet,
              (ShownTexts{{1037, "0.00"}, {1020, "0.00"}, {1001, "0.00"}, {1038, "0.00"}}));
    EXPECT_EQ(focusValue, 0.0001F * 10.0F);
}

TEST_F(FocusMeterTest, ShowsTwoDecimals) {
    PaintHalves();
    meter.UpdateFocusMeasures(frame);
    EXPECT_EQ(PanelText(1037), "30.00");
    EXPECT_EQ(PanelText(1020), "0.60");
    EXPECT_EQ(PanelText(1001), "0.60");
    EXPECT_EQ(PanelText(1038), "6.00"); // 0.6 * 300 / 30
    EXPECT_FLOAT_EQ(focusValue, 6.0F);
}

TEST_F(FocusMeterTest, RunsTheStatisticsPassFirst) {
    painter.Fill({90, 80, 70});
    meter.UpdateFocusMeasures(frame);
    EXPECT_EQ(frame.bgPeak, (std::array<double, 3>{90.0, 80.0, 70.0}));
    EXPECT_EQ(measured->background.Measured(0, 3, 4), 90.0F);
    EXPECT_EQ(measured->reduced.Get(2, 100, 100), 70.0F);
}

TEST_F(FocusMeterTest, MeasuresWithAClosedPanelToo) {
    ClosePanel();
    painter.Fill(substrate100);
    EXPECT_EQ(meter.UpdateFocusMeasures(frame), 1);
    EXPECT_EQ(focusValue, 0.0001F * 10.0F);
    EXPECT_TRUE(ui.dialogs.textsSet.empty());
}

TEST_F(FocusMeterTest, ScoresWithTheMediumLaplacianAloneInThreeDecimals) {
    PaintHalves();
    EXPECT_EQ(meter.FocusScore(frame), (0.6F + 0.6F + 0.6F) / 3.0F);
    EXPECT_EQ(ui.dialogs.textsSet, (ShownTexts{{1001, "0.600"}}));
}

TEST_F(FocusMeterTest, ScoresAnEvenFrameAsNothingToMeasure) {
    painter.Fill(substrate100);
    EXPECT_EQ(meter.FocusScore(frame), (0.0001F + 0.0001F + 0.0001F) / 3.0F);
    EXPECT_EQ(ui.dialogs.textsSet, (ShownTexts{{1001, "0.000"}}));
}

TEST_F(FocusMeterTest, ScoresAndLeavesTheFocusValueAlone) {
    PaintHalves();
    meter.FocusScore(frame);
    EXPECT_EQ(focusValue, 10.0F);
}

TEST_F(FocusMeterTest, ScoresTheFrameThatItIsGivenNow) {
    painter.Fill({90, 80, 70});
    meter.FocusScore(frame);
    EXPECT_EQ(frame.bgPeak, (std::array<double, 3>{90.0, 80.0, 70.0}));
    EXPECT_EQ(measured->reduced.Get(2, 100, 100), 70.0F);
    PaintHalves();
    EXPECT_EQ(meter.FocusScore(frame), (0.6F + 0.6F + 0.6F) / 3.0F);
}

TEST_F(FocusMeterTest, ScoresWithAClosedPanelToo) {
    ClosePanel();
    PaintHalves();
    EXPECT_EQ(meter.FocusScore(frame), (0.6F + 0.6F + 0.6F) / 3.0F);
    EXPECT_TRUE(ui.dialogs.textsSet.empty());
}

TEST_F(FocusMeterTest, NeverWritesTheBoxesOfModifiedLAndEdgeShape) {
    for (int i = 0; i < 3; ++i) {
        painter.Scatter();
        meter.UpdateFocusMeasures(frame);
        meter.FocusScore(frame);
    }
    for (const auto& [box, text] : ui.dialogs.textsSet) {
        EXPECT_NE(box, 1036);
        EXPECT_NE(box, 1039);
    }
    EXPECT_EQ(ui.dialogs.textsSet.size(), 15U);
}

/// What both programs make of one frame's pixels, from the statistics pass on.
class FocusMeterBesideThePlain : public FocusMeterTest {
protected:
    void ExpectThePlainFigures() {
        plain->frame.pixels = frame.pixels;
        reference::ComputeFrameStatistics(*plain, plain->frame);
        const float* planes = plain->measured.reduced.Plane(0);
        const reference::FocusMeasures figures = reference::MeasurePlanes(planes);
        EXPECT_EQ(meter.FocusScore(frame), reference::MeasureScore(planes));
        meter.UpdateFocusMeasures(frame);
        EXPECT_EQ(focusValue, figures.focusValue);
        EXPECT_EQ(PanelText(1037), TwoDecimals(figures.deviation));
        EXPECT_EQ(PanelText(1020), TwoDecimals(figures.laplaceS));
        EXPECT_EQ(PanelText(1001), TwoDecimals(figures.laplaceM));
        EXPECT_EQ(PanelText(1038), TwoDecimals(figures.focusValue));
    }

    static std::string TwoDecimals(float value) { return Formatted("%.2f", static_cast<double>(value)); }

    std::unique_ptr<reference::PlainAnalysis> plain = std::make_unique<reference::PlainAnalysis>();
};

TEST_F(FocusMeterBesideThePlain, IsEqualOnDrawnFrames) {
    for (const int flakes : {0, 3, 40}) {
        for (const int noise : {0, 2, 20}) {
            SCOPED_TRACE(testing::Message() << flakes << " flakes, noise " << noise);
            painter.Fill(substrate100);
            for (int i = 0; i < flakes; ++i)
                painter.Disk(painter.Below(frameWidth), painter.Below(frameHeight), 5 + painter.Below(40),
                             singleLayer100);
            painter.AddNoise(noise);
            ExpectThePlainFigures();
        }
    }
}

TEST_F(FocusMeterBesideThePlain, IsEqualOnBytesAtRandom) {
    for (int i = 0; i < 3; ++i) {
        painter.Scatter();
        ExpectThePlainFigures();
    }
}

TEST_F(FocusMeterBesideThePlain, IsEqualOnSpeckle) {
    for (const int percent : {1, 30, 70}) {
        painter.Fill(substrate100);
        painter.Speckle(percent, singleLayer100);
        ExpectThePlainFigures();
    }
}

TEST_F(FocusMeterBesideThePlain, IsEqualOnFieldsAsTheMicroscopeShowsThem) {
    for (std::uint64_t seed = 1; seed <= 3; ++seed) {
        DrawField(RandomField(seed, 20, 20), seed, painter.frame);
        ExpectThePlainFigures();
    }
}

TEST_F(FocusMeterBesideThePlain, IsEqualOnBlackAndWhite) {
    ExpectThePlainFigures();
    painter.Fill({255, 255, 255});
    ExpectThePlainFigures();
    painter.Rectangle(0, 0, frameWidth, 511, {0, 0, 0});
    ExpectThePlainFigures();
}

} // namespace
} // namespace tessaro
