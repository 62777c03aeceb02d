// What the contrast dialog tries out on the current frame: steps, "Test now", smoothing, "Image refresh".

#include "support/contrast_fixture.h"

#include <cstddef>
#include <limits>
#include <utility>

namespace tessaro {
namespace {

class ContrastTrial : public ContrastDialogTest {};

struct Step {
    int button;
    std::size_t channel;
    int edit;
    float by;
    const char* shown;
};

class ContrastStep : public ContrastDialogTest, public testing::WithParamInterface<Step> {
protected:
    ContrastStep() { SetContrasts({-12.4F, -12.4F, -12.4F}, 6.3F); }
};

TEST_P(ContrastStep, ChangesOneContrastAndShowsItWhole) {
    const Step& step = GetParam();
    Open();
    Contrasts expected = settings.targetContrast;
    expected[step.channel] += step.by;
    Press(step.button);
    EXPECT_EQ(settings.targetContrast, expected);
    EXPECT_EQ(settings.contrastTolerance, 6.3F);
    EXPECT_EQ(dialogs.textsSet, (std::vector{std::pair{step.edit, std::string(step.shown)}}));
}

TEST_P(ContrastStep, IsShownBeforeTheFieldIsLookedAtQuickly) {
    std::string shown;
    Open();
    field.onCall = [&](const std::string&) {
        if (field.calls.size() == 1)
            shown = Opened().texts[GetParam().edit];
    };
    Press(GetParam().button);
    EXPECT_EQ(field.calls, quickly);
    EXPECT_EQ(shown, GetParam().shown);
}

TEST_P(ContrastStep, GoesBeyondWhatSetAllows) {
    SetContrasts({100.0F, 100.0F, 100.0F}, 6.0F);
    Open();
    Press(GetParam().button);
    EXPECT_EQ(settings.targetContrast[GetParam().channel], 100.0F + GetParam().by);
    SetContrasts({-100.0F, -100.0F, -100.0F}, 6.0F);
    Press(GetParam().button);
    EXPECT_EQ(settings.targetContrast[GetParam().channel], -100.0F + GetParam().by);
}

/// A step counts from the value, not from the text.
TEST_P(ContrastStep, DoesNotTakeWhatIsTyped) {
    Open();
    TypeContrasts("50", "50", "50");
    Press(GetParam().button);
    EXPECT_EQ(settings.targetContrast[GetParam().channel], -12.4F + GetParam().by);
    EXPECT_EQ(Opened().texts[GetParam().edit], GetParam().shown);
}

INSTANTIATE_TEST_SUITE_P(Buttons, ContrastStep,
                         testing::Values(Step{1009, 0, 1017, 1.0F, "-11"}, Step{1010, 0, 1017, -1.0F, "-13"},
                                         Step{1050, 1, 1018, 1.0F, "-11"}, Step{1011, 1, 1018, -1.0F, "-13"},
                                         Step{1016, 2, 1019, 1.0F, "-11"}, Step{1051, 2, 1019, -1.0F, "-13"}),
                         [](const auto& step) { return "Button" + std::to_string(step.param.button); });

TEST_F(ContrastTrial, StepsRedFrom100To101WhichSetBringsBackTo100) {
    SetContrasts({100.0F, 0.0F, 0.0F}, 6.0F);
    Open();
    Press(1009);
    EXPECT_EQ(settings.targetContrast[0], 101.0F);
    EXPECT_EQ(Opened().texts[1017], "101");
    Press(1);
    EXPECT_EQ(settings.targetContrast[0], 100.0F);
    EXPECT_EQ(Opened().texts[1017], "100.0");
}

class ToleranceStep : public ContrastDialogTest {
protected:
    /// The tolerance behind a press, from before it.
    float Pressed(int button, float before) {
        settings.contrastTolerance = before;
        field.calls.clear();
        dialogs.textsSet.clear();
        Press(button);
        EXPECT_EQ(field.calls, quickly) << button << " at " << before;
        return settings.contrastTolerance;
    }
    const Texts& Shown() {
        m_shown = dialogs.TextsOf(1020);
        EXPECT_EQ(dialogs.textsSet.size(), m_shown.size()) << "and nothing else";
        return m_shown;
    }

private:
    Texts m_shown;
};

TEST_F(ToleranceStep, ChangesItByOneAndShowsOneDecimal) {
    Open();
    EXPECT_EQ(Pressed(1027, 6.25F), 7.25F);
    EXPECT_EQ(Shown(), Texts{"7.2"});
    EXPECT_EQ(Pressed(1026, 6.25F), 5.25F);
    EXPECT_EQ(Shown(), Texts{"5.2"});
    EXPECT_EQ(settings.targetContrast, (Contrasts{-12.0F, -8.0F, -2.0F}));
}

TEST_F(ToleranceStep, StaysAt90AndAt0) {
    Open();
    EXPECT_EQ(Pressed(1027, 90.0F), 90.0F);
    EXPECT_EQ(Shown(), Texts{"90.0"});
    EXPECT_EQ(Pressed(1026, 0.0F), 0.0F);
    EXPECT_EQ(Shown(), Texts{"0.0"});
}

TEST_F(ToleranceStep, EndsAt0AndAt90WhereItWouldGoBeyond) {
    Open();
    EXPECT_EQ(Pressed(1027, 89.5F), 90.0F);
    EXPECT_EQ(Pressed(1026, 0.5F), 0.0F);
    EXPECT_EQ(Pressed(1026, 500.0F), 90.0F) << "the lower way, too";
    EXPECT_EQ(Pressed(1027, -500.0F), 0.0F) << "and the upper one";
}

/// The contrasts bound it when it is set, not here.
TEST_F(ToleranceStep, MayGoBeyondTheContrasts) {
    SetContrasts({1.0F, 1.0F, 1.0F}, 6.0F);
    Open();
    EXPECT_EQ(Pressed(1027, 6.0F), 7.0F);
}

TEST_F(ToleranceStep, IsShownBeforeTheFieldIsLookedAt) {
    std::string shown;
    Open();
    field.onCall = [&](const std::string& call) {
        if (call == "show")
            shown = Opened().texts[1020];
    };
    Press(1027);
    EXPECT_EQ(shown, "7.0");
}

TEST_F(ContrastTrial, RefreshesTheImageAndNothingElse) {
    Open();
    TypeContrasts("1", "2", "3");
    Press(1028);
    EXPECT_EQ(field.calls, (Texts{"statistics", "show"}));
    EXPECT_TRUE(dialogs.textsSet.empty()) << "the figures are those of the opening";
    EXPECT_EQ(settings.targetContrast, (Contrasts{-12.0F, -8.0F, -2.0F}));
}

TEST_F(ContrastTrial, SwitchesSmoothingAndTestsInFull) {
    Open();
    std::int32_t duringTest = -1;
    field.onCall = [&](const std::string&) { duringTest = choices.smoothing; };
    SwitchBox(1013, true);
    EXPECT_EQ(choices.smoothing, 1);
    EXPECT_EQ(duringTest, 1);
    EXPECT_EQ(field.calls, inFull);
    field.calls.clear();
    SwitchBox(1013, false);
    EXPECT_EQ(choices.smoothing, 0);
    EXPECT_EQ(field.calls, inFull);
}

/// Only "Test now" and "Set" read the texts.
TEST_F(ContrastTrial, SwitchesSmoothingWithoutTakingTheTexts) {
    Open();
    TypeContrasts("1", "2", "3");
    Type(1020, "4");
    SwitchBox(1013, true);
    EXPECT_EQ(settings.targetContrast, (Contrasts{-12.0F, -8.0F, -2.0F}));
    EXPECT_EQ(settings.contrastTolerance, 6.0F);
    EXPECT_TRUE(dialogs.textsSet.empty());
}

TEST_F(ContrastTrial, TestsNowWithWhatIsTypedAsItIs) {
    Open();
    TypeContrasts("-150.5", "250", "-2.25");
    Type(1020, "-7");
    Contrasts duringTest = {};
    float toleranceDuringTest = 0.0F;
    field.onCall = [&](const std::string& call) {
        if (call != "statistics")
            return;
        duringTest = settings.targetContrast;
        toleranceDuringTest = settings.contrastTolerance;
    };
    Press(1008);
    EXPECT_EQ(settings.targetContrast, (Contrasts{-150.5F, 250.0F, -2.25F})) << "nothing is clamped";
    EXPECT_EQ(settings.contrastTolerance, -7.0F);
    EXPECT_EQ(duringTest, settings.targetContrast);
    EXPECT_EQ(toleranceDuringTest, -7.0F);
    EXPECT_EQ(field.calls, inFull);
    EXPECT_TRUE(dialogs.textsSet.empty()) << "and nothing is shown anew";
    EXPECT_EQ(settings.minimumFlakeArea, 100);
}

TEST_F(ContrastTrial, TestsNowWithoutTakingAreaAndThreshold) {
    Open();
    Type(1000, "55");
    Type(1007, "66");
    Press(1008);
    EXPECT_EQ(settings.minimumFlakeArea, 100);
    EXPECT_EQ(settings.scoreThreshold, 70.0F);
}

TEST_F(ContrastTrial, TestsNowWithTheOldValueWhereATextIsNoNumber) {
    Open();
    TypeContrasts("", "x", "5");
    Type(1020, "");
    Press(1008);
    EXPECT_EQ(settings.targetContrast, (Contrasts{-12.0F, -8.0F, 5.0F}));
    EXPECT_EQ(settings.contrastTolerance, 6.0F);
    EXPECT_EQ(field.calls, inFull);
}

/// Whatever the analysis dispatches meanwhile: the values are where they belong, and the work goes on.
TEST_F(ContrastTrial, GoesOnWithADialogThatGoesAwayInTheMiddle) {
    for (const int control : {1009, 1027, 1013, 1028, 1008}) {
        Open();
        field.calls.clear();
        field.onCall = [this](const std::string&) { Close(); };
        Press(control);
        EXPECT_GE(field.calls.size(), 2U) << control;
        EXPECT_FALSE(dialogs.dialogs.contains(window)) << control;
    }
    EXPECT_EQ(settings.targetContrast[0], -11.0F);
    EXPECT_EQ(settings.contrastTolerance, 7.0F);
}

/// A command may come late.
TEST_F(ContrastTrial, ChangesNoTextAndNoSubstrateOfADialogThatIsGone) {
    choices.substrate = 2;
    Open();
    Close();
    for (const int control : {1008, 1, 1034, 2, 1023})
        dialog.Command(window, control, Notification::Clicked);
    EXPECT_EQ(choices.substrate, 2);
    EXPECT_EQ(settings.targetContrast, (Contrasts{-12.0F, -8.0F, -2.0F}));
    EXPECT_EQ(settings.contrastTolerance, 6.0F);
    EXPECT_EQ(settings.minimumFlakeArea, 100);
    EXPECT_EQ(settings.scoreThreshold, 70.0F);
    EXPECT_TRUE(dialogs.textsSet.empty());
}

/// The pump of one command lets another through.
TEST_F(ContrastTrial, StepsAgainWithinAStep) {
    Open();
    field.onCall = [this](const std::string& call) {
        if (call == "show" && field.calls.size() == 1)
            Press(1009);
    };
    Press(1009);
    EXPECT_EQ(settings.targetContrast[0], -10.0F);
    EXPECT_EQ(Opened().texts[1017], "-10");
    EXPECT_EQ(field.calls.size(), 6U);
}

} // namespace
} // namespace tessaro
