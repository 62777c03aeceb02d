#include "scan/tilt_plane.h"
#include "support/scan_fixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <limits>
#include <string>

namespace tessaro {
namespace {

using Depths = std::array<std::int32_t, 3>;

/// From (0, 0) over an area of 6 mm by 10 mm at (1000, -500), in which every place is in focus: at 20.9 um at
/// X max, -30.9 um at Y max and 5.5 um at the origin.
class TiltMeasurement : public ScanFixture {
protected:
    TiltMeasurement() {
        arriving.tellsXY = true;
        scan.originX = 1000;
        scan.originY = -500;
        settings.xRange = 6;
        settings.yRange = 10;
        scan.zOrigin = scan.zXmax = scan.zYmax = 7777;
        scan.scanning = 1;
        view.sharpness = [] { return FocusFigures{0.0F, 0.0F, 1.0F, 11.0F}; };
        view.onGrab = [this] { stage.position[2] = HeightHere(); };
    }

    double HeightHere() const {
        if (stage.position[0] == 7000.0)
            return 20.9;
        return stage.position[1] == 9500.0 ? -30.9 : 5.5;
    }
    Depths Measured() const { return {scan.zOrigin, scan.zXmax, scan.zYmax}; }
    Texts Shown() { return {PanelText(1019), PanelText(1017), PanelText(1018)}; }

    void StopAt(const std::string& command, std::uint64_t afterMs = 0) {
        When(command, [this, afterMs] { ClickIn(afterMs, true); });
    }
    /// With the n-th frame, which is in the middle of a search where it is one of its own.
    void StopAtGrab(int number) {
        view.onGrab = [this, left = number]() mutable {
            stage.position[2] = HeightHere();
            if (--left == 0)
                ClickIn(0, true);
        };
    }
    void BlurAtGrab(int number) {
        view.sharpness = [left = number]() mutable {
            const float value = --left <= 0 ? 0.0005F : 11.0F;
            return FocusFigures{0.0F, 0.0F, 0.0F, value};
        };
    }
};

TEST_F(TiltMeasurement, VisitsTheFarEndsAndThenTheOrigin) {
    EXPECT_EQ(tilt.MeasureTilt(focus), 1);
    EXPECT_EQ(arriving.Commands(), (Texts{"M-800", "m11200",   // X takes longer
                                          "m1600", "M15200",   // Y
                                          "m1600", "M-800"})); // Y
    EXPECT_EQ(Information(),
              (Texts{"Moving to Xmax position.", "Auto focusing has started.", "Focusing completed.",
                     "Moving to Ymax position.", "Auto focusing has started.", "Focusing completed.",
                     "Moving to Origin position.", "Auto focusing has started.", "Focusing completed."}));
    EXPECT_EQ(focus.tiltMeasured, 1);
}

TEST_F(TiltMeasurement, SaysWhereItGoesBeforeItGoes) {
    Texts said;
    arriving.onCommand = [&](const std::string& command) {
        said.push_back(command + ": " + PanelText(1006));
    };
    tilt.MeasureTilt(focus);
    EXPECT_EQ(said, (Texts{"M-800: Moving to Xmax position.", "m11200: Moving to Xmax position.",
                           "m1600: Moving to Ymax position.", "M15200: Moving to Ymax position.",
                           "m1600: Moving to Origin position.", "M-800: Moving to Origin position."}));
}

TEST_F(TiltMeasurement, TakesNoFrameOfItsOwnAtTheOrigin) {
    tilt.MeasureTilt(focus);
    const Texts farEnd = {"grab", "measures", "grab", "measures", "measures"}; // its own, then the search's
    Texts expected = farEnd;
    expected.insert(expected.end(), farEnd.begin(), farEnd.end());
    expected.insert(expected.end(), {"measures", "grab", "measures", "measures"});
    EXPECT_EQ(view.calls, expected);
}

TEST_F(TiltMeasurement, ShowsTheDepthsTowardZero) {
    tilt.MeasureTilt(focus);
    EXPECT_EQ(Measured(), (Depths{5, 20, -30}));
    EXPECT_EQ(Shown(), (Texts{"5", "20", "-30"}));
}

TEST_F(TiltMeasurement, ShowsTheSlopesWithThreeDecimals) {
    tilt.MeasureTilt(focus);
    EXPECT_EQ(focus.xTilt, 0.0025F) << "15 / 6000";
    EXPECT_EQ(focus.yTilt, -0.0035F) << "-35 / 10000";
    EXPECT_EQ(PanelText(1035), "0.002") << "0.0025 is 0.00249999994 in single precision";
    EXPECT_EQ(PanelText(1040), "-0.004");
}

TEST_F(TiltMeasurement, ShowsDepthsAndSlopesInTheOrderInWhichItKnowsThem) {
    tilt.MeasureTilt(focus);
    std::vector<int> order;
    for (const auto& [control, text] : ui.dialogs.textsSet)
        if (control >= 1017 && control != 1037 && control != 1038)
            order.push_back(control);
    EXPECT_EQ(order, (std::vector{1017, 1018, 1019, 1035, 1040}));
}

TEST_F(TiltMeasurement, LetsMessagesThroughAtTheOriginForATenthOfASecond) {
    bool dispatched = false;
    ui.messages.onDispatch = [&](const Message&) {
        dispatched = true;
        EXPECT_EQ(view.calls.size(), 10U) << "after both far ends, before the figures";
    };
    When(
        "M-800",
        [&] {
            ui.messages.PostAt(ui.clock.now + 125, {windows.main, MessageKind::Other});
        },
        2);
    tilt.MeasureTilt(focus);
    EXPECT_TRUE(dispatched);
}

TEST_F(TiltMeasurement, WaitsATenthOfASecondAtTheOriginAndNowhereElse) {
    stage.hComm = SerialHandle::Invalid; // simulated: its ways take no time, a search takes 10 ms
    stage.offline = 1;
    const std::uint64_t start = ui.clock.now;
    std::vector<std::uint64_t> grabs;
    view.onGrab = [&] { grabs.push_back(ui.clock.now - start); };
    EXPECT_EQ(tilt.MeasureTilt(focus), 1);
    EXPECT_EQ(grabs, (std::vector<std::uint64_t>{0, 0, 10, 10, 120}));
    EXPECT_EQ(ui.clock.now - start, 130U);
}

TEST_F(TiltMeasurement, EndsWhereItIsStoppedOnItsWayToXmax) {
    StopAt("m11200");
    EXPECT_EQ(tilt.MeasureTilt(focus), 0);
    EXPECT_TRUE(view.calls.empty());
    EXPECT_EQ(Measured(), (Depths{7777, 7777, 7777}));
    EXPECT_EQ(focus.tiltMeasured, 0);
}

TEST_F(TiltMeasurement, EndsWhereItIsStoppedOnItsWayToYmax) {
    StopAt("M15200");
    EXPECT_EQ(tilt.MeasureTilt(focus), 0);
    EXPECT_EQ(view.calls.size(), 5U);
    EXPECT_EQ(Measured(), (Depths{7777, 20, 7777}));
    EXPECT_EQ(focus.tiltMeasured, 0);
}

TEST_F(TiltMeasurement, EndsWhereItIsStoppedAtTheOrigin) {
    for (const std::uint64_t afterMs : {125U, 0U}) { // in the wait behind the way, and on the way
        StandAt(0.0, 0.0, 0.0);
        scan.stopRequested = 0;
        view.calls.clear();
        When(
            "M-800", [this, afterMs] { ClickIn(afterMs, true); }, 2);
        EXPECT_EQ(tilt.MeasureTilt(focus), 0) << afterMs;
        EXPECT_EQ(view.calls.size(), 10U) << "nobody focuses there";
        EXPECT_EQ(Measured(), (Depths{7777, 20, -30}));
        EXPECT_EQ(focus.tiltMeasured, 0);
    }
}

/// A search that is stopped in a sharp image has completed: its depth counts, and the next way ends.
TEST_F(TiltMeasurement, KeepsTheDepthOfASearchThatWasStopped) {
    StopAtGrab(2);
    EXPECT_EQ(tilt.MeasureTilt(focus), 0);
    EXPECT_EQ(Measured(), (Depths{7777, 20, 7777}));
    EXPECT_EQ(Information().back(), "Moving to Ymax position.");
    EXPECT_EQ(focus.tiltMeasured, 0);
}

TEST_F(TiltMeasurement, IsDoneWhenItsLastSearchIsStopped) {
    StopAtGrab(5);
    EXPECT_EQ(tilt.MeasureTilt(focus), 1);
    EXPECT_EQ(Measured(), (Depths{5, 20, -30}));
    EXPECT_EQ(focus.tiltMeasured, 1);
    EXPECT_EQ(scan.stopRequested, 1);
}

TEST_F(TiltMeasurement, EndsAtOnceWhereAStopHasNotBeenForgotten) {
    scan.scanning = 0;
    scan.stopRequested = 1;
    EXPECT_EQ(tilt.MeasureTilt(focus), 0);
    EXPECT_EQ(arriving.Commands(), (Texts{"M-800", "m11200"}));
    EXPECT_TRUE(view.calls.empty());
}

TEST_F(TiltMeasurement, EndsWhereFocusingFails) {
    const std::array<std::pair<int, Depths>, 3> places = {
        {{1, {7777, 7777, 7777}}, {3, {7777, 20, 7777}}, {5, {7777, 20, -30}}}};
    for (const auto& [grab, depths] : places) {
        StandAt(0.0, 0.0, 0.0);
        scan.zXmax = scan.zYmax = 7777;
        scan.scanning = 1;
        BlurAtGrab(grab);
        EXPECT_EQ(tilt.MeasureTilt(focus), 0) << grab;
        EXPECT_EQ(Measured(), depths) << grab;
        EXPECT_EQ(focus.tiltMeasured, 0);
        EXPECT_EQ(scan.scanning, 0) << "a search that fails ends the scan";
    }
    EXPECT_EQ(PanelText(1035), "");
}

TEST_F(TiltMeasurement, BeginsEachSearchAsTheLastKnownSlopeSays) {
    BlurAtGrab(1);
    StandAt(0.0, 0.0, 0.0);
    view.onGrab = nullptr;
    const auto firstStep = [this] { return arriving.Commands().at(2); };
    tilt.MeasureTilt(focus);
    EXPECT_EQ(firstStep()[1], '-') << firstStep();
    arriving.writes.clear();
    StandAt(0.0, 0.0, 0.0);
    focus.xTilt = 0.001F;
    tilt.MeasureTilt(focus);
    EXPECT_NE(firstStep()[1], '-') << firstStep();
}

TEST_F(TiltMeasurement, WritesNothingIntoAPanelThatIsClosed) {
    ClosePanel();
    EXPECT_EQ(tilt.MeasureTilt(focus), 1);
    EXPECT_TRUE(ui.dialogs.textsSet.empty());
    EXPECT_EQ(Measured(), (Depths{5, 20, -30}));
    EXPECT_EQ(focus.xTilt, 0.0025F);
}

TEST_F(TiltMeasurement, FindsNoSlopeAlongARangeOfNothing) {
    settings.xRange = 0;
    EXPECT_EQ(tilt.MeasureTilt(focus), 1);
    EXPECT_EQ(focus.xTilt, 0.0F);
    EXPECT_EQ(PanelText(1035), "0.000");
    EXPECT_EQ(focus.yTilt, -0.0035F);
    EXPECT_EQ(focus.tiltMeasured, 1);
}

TEST_F(TiltMeasurement, TakesTheRangeThatHoldsWhenTheSlopesAreWorkedOut) {
    view.onGrab = [this] {
        stage.position[2] = HeightHere();
        settings.xRange = 3;
    };
    tilt.MeasureTilt(focus);
    EXPECT_EQ(focus.xTilt, 0.005F) << "15 / 3000";
}

TEST_F(TiltMeasurement, GoesBeyondWhatAPositionBoxCanShow) {
    stage.hComm = SerialHandle::Invalid;
    stage.offline = 1;
    settings.xRange = std::numeric_limits<std::int32_t>::max();
    settings.yRange = std::numeric_limits<std::int32_t>::min();
    scan.originX = std::numeric_limits<std::int32_t>::max();
    scan.originY = std::numeric_limits<std::int32_t>::min();
    double farX = 0.0;
    double farY = 0.0;
    view.onGrab = [&] {
        farX = std::max(farX, stage.position[0]);
        farY = std::min(farY, stage.position[1]);
    };
    EXPECT_EQ(tilt.MeasureTilt(focus), 1);
    EXPECT_EQ(farX, 4294967294.0);
    EXPECT_EQ(farY, -4294967296.0);
}

} // namespace
} // namespace tessaro
