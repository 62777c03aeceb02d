#include "focus_trials.h"
#include "support/sanitizer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <span>
#include <sstream>
#include <string>
#include <vector>

// The searches for the focus on the simulated microscope. tessaro-focus-table makes tables of many.

namespace tessaro {
namespace {

using Texts = std::vector<std::string>;

/// What the link tells of every command on standard output is wanted only where a test fails.
class FocusOnTwin : public testing::Test {
protected:
    FocusOnTwin() { testing::internal::CaptureStdout(); }
    ~FocusOnTwin() override {
        const std::string told = testing::internal::GetCapturedStdout();
        if (HasFailure())
            std::fputs(told.c_str(), stdout);
    }
};

/// A wafer on which nothing lies, in focus at Z = 0.
const Wafer& BareWafer() {
    static const Wafer wafer(WaferOptions{}, WaferContents{});
    return wafer;
}

MicroscopeSetUp BareSetUp() {
    MicroscopeSetUp setUp;
    setUp.start = {2000.0, 2000.0, 0.0};
    setUp.limits = UsualLimitsAround(setUp.start);
    return setUp;
}

std::size_t Lines(const std::string& text, const std::string& part) {
    std::istringstream all(text);
    std::size_t count = 0;
    for (std::string line; std::getline(all, line);)
        count += line.find(part) != std::string::npos ? 1U : 0U;
    return count;
}

int FocusFinely(VirtualMicroscope& microscope) {
    AutoFocus& focus = microscope.services.autoFocus;
    return focus.FineFocus(focus.Hint(), 0);
}

void SweepCoarsely(VirtualMicroscope& microscope) {
    AutoFocus& focus = microscope.services.autoFocus;
    focus.CoarseFocus(focus.Hint(), 2000, microscope.globals->focusControl.focusSpeed);
}

void ExpectWarnings(const VirtualMicroscope& microscope, const Texts& expected) {
    Texts texts;
    for (const ScriptedMessageBoxes::Shown& box : microscope.ui.boxes.warnings) {
        texts.push_back(box.text);
        EXPECT_EQ(box.caption, "Error in focusing");
    }
    EXPECT_EQ(texts, expected);
}

void ExpectCompleted(const VirtualMicroscope& microscope, const std::string& text) {
    ASSERT_FALSE(microscope.Information().empty());
    EXPECT_EQ(microscope.Information().back(), text);
    EXPECT_EQ(microscope.globals->focusControl.focusBusy, 0);
}

/// A frame that is the same all over is not worth a sweep; the climb is tried all the same.
void ExpectNothingIsSeen(VirtualMicroscope& microscope) {
    EXPECT_EQ(FocusFinely(microscope), 0);
    ExpectWarnings(microscope, {"Please, adjust the sample posion", "Please, adjust the sample position"});
    ExpectCompleted(microscope, "Focusing completed.");
    EXPECT_EQ(Lines(microscope.curveText.str(), ",coarse,"), 0U);
    EXPECT_EQ(Lines(microscope.curveText.str(), ",fine,1,"), 4U);
    EXPECT_EQ(Lines(microscope.curveText.str(), ",fine,2,"), 8U);
}

// Noise counts as structure on bare substrate as soon as it is bright; at a level of 42 it does not.
constexpr double dimExposureUs = 3000.0;

TEST_F(FocusOnTwin, BareSubstrateIsSweptOnceAndGivenUpWhereItWas) {
    VirtualMicroscope microscope(BareWafer(), BareSetUp());
    microscope.camera.exposure.exposureTimeUs = dimExposureUs;
    EXPECT_EQ(FocusFinely(microscope), 0);
    ExpectWarnings(microscope, {"Please, adjust the sample position"});
    ExpectCompleted(microscope, "Focusing completed.");
    EXPECT_EQ(Lines(microscope.curveText.str(), ",coarse,1,"), 90U);
    EXPECT_EQ(Lines(microscope.curveText.str(), ",fine,1,"), 4U);
    EXPECT_EQ(Lines(microscope.curveText.str(), ",fine,2,"), 8U);
    microscope.LetItRest();
    EXPECT_LT(std::abs(microscope.Z()), 200.0) << "12 steps of the least contrast from where it was";
}

TEST_F(FocusOnTwin, ABlackFieldIsNotSweptAndGivenUp) {
    VirtualMicroscope microscope(BareWafer(), BareSetUp());
    microscope.camera.exposure.exposureTimeUs = 0.0;
    ExpectNothingIsSeen(microscope);
}

TEST_F(FocusOnTwin, ASaturatedFieldIsNotSweptAndGivenUp) {
    VirtualMicroscope microscope(BareWafer(), BareSetUp());
    microscope.camera.exposure.exposureTimeUs = 100'000.0;
    ExpectNothingIsSeen(microscope);
}

TEST_F(FocusOnTwin, ZAtItsLimitsEndsASweepBetweenThem) {
    MicroscopeSetUp setUp = BareSetUp();
    setUp.limits.low.z = -30.0;
    setUp.limits.high.z = 30.0;
    VirtualMicroscope microscope(BareWafer(), setUp);
    microscope.camera.exposure.exposureTimeUs = dimExposureUs;
    SweepCoarsely(microscope);
    ExpectCompleted(microscope, "Course Focusing Completed");
    EXPECT_LE(*std::ranges::max_element(microscope.camera.exposedAtZ), 30.0);
    EXPECT_GE(*std::ranges::min_element(microscope.camera.exposedAtZ), -30.0);
    microscope.LetItRest();
    EXPECT_NEAR(microscope.Z(), 0.0, 1.0) << "back to where it was";
}

TEST_F(FocusOnTwin, WithoutACameraTheTestPatternIsSweptToTheEnd) {
    VirtualMicroscope microscope(BareWafer(), BareSetUp());
    microscope.camera.present = false;
    SweepCoarsely(microscope);
    EXPECT_TRUE(microscope.camera.exposedAtZ.empty());
    ExpectCompleted(microscope, "Course Focusing Completed");
}

/// Every move is waited for in vain for 2 s, and every question takes its 150 ms.
TEST_F(FocusOnTwin, ASilentControllerTakesTimeAndEndsNothing) {
    VirtualMicroscope microscope(BareWafer(), BareSetUp());
    microscope.camera.exposure.exposureTimeUs = dimExposureUs;
    microscope.stage.Faults().silent = true;
    const std::uint64_t start = microscope.ui.clock.now;
    EXPECT_EQ(FocusFinely(microscope), 0);
    ExpectWarnings(microscope, {"Please, adjust the sample position"});
    ExpectCompleted(microscope, "Focusing completed.");
    EXPECT_LT(microscope.ui.clock.now - start, 90'000U);
}

TEST_F(FocusOnTwin, WhereTheProgressOfZIsToldAllIsSampledAtTheBottom) {
    const FlakeField field(1);
    MicroscopeSetUp setUp = field.SetUp();
    setUp.start.z += 100.0;
    setUp.progress = {true, true, true};
    VirtualMicroscope microscope(field.wafer, setUp);
    SweepCoarsely(microscope);
    ASSERT_GE(microscope.camera.exposedAtZ.size(), 3U);
    const double bottom = setUp.start.z - 2000.0;
    for (const double z : std::span(microscope.camera.exposedAtZ).subspan(1)) // the first is taken before
        EXPECT_NEAR(z, bottom, 3.0);
}

TEST_F(FocusOnTwin, ASilentZIsSampledOnItsWayDown) {
    const FlakeField field(1);
    VirtualMicroscope microscope(field.wafer, field.SetUp());
    SweepCoarsely(microscope);
    const std::vector<double>& z = microscope.camera.exposedAtZ;
    ASSERT_GE(z.size(), 5U);
    for (std::size_t i = 2; i + 1 < z.size(); ++i)
        EXPECT_LT(z[i + 1], z[i]);
}

TEST_F(FocusOnTwin, CoarseAndThenFineEndNearTheFocus) {
    FocusConditions conditions;
    conditions.manner = FocusManner::CoarseFine;
    conditions.mostDefocusUm = 300.0;
    conditions.speed = 450;
    const std::uint64_t fields = addressSanitizer ? 1 : 2; // which makes each take half a minute
    for (std::uint64_t seed = 1; seed <= fields; ++seed) {
        const FocusTrial trial = TryToFocus(FlakeField(seed), seed, conditions);
        EXPECT_EQ(trial.result, 1) << seed;
        EXPECT_NEAR(trial.errorUm, 0.0, 10.0) << seed << ", begun at " << trial.defocusUm;
        EXPECT_EQ(Lines(trial.curve, ",coarse,1,0,"), 1U) << seed;
        EXPECT_EQ(Lines(trial.curve, ",fine,1,0,"), 1U) << seed << ": not in focus before the climb";
    }
}

} // namespace
} // namespace tessaro
