#include "focus/focus_meter.h"
#include "support/drawn_frames.h"
#include "support/shell_fixture.h"

#include <memory>

namespace tessaro {
namespace {

class FocusMeterTest : public ShellFixture {
protected:
    FocusMeterTest() { frame.pixels = painter.frame.Data(); }

    FramePainter painter;
    FrameRecord frame;
    std::unique_ptr<FrameMeasurements> measured = std::make_unique<FrameMeasurements>();
    float focusValue = 10.0F;
    FocusMeter meter{*measured, focusValue, status};
};

TEST_F(FocusMeterTest, ShowsFourFiguresOfAnEvenFrameInThisOrder) {
    painter.Fill(substrate100);
    EXPECT_EQ(meter.UpdateFocusMeasures(frame), 1);
    const std::vector<std::pair<int, std::string>> expected = {
        {1037, "0.00"}, {1020, "0.00"}, {1001, "0.00"}, {1038, "0.00"}};
    EXPECT_EQ(ui.dialogs.textsSet, expected);
    EXPECT_EQ(focusValue, 0.0001F * 10.0F);
}

TEST_F(FocusMeterTest, ShowsTwoDecimals) {
    painter.Fill({40, 40, 40});
    painter.Rectangle(0, 0, 616, frameHeight, {100, 100, 100}); // a deviation of 30, steps of 60
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

} // namespace
} // namespace tessaro
