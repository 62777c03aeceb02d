#include "focus_trials.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <span>
#include <sstream>
#include <string>
#include <vector>

// The searches for the focus on the simulated microscope. A table over many wafers:
//   TESSARO_FOCUS_SEEDS=100 TESSARO_FOCUS_SPEEDS=300,450 TESSARO_FOCUS_GRABS=40,110 TESSARO_FOCUS_GAINS=0,12
//   TESSARO_FOCUS_MANNERS=0,1,2,3,4 tessaro_focus_on_twin_test --gtest_filter='*EndNearTheFocus'
// TESSARO_FOCUS_CURVES=FOLDER keeps the curve of every trial.

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

/// What a table is made for. Few trials unless the environment says more.
struct TableWishes {
    static std::string Text(const char* name, const std::string& usual) {
        const char* value = std::getenv(name);
        return value == nullptr ? usual : value;
    }
    static std::vector<int> Numbers(const char* name, const std::string& usual) {
        std::vector<int> numbers;
        std::istringstream all(Text(name, usual));
        for (std::string number; std::getline(all, number, ',');)
            numbers.push_back(std::stoi(number));
        return numbers;
    }

    std::vector<int> seeds = Numbers("TESSARO_FOCUS_SEEDS", "2"); // the number of them, and the first
    std::vector<int> speeds = Numbers("TESSARO_FOCUS_SPEEDS", "450");
    std::vector<int> grabs = Numbers("TESSARO_FOCUS_GRABS", "40"); // ms
    std::vector<int> gains = Numbers("TESSARO_FOCUS_GAINS", "0");  // dB
    std::vector<int> levels = Numbers("TESSARO_FOCUS_LEVELS", "140");
    std::vector<int> manners = Numbers("TESSARO_FOCUS_MANNERS", "2");
    std::vector<int> told = Numbers("TESSARO_FOCUS_TOLD", "0"); // the progress of Z
    bool upwards = Text("TESSARO_FOCUS_UPWARDS", "0") == "1";   // begins the climb
    std::string curves = Text("TESSARO_FOCUS_CURVES", {});      // a folder
};

constexpr std::array<double, 5> mostDefocusUm = {900.0, 30.0, 300.0, 300.0, 300.0};
constexpr std::array<const char*, 5> mannerNames = {"coarse", "fine", "coarse+fine", "coarse+panel+fine",
                                                    "coarse+fine+fine"};
constexpr int quickGrabMs = 60;
constexpr std::uint32_t afterExposureBeginsMs = 45; // a slow grab waits for its exposure, and is then quick

FocusConditions ConditionsOf(int manner, int level, int gain, int grab, int speed, bool told) {
    FocusConditions conditions;
    conditions.manner = static_cast<FocusManner>(manner);
    conditions.mostDefocusUm = mostDefocusUm[static_cast<std::size_t>(manner)];
    conditions.level = level;
    conditions.gainDb = gain;
    conditions.speed = speed;
    conditions.progress = {true, true, told};
    conditions.timing.lastsMs = static_cast<std::uint32_t>(grab);
    if (grab > quickGrabMs)
        conditions.timing.exposureBeginsMs = conditions.timing.lastsMs - afterExposureBeginsMs;
    return conditions;
}

void KeepCurve(const std::string& file, const FlakeField& field, const FocusTrial& trial) {
    std::ofstream out(file);
    out << "# focus at " << field.place.z << " um, began " << trial.defocusUm << " um from it, ended "
        << trial.errorUm << " um from it after " << trial.seconds << " s, result " << trial.result << '\n'
        << trial.curve << "# exposed at, um from the focus:";
    for (const double z : trial.exposedAtZ)
        out << ' ' << z - field.place.z;
    out << '\n';
}

FocusTally Row(const TableWishes& wishes, const FocusConditions& conditions) {
    std::vector<FocusTrial> trials;
    const auto first = static_cast<std::uint64_t>(wishes.seeds.size() > 1 ? wishes.seeds[1] : 1);
    const auto count = static_cast<std::uint64_t>(wishes.seeds[0]);
    const char* const name = mannerNames[static_cast<std::size_t>(conditions.manner)];
    for (std::uint64_t seed = first; seed < first + count; ++seed) {
        const FlakeField field(seed);
        trials.push_back(TryToFocus(field, seed, conditions));
        if (!wishes.curves.empty())
            KeepCurve(wishes.curves + '/' + name + "-level" + std::to_string(std::lround(conditions.level)) +
                          "-gain" + std::to_string(std::lround(conditions.gainDb)) + "-grab" +
                          std::to_string(conditions.timing.lastsMs) + "-speed" +
                          std::to_string(conditions.speed) + (conditions.progress[2] ? "-told" : "") +
                          (conditions.xTilt > 0.0F ? "-up-" : "-") + std::to_string(seed) + ".csv",
                      field, trials.back());
    }
    const FocusTally tally(trials);
    std::fprintf(
        stderr, "| %s | %.0f | %.0f | %u | %d | %s | %d | %d | %d | %d | %.1f | %.1f | %.1f | %.1f |\n", name,
        conditions.level, conditions.gainDb, conditions.timing.lastsMs, conditions.speed,
        conditions.progress[2] ? "told" : "silent", tally.trials, tally.within3, tally.within10,
        tally.within30, tally.medianUm, tally.ninetiethUm, tally.medianSeconds, tally.longestSeconds);
    return tally;
}

TEST_F(FocusOnTwin, CoarseAndThenFineEndNearTheFocus) {
    const TableWishes wishes;
    std::fputs(
        "| search | level | gain dB | grab ms | speed | Z | trials | 3 um | 10 um | 30 um | median | 90 % | "
        "s | longest |\n",
        stderr);
    for (const int told : wishes.told)
        for (const int manner : wishes.manners)
            for (const int level : wishes.levels)
                for (const int gain : wishes.gains)
                    for (const int grab : wishes.grabs)
                        for (const int speed : wishes.speeds) {
                            FocusConditions conditions =
                                ConditionsOf(manner, level, gain, grab, speed, told != 0);
                            conditions.xTilt = wishes.upwards ? 0.001F : 0.0F;
                            const FocusTally tally = Row(wishes, conditions);
                            if (std::getenv("TESSARO_FOCUS_SEEDS") == nullptr) {
                                EXPECT_EQ(tally.within10, tally.trials);
                            }
                        }
}

} // namespace
} // namespace tessaro
