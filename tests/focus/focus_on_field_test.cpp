#include "focus/focus_on_field.h"
#include "platform/fake/scripted_camera.h"
#include "support/imaging_fixture.h"

#include <cmath>
#include <memory>
#include <sstream>

namespace tessaro {
namespace {

/// Camera, screen and meter as the program puts them together, on a scripted camera.
class FocusOnFieldTest : public ImagingFixture {
protected:
    using Samples = ScriptedCamera::Samples;

    FocusOnFieldTest() {
        screen.SetUp();
        working.pixels = session->workingFrame.Data();
    }

    void Connect() {
        ASSERT_EQ(camera.InitializeCamera(), 1);
        session->camera->Open();
    }
    /// Bright and dark stripes of 64 samples, or an even image.
    void ThenStripes(std::uint8_t dark, std::uint8_t bright) {
        Samples samples(sensorByteCount);
        for (std::size_t i = 0; i < samples.size(); ++i)
            samples[i] = i % sensorWidth / 64 % 2 == 0 ? dark : bright;
        scripted.ThenImage(sensorWidth, sensorHeight, samples);
    }

    ScriptedCamera scripted{[](const std::string& breach) { ADD_FAILURE() << breach; }};
    std::unique_ptr<CameraSession> session = std::make_unique<CameraSession>();
    std::ostringstream report;
    Camera camera{*session, scripted, status, pump, ui.clock, report};
    FrameRecord working;
    std::unique_ptr<FrameMeasurements> measured = std::make_unique<FrameMeasurements>();
    float focusValue = 10.0F;
    FocusMeter meter{*measured, focusValue, status};
    FocusOnField field{camera, screen, meter, working, *measured};
};

TEST_F(FocusOnFieldTest, TakesOneExposureAndShowsIt) {
    Connect();
    ThenStripes(200, 200);
    field.GrabAndDraw();
    EXPECT_EQ(scripted.StepsLeft(), 0U);
    EXPECT_EQ(ui.drawing.copyCalls, 1);
    EXPECT_EQ(BytesAt(Window(), 600, 500)[0], 200);
    EXPECT_EQ(BytesAt(session->workingFrame, 600, 527)[0], 200);
}

TEST_F(FocusOnFieldTest, MeasuresTheFrameThatWasTakenLast) {
    Connect();
    ThenStripes(40, 200);
    ThenStripes(90, 90);
    field.GrabAndDraw();
    EXPECT_GT(field.FocusScore(), 0.1F);
    EXPECT_GT(field.Figures().deviation, 70.0F);
    EXPECT_EQ(focusValue, 10.0F) << "the score alone was asked for";
    field.GrabAndDraw();
    EXPECT_EQ(field.FocusScore(), 0.0001F);
    EXPECT_EQ(PanelText(panel::laplaceM), "0.000") << "with three decimals";
    field.UpdateFocusMeasures();
    EXPECT_EQ(focusValue, 0.0001F * 10.0F);
    EXPECT_EQ(field.Figures().focusValue, focusValue);
    EXPECT_EQ(field.Figures().deviation, 0.0F);
}

TEST_F(FocusOnFieldTest, ShowsNothingOfTheFiguresThatARecordTakes) {
    Connect();
    ThenStripes(40, 200);
    field.GrabAndDraw();
    field.FocusScore();
    const auto shown = ui.dialogs.textsSet;
    field.Figures();
    EXPECT_EQ(ui.dialogs.textsSet, shown);
}

TEST_F(FocusOnFieldTest, WithoutACameraSeesTheTestPattern) {
    scripted.present = false;
    camera.InitializeCamera();
    field.GrabAndDraw();
    const float first = field.FocusScore();
    EXPECT_TRUE(std::isfinite(first));
    EXPECT_GE(first, 0.0001F);
    EXPECT_EQ(ui.drawing.copyCalls, 1);
}

TEST_F(FocusOnFieldTest, OfACameraThatFailsSeesTheTestPattern) {
    Connect();
    scripted.ThenFault("unplugged");
    field.GrabAndDraw();
    EXPECT_EQ(ui.drawing.copyCalls, 1);
    EXPECT_TRUE(std::isfinite(field.FocusScore()));
}

TEST_F(FocusOnFieldTest, WithoutAWindowMeasuresAllTheSame) {
    Connect();
    ThenStripes(90, 90);
    ui.windows.Destroy(windows.main);
    field.GrabAndDraw();
    EXPECT_EQ(field.FocusScore(), 0.0001F);
}

} // namespace
} // namespace tessaro
