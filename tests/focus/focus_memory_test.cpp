#include "focus/focus_meter.h"
#include "support/drawn_frames.h"
#include "support/shell_fixture.h"
#include "support/watched_memory.h"

#include <memory>

namespace tessaro {
namespace {

/// A panel that keeps nothing.
class ForgetfulDialogs : public FakeDialogs {
public:
    void SetItemText(WindowHandle, int, const std::string&) override { ++shown; }

    int shown = 0;
};

class FocusMemory : public ShellFixture {
protected:
    FocusMemory() {
        painter.Scatter();
        frame.pixels = painter.frame.Data();
    }

    FramePainter painter;
    FrameRecord frame;
    std::unique_ptr<FrameMeasurements> measured = std::make_unique<FrameMeasurements>();
    float focusValue = 10.0F;
    ForgetfulDialogs panelTexts;
    StatusLines panelLines{panelTexts, windows, stage, shownPosition};
    FocusMeter meter{*measured, focusValue, panelLines};
};

TEST_F(FocusMemory, IsTakenNeitherForMeasuringNorForItsShortTexts) {
    const std::size_t before = blocksTaken;
    meter.FocusScore(frame);
    meter.UpdateFocusMeasures(frame);
    EXPECT_EQ(blocksTaken, before);
    EXPECT_EQ(panelTexts.shown, 5);
}

} // namespace
} // namespace tessaro
