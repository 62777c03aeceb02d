#include "focus/focus_meter.h"
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

} // namespace
} // namespace tessaro
