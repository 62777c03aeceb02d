#include "scan/tilt_plane.h"
#include "support/scan_fixture.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace tessaro {
namespace {

/// Slopes of depths that were typed, say.
class TiltSlopes : public ScanFixture {};

TEST_F(TiltSlopes, AreQuotientsOfSinglePrecision) {
    settings.xRange = 1;
    settings.yRange = 3;
    scan.zXmax = 16777217; // 2^24 + 1, which single precision rounds to 2^24
    scan.zYmax = 1;
    tilt.SetSlopes(focus, "%.9f");
    EXPECT_EQ(focus.xTilt, 16777.216F);
    EXPECT_EQ(PanelText(1035), "16777.216796875") << "the nearest to 16777.216";
    EXPECT_EQ(focus.yTilt, 1.0F / 3000.0F);
    EXPECT_NE(static_cast<double>(focus.yTilt), 1.0 / 3000.0);
    EXPECT_EQ(focus.tiltMeasured, 1);
}

TEST_F(TiltSlopes, RoundEachDepthBeforeTheyAreSubtracted) {
    settings.xRange = 1;
    scan.zXmax = 16777219; // rounds to 2^24 + 4
    scan.zOrigin = 16777217;
    tilt.SetSlopes(focus, "%.3f");
    EXPECT_EQ(focus.xTilt, 0.004F) << "of 2 um";
}

TEST_F(TiltSlopes, HaveTheSignOfANegativeRange) {
    settings.xRange = -2;
    scan.zXmax = 10;
    tilt.SetSlopes(focus, "%.4f");
    EXPECT_EQ(PanelText(1035), "-0.0050");
}

/// The plane 10 um + 0.25 dx - 0.5 dy from (100, -100).
class TiltFollowing : public ScanFixture {
protected:
    TiltFollowing() {
        scan.originX = 100;
        scan.originY = -100;
        scan.zOrigin = 10;
        focus.xTilt = 0.25F;
        focus.yTilt = -0.5F;
    }

    Texts SentAt(double x, double y, double z) {
        StandAt(x, y, z);
        arriving.writes.clear();
        EXPECT_EQ(tilt.ApplyTiltZ(focus, 1), 0);
        return arriving.Commands();
    }
};

TEST_F(TiltFollowing, MovesZOntoThePlane) {
    EXPECT_EQ(SentAt(100.0, -100.0, 0.0), Texts{"L16"}) << "10 um";
    EXPECT_EQ(SentAt(140.0, -100.0, 0.0), Texts{"L32"}) << "10 + 10";
    EXPECT_EQ(SentAt(100.0, -80.0, 5.0), Texts{"L0"}) << "10 - 10";
    EXPECT_EQ(SentAt(180.0, -120.0, 0.0), Texts{"L64"}) << "10 + 20 + 10";
}

TEST_F(TiltFollowing, CutsHeightsTowardZero) {
    EXPECT_EQ(SentAt(110.0, -100.0, 0.0), Texts{"L19"}) << "12.5: 12 um are 19.2 steps";
    EXPECT_EQ(SentAt(100.0, -75.0, 0.0), Texts{"L-3"}) << "-2.5: -2 um are -3.2 steps";
    EXPECT_EQ(SentAt(102.5, -78.75, 1.25), Texts{"L0"}) << "10 + 0.625 - 10.625";
    EXPECT_EQ(SentAt(100.0, -78.75, 1.25), Texts{"L0"}) << "-0.625";
}

TEST_F(TiltFollowing, SendsNothingWhereZIsThere) {
    EXPECT_TRUE(SentAt(100.0, -100.0, 10.0).empty());
    EXPECT_TRUE(SentAt(102.5, -100.0, 10.0).empty()) << "10.625: 10";
    EXPECT_EQ(SentAt(102.5, -100.0, 10.625), Texts{"L16"}) << "its fraction counts";
    EXPECT_TRUE(SentAt(100.0, -78.75, 0.0).empty()) << "-0.625: 0";
}

TEST_F(TiltFollowing, WorksInDoublePrecision) {
    scan.originX = 0;
    scan.originY = 0;
    scan.zOrigin = 16777217; // more than single precision holds
    focus.xTilt = 0.0F;
    focus.yTilt = 0.0F;
    StandAt(0.0, 0.0, 0.0);
    stage.offline = 1;
    tilt.ApplyTiltZ(focus, 1);
    EXPECT_EQ(stage.position[2], 16777217.0);
}

TEST_F(TiltFollowing, DoesNotLookAtItsMode) {
    StandAt(100.0, -100.0, 0.0);
    EXPECT_EQ(tilt.ApplyTiltZ(focus, 0), 0);
    EXPECT_EQ(arriving.Commands(), Texts{"L16"});
}

TEST_F(TiltFollowing, EndsWithWhatAPositionCanBe) {
    stage.offline = 1;
    focus.xTilt = std::numeric_limits<float>::max();
    StandAt(1000.0, -100.0, 0.0);
    tilt.ApplyTiltZ(focus, 1);
    EXPECT_EQ(stage.position[2], 2147483647.0);
}

} // namespace
} // namespace tessaro
