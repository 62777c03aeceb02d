// How the contrast dialog opens, what it shows, its presets, and how it closes.

#include "support/contrast_fixture.h"

#include <tuple>
#include <utility>

namespace tessaro {
namespace {

TEST_F(ContrastDialogTest, IsDialog129AndModalUntilDone) {
    int result = -2;
    dialogs.whileModal = [&](WindowHandle shown) {
        window = shown;
        EXPECT_EQ(Opened().owner, owner);
        Press(1);
        EXPECT_FALSE(Opened().ended) << "\"Set\" leaves it open";
        Press(2);
        EXPECT_TRUE(Opened().ended);
        result = Opened().result;
    };
    dialog.Show(owner);
    EXPECT_EQ(dialogs.modalResources, std::vector<int>{129});
    EXPECT_EQ(result, 0);
    EXPECT_TRUE(dialogs.dialogs.empty());
}

/// They command "Done": they take nothing back, and take no typed text either.
TEST_F(ContrastDialogTest, ClosedByEscapeOrItsCloseButtonKeepsWhatWasChanged) {
    Open();
    Press(1009);
    Type(1018, "33");
    field.calls.clear();
    dialogs.Notify(window, commandCancel, Notification::Clicked);
    EXPECT_TRUE(Opened().ended);
    EXPECT_EQ(settings.targetContrast, (Contrasts{-11.0F, -8.0F, -2.0F}));
    EXPECT_TRUE(field.calls.empty());
}

TEST_F(ContrastDialogTest, AsksForItsResourceOnceAndGoesOnWithoutIt) {
    std::vector<std::string> asked;
    dialogs.onCall = [&](const std::string& call) { asked.push_back(call); };
    dialogs.noResources = true;
    dialog.Show(owner);
    EXPECT_EQ(asked, Texts{"dialog 129"}) << "and asks nobody else instead";
    EXPECT_TRUE(dialogs.textsSet.empty());
    dialogs.noResources = false;
    Open();
    EXPECT_EQ(ContrastTexts(), (Texts{"-12.0", "-8.0", "-2.0", "6.0"})) << "the next time it opens";
}

TEST_F(ContrastDialogTest, ChecksTheButtonOfTheMaterial) {
    for (const auto& [material, button] : {std::pair{0, 1023}, {1, 1024}, {2, 1033}}) {
        settings.material = material;
        Open();
        for (const int other : {1023, 1024, 1033})
            EXPECT_EQ(Opened().checks[other], other == button) << material << ' ' << other;
    }
}

TEST_F(ContrastDialogTest, ChecksNoMaterialOfAProbedPixelOrAnUnknownOne) {
    for (const int material : {4, 3, -1, 1023, 2147483647}) {
        settings.material = material;
        Open();
        for (const int button : {1023, 1024, 1033})
            EXPECT_FALSE(Opened().checks[button]) << material << ' ' << button;
    }
}

TEST_F(ContrastDialogTest, OffersTheSubstratesAndSelectsTheStoredOne) {
    for (const int place : {0, 1, 2}) {
        choices.substrate = place;
        Open();
        EXPECT_EQ(Opened().choices[1034], (Texts{"SiO2 (300nm)", "glass", "sapphire"}));
        EXPECT_EQ(Opened().selected[1034], place);
        EXPECT_EQ(choices.substrate, place) << "filling the list chooses nothing";
    }
}

TEST_F(ContrastDialogTest, ShowsTheSettings) {
    SetContrasts({-12.25F, 8.0F, -0.06F}, 6.77F);
    settings.minimumFlakeArea = -150;
    settings.scoreThreshold = 69.96F;
    FakeDialogs::Dialog& opened = Open();
    EXPECT_EQ(ContrastTexts(), (Texts{"-12.2", "8.0", "-0.1", "6.8"}));
    EXPECT_EQ(opened.texts[1000], "-150");
    EXPECT_EQ(opened.texts[1007], "70.0");
    EXPECT_EQ(settings.scoreThreshold, 69.96F) << "showing rounds nothing";
}

TEST_F(ContrastDialogTest, ShowsWhatWasMeasured) {
    frame.bgPeak = {101.0, 102.0, 203.0};
    measured->noiseLevel = 1.26F;
    focusValue = 12.34F;
    FakeDialogs::Dialog& opened = Open();
    EXPECT_EQ(opened.texts[1003], "101.0");
    EXPECT_EQ(opened.texts[1005], "102.0");
    EXPECT_EQ(opened.texts[1006], "203.0");
    EXPECT_EQ(opened.texts[1012], "1.3");
    EXPECT_EQ(opened.texts[1015], "12.3");
}

TEST_F(ContrastDialogTest, ChecksSmoothingOnlyForOne) {
    EXPECT_FALSE(Open().checks[1013]) << "off from the start";
    choices.smoothing = 1;
    EXPECT_TRUE(Open().checks[1013]);
    choices.smoothing = 2;
    EXPECT_FALSE(Open().checks[1013]);
}

TEST_F(ContrastDialogTest, WorksOnNothingWhenItOpens) {
    SetContrasts({101.0F, 102.0F, 103.0F}, 95.0F);
    choices = {2, 1};
    Open();
    EXPECT_TRUE(field.calls.empty());
    EXPECT_EQ(settings.targetContrast, (Contrasts{101.0F, 102.0F, 103.0F}));
    EXPECT_EQ(settings.contrastTolerance, 95.0F);
    EXPECT_EQ(settings.material, 4);
    EXPECT_EQ(choices.substrate, 2);
    EXPECT_EQ(choices.smoothing, 1);
}

/// On settings of which each would change if a press were taken for another one's.
class ContrastDialogAtRest : public ContrastDialogTest {
protected:
    ContrastDialogAtRest() {
        SetContrasts({-13.5F, 101.0F, 0.25F}, 95.0F); // "Set" would clamp, a preset replace them
        settings.minimumFlakeArea = 77;
        settings.scoreThreshold = 35.5F;
        settings.material = 1;
        choices = {1, 1};
        Open();
    }

    void ExpectNothingDone() {
        EXPECT_TRUE(dialogs.textsSet.empty());
        EXPECT_TRUE(field.calls.empty());
        EXPECT_FALSE(Opened().ended);
        EXPECT_EQ(settings.targetContrast, (Contrasts{-13.5F, 101.0F, 0.25F}));
        EXPECT_EQ(settings.contrastTolerance, 95.0F);
        EXPECT_EQ(settings.minimumFlakeArea, 77);
        EXPECT_EQ(settings.scoreThreshold, 35.5F);
        EXPECT_EQ(settings.material, 1);
        EXPECT_EQ(choices.substrate, 1);
        EXPECT_EQ(choices.smoothing, 1);
    }
};

/// Typed texts wait in the boxes: a press that took them would show.
TEST_F(ContrastDialogAtRest, StaysSoWhateverTheZoomInBoxIs) {
    for (const int edit : {1017, 1018, 1019, 1020, 1000, 1007})
        Type(edit, "55");
    SwitchBox(1004, true);
    ExpectNothingDone();
    SwitchBox(1004, false);
    ExpectNothingDone();
}

/// Also what is typed is taken by a button alone.
TEST_F(ContrastDialogAtRest, StaysSoForTextsThatChangeAndFocusThatMoves) {
    using enum Notification;
    for (const int edit : {1017, 1018, 1019, 1020, 1000, 1007, 1003, 1005, 1006, 1012, 1015}) {
        Type(edit, "55");
        for (const Notification notification : {FocusGained, TextChanged, FocusLost})
            dialogs.Notify(window, edit, notification);
    }
    for (const Notification notification : {ListOpened, SelectionChanged, ListClosed})
        dialogs.Notify(window, 1034, notification);
    for (const int unknown : {0, 3, -1, 1001, 1002, 1014, 1021, 1022, 1025, 1029, 1049, 1052, 32788})
        Press(unknown);
    ExpectNothingDone();
}

class ChosenMaterial : public ContrastDialogTest {
protected:
    ChosenMaterial() { SetContrasts({1.126F, 2.0F, 3.0F}, 4.0F); }

    const Texts unchanged = {"1.13", "2.00", "3.00", "4.00"};
};

TEST_F(ChosenMaterial, LoadsItsPresetOnTheSubstrate) {
    Open();
    Press(1024);
    EXPECT_EQ(settings.material, 1);
    EXPECT_EQ(settings.targetContrast, (Contrasts{-20.0F, 17.0F, 3.0F}));
    EXPECT_EQ(settings.contrastTolerance, 10.0F);
    EXPECT_EQ(ContrastTexts(), (Texts{"-20.00", "17.00", "3.00", "10.00"}));
    Press(1033);
    EXPECT_EQ(settings.material, 2);
    EXPECT_EQ(ContrastTexts(), (Texts{"-80.00", "20.00", "0.00", "20.00"}));
    Press(1023);
    EXPECT_EQ(settings.material, 0);
    EXPECT_EQ(ContrastTexts(), (Texts{"-12.00", "-8.00", "-2.00", "6.00"}));
    EXPECT_TRUE(field.calls.empty()) << "and nothing is looked for";
}

TEST_F(ChosenMaterial, LoadsItsPresetAnewWhenItIsChosenAgain) {
    settings.material = 0;
    Open();
    Press(1023);
    EXPECT_EQ(settings.targetContrast, (Contrasts{-12.0F, -8.0F, -2.0F}));
    EXPECT_EQ(settings.contrastTolerance, 6.0F);
}

TEST_F(ChosenMaterial, OnAPairWithoutAPresetKeepsTheContrastsAndShowsThemAnew) {
    for (const auto& [button, material, place] : {std::tuple{1023, 0, 1},
                                                  {1023, 0, 2},
                                                  {1024, 1, 2}, // hBN on sapphire
                                                  {1033, 2, 1},
                                                  {1033, 2, 2}}) {
        choices.substrate = place;
        Open();
        Press(button);
        EXPECT_EQ(settings.material, material);
        EXPECT_EQ(settings.targetContrast, (Contrasts{1.126F, 2.0F, 3.0F})) << material << " on " << place;
        EXPECT_EQ(settings.contrastTolerance, 4.0F) << material << " on " << place;
        EXPECT_EQ(ContrastTexts(), unchanged) << material << " on " << place;
    }
}

class ChosenSubstrate : public ChosenMaterial {};

TEST_F(ChosenSubstrate, GlassUnderGrapheneKeepsTheContrastsButShowsThemWithTwoDecimals) {
    settings.material = 0;
    Open();
    EXPECT_EQ(ContrastTexts(), (Texts{"1.1", "2.0", "3.0", "4.0"}));
    ChooseSubstrate(1);
    EXPECT_EQ(choices.substrate, 1);
    EXPECT_EQ(settings.targetContrast, (Contrasts{1.126F, 2.0F, 3.0F}));
    EXPECT_EQ(ContrastTexts(), unchanged);
}

TEST_F(ChosenSubstrate, SapphireUnderBoronNitrideHasNoPreset) {
    settings.material = 1;
    choices.substrate = 1;
    Open();
    ChooseSubstrate(2);
    EXPECT_EQ(choices.substrate, 2);
    EXPECT_EQ(ContrastTexts(), unchanged);
}

TEST_F(ChosenSubstrate, LoadsThePresetOfTheMaterial) {
    settings.material = 1;
    Open();
    ChooseSubstrate(1);
    EXPECT_EQ(settings.targetContrast, (Contrasts{3.0F, 6.0F, 9.0F}));
    EXPECT_EQ(settings.contrastTolerance, 5.0F);
    EXPECT_EQ(ContrastTexts(), (Texts{"3.00", "6.00", "9.00", "5.00"}));
    ChooseSubstrate(0);
    EXPECT_EQ(ContrastTexts(), (Texts{"-20.00", "17.00", "3.00", "10.00"}));
    EXPECT_TRUE(field.calls.empty());
}

TEST_F(ChosenSubstrate, HasNoPresetForAProbedPixel) {
    Open();
    for (const int place : {1, 2, 0}) {
        ChooseSubstrate(place);
        EXPECT_EQ(choices.substrate, place);
        EXPECT_EQ(settings.material, 4);
        EXPECT_EQ(settings.targetContrast, (Contrasts{1.126F, 2.0F, 3.0F})) << place;
        EXPECT_EQ(settings.contrastTolerance, 4.0F) << place;
    }
}

TEST_F(ChosenSubstrate, IsNoticedByAnyCommandWhichThenDoesNothingElse) {
    settings.material = 1;
    for (const int control : {1009, 1010, 1050, 1011, 1016, 1051, 1027, 1026, 1023, 1033, 1013, 1028, 1008, 1,
                              2, 1004, 1017, 9999}) {
        SetContrasts({1.0F, 2.0F, 3.0F}, 4.0F);
        choices.substrate = 0;
        Open();
        Type(1000, "7");
        dialogs.SelectChoice(window, 1034, 1); // not notified yet
        dialogs.SetChecked(window, 1013, true);
        Press(control);
        EXPECT_EQ(choices.substrate, 1) << control;
        EXPECT_EQ(ContrastTexts(), (Texts{"3.00", "6.00", "9.00", "5.00"})) << control;
        EXPECT_EQ(settings.material, 1) << control;
        EXPECT_EQ(settings.minimumFlakeArea, 100) << control;
        EXPECT_EQ(choices.smoothing, 0) << control;
        EXPECT_TRUE(field.calls.empty()) << control;
        EXPECT_FALSE(Opened().ended) << control;
    }
}

TEST_F(ChosenSubstrate, LetsTheNextCommandDoItsOwn) {
    Open();
    dialogs.SelectChoice(window, 1034, 1);
    Press(2);
    EXPECT_FALSE(Opened().ended);
    Press(2);
    EXPECT_TRUE(Opened().ended);
}

/// Writing the contrasts notifies the dialog in the middle of it.
TEST_F(ChosenSubstrate, IsTakenOnce) {
    Open();
    ChooseSubstrate(1);
    EXPECT_EQ(dialogs.TextsOf(1017), Texts{"1.13"});
    EXPECT_EQ(dialogs.TextsOf(1020), Texts{"4.00"});
}

TEST_F(ChosenSubstrate, IsTheOldOneWhereNoneIsSelected) {
    choices.substrate = 1;
    Open();
    ChooseSubstrate(-1);
    EXPECT_EQ(choices.substrate, 1);
    EXPECT_TRUE(dialogs.textsSet.empty());
    Press(2);
    EXPECT_TRUE(Opened().ended) << "and the commands act";
}

TEST_F(ChosenSubstrate, IsSelectedWhenTheDialogOpensAgain) {
    Open();
    ChooseSubstrate(2);
    Close();
    EXPECT_EQ(Open().selected[1034], 2);
}

} // namespace
} // namespace tessaro
