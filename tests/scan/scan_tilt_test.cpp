#include "support/scan_fixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace tessaro {
namespace {

/// Scans of two rows of two fields from (0, 0), where the stage stands, with the tilt in their way.
class ScanWithTilt : public ScanFixture {
protected:
    ScanWithTilt() {
        arriving.tellsXY = true;
        settings.xRange = 1;
        settings.yRange = 1;
        liveView.Switch(1);
    }

    void KnowThePlane(float xTilt, float yTilt, std::int32_t zOrigin) {
        focus.tiltMeasured = 1;
        focus.xTilt = xTilt;
        focus.yTilt = yTilt;
        scan.zOrigin = zOrigin;
    }

    static constexpr FocusFigures sharp{0.0F, 0.0F, 1.0F, 11.0F};
    static constexpr FocusFigures blurred{0.0F, 0.0F, 0.0F, 0.0005F}; // nothing to focus by
};

TEST_F(ScanWithTilt, LeavesZAloneWhereItIsSwitchedOff) {
    KnowThePlane(0.1F, 0.1F, 100);
    focus.tiltCorrection = 0;
    scanRun.RunScan();
    for (const std::string& command : arriving.Commands())
        EXPECT_NE(command[0], 'L') << command;
    EXPECT_EQ(told.fields.size(), 4U);
    EXPECT_TRUE(view.calls.empty());
}

TEST_F(ScanWithTilt, BeginsWithTheHeightOfTheOriginAsAStepFromWhereZStands) {
    StandAt(0.0, 0.0, 50.0);
    KnowThePlane(0.0F, 0.0F, 100);
    scanRun.RunScan();
    EXPECT_EQ(arriving.Commands(), (Texts{"s3200", "S3200", "L240", "m0", "M0", // 150 um
                                          "m640", "L160", "M640", "m0", "m0", "M1280", "m0", "M0"}));
}

TEST_F(ScanWithTilt, FollowsThePlaneAfterStepsAlongXOnly) {
    KnowThePlane(0.0125F, 0.025F, 20);
    scanRun.RunScan();
    const auto z = [this](std::size_t i) { return told.fields.at(i).position[2]; };
    EXPECT_EQ(z(0), 20.0);
    EXPECT_EQ(z(1), 25.0);
    EXPECT_EQ(z(2), 25.0) << "as the row before has left it, where the plane is at 35 um";
    EXPECT_EQ(z(3), 30.0);
    const Texts sent = arriving.Commands();
    EXPECT_EQ(std::count_if(sent.begin(), sent.end(), [](const std::string& text) { return text[0] == 'L'; }),
              3);
}

/// The plane may be forgotten and known again in the middle.
TEST_F(ScanWithTilt, LooksAtTheSwitchAtEachStep) {
    KnowThePlane(0.0125F, 0.0F, 20);
    field.onCall = [this](const std::string&) { focus.tiltCorrection = told.fields.size() == 2 ? 1 : 0; };
    scanRun.RunScan();
    EXPECT_EQ(told.fields.at(1).position[2], 20.0);
    EXPECT_EQ(told.fields.at(3).position[2], 20.0);
    EXPECT_EQ(focus.tiltCorrection, 0);
}

TEST_F(ScanWithTilt, MeasuresThePlaneFirstWhereItIsUnknown) {
    view.sharpness = [] { return sharp; };
    StandAt(0.0, 0.0, 35.0);
    scan.zOrigin = 100;
    scanRun.RunScan();
    EXPECT_EQ(arriving.Commands(),
              (Texts{"s3200", "S3200", "M0", "m1600", "m0", "M1600", "m0", "M0", // the three places
                     "m0", "M0", "m640", "M640", "m0", "m0", "M1280", "m0", "M0"}))
        << "Z is on the plane already";
    const Texts shown = Information();
    EXPECT_EQ(shown[0], "scanning...");
    EXPECT_EQ(shown[1], "Moving to Xmax position.");
    EXPECT_EQ(focus.tiltMeasured, 1);
    EXPECT_EQ(scan.zOrigin, 35);
    EXPECT_EQ(told.ends, std::vector{ScanEnd::Completed});
    EXPECT_EQ(told.fields.size(), 4U);
}

TEST_F(ScanWithTilt, EndsWithoutAFieldWhereAPlaceCannotBeFocused) {
    const Texts texts = {"Moving to Xmax position.", "Moving to Ymax position.",
                         "Moving to Origin position."};
    for (std::size_t place = 0; place < texts.size(); ++place) {
        StandAt(0.0, 0.0, 0.0);
        told = {};
        ui.boxes.warnings.clear();
        ui.dialogs.textsSet.clear();
        view.sharpness = [&] {
            const Texts shown = Information();
            return std::find(shown.begin(), shown.end(), texts[place]) == shown.end() ? sharp : blurred;
        };
        scanRun.RunScan();
        EXPECT_TRUE(field.calls.empty());
        EXPECT_EQ(told.ends, std::vector{ScanEnd::FocusFailed}) << place;
        EXPECT_EQ(ui.boxes.warnings.size(), 2U);
        EXPECT_EQ(Information().back(), "Scanning has completed.");
        const Texts progress = Progress();
        EXPECT_NE(std::find(progress.begin(), progress.end(), "Done"), progress.end());
        EXPECT_EQ(stage.position[0], 0.0);
        EXPECT_EQ(stage.position[1], 0.0);
        EXPECT_EQ(focus.tiltMeasured, 0);
        EXPECT_EQ(scan.scanning, 0);
        EXPECT_EQ(liveTimer.on, 1);
        EXPECT_TRUE(LiveTimerRuns());
    }
}

TEST_F(ScanWithTilt, EndsWhenTheMeasurementIsStopped) {
    view.sharpness = [] { return sharp; };
    for (const char* command : {"m1600", "M1600"}) {
        told = {};
        When(command, [this] { ClickIn(0, true); });
        scanRun.RunScan();
        EXPECT_EQ(told.ends, std::vector{ScanEnd::Stopped}) << command;
        EXPECT_TRUE(field.calls.empty());
        EXPECT_EQ(focus.tiltMeasured, 0);
        EXPECT_EQ(Information().back(), "Scanning has completed.");
    }
}

/// What was measured before the stop counts: the next scan begins with it.
TEST_F(ScanWithTilt, KnowsThePlaneWhenItIsStoppedInTheLastFocusing) {
    int grabs = 0;
    view.sharpness = [] { return sharp; };
    view.onGrab = [&] {
        if (++grabs == 5) // two at either far end, one by the search at the origin
            ClickIn(0, true);
    };
    scanRun.RunScan();
    EXPECT_EQ(told.ends, std::vector{ScanEnd::Stopped});
    EXPECT_EQ(focus.tiltMeasured, 1);
    EXPECT_TRUE(field.calls.empty());
}

} // namespace
} // namespace tessaro
