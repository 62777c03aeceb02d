#include "scan/control_panel_ids.h"
#include "support/scan_fixture.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <tuple>
#include <utility>

namespace tessaro {
namespace {

/// The ranges follow what is typed, whatever happens in the panel next.
class TypedRanges : public ControlPanelTest {
protected:
    TypedRanges() { dialog = &Open(); }

    /// As the operator types, before anything is notified.
    void TypeUnnoticed(const std::string& x, const std::string& y) {
        dialog->texts[1012] = x;
        dialog->texts[1015] = y;
    }
    std::pair<int, int> Ranges() const { return {settings.xRange, settings.yRange}; }
    void SetRanges(int x, int y) { std::tie(settings.xRange, settings.yRange) = std::pair{x, y}; }

    FakeDialogs::Dialog* dialog;
};

TEST_F(TypedRanges, AreTakenByAnyControlAndAnyNotification) {
    using enum Notification;
    for (const auto& [control, notification] : {std::pair{1006, FocusGained},
                                                {1007, FocusLost},
                                                {1000, TextChanged},
                                                {1032, Clicked},
                                                {1004, Clicked},
                                                {1011, Clicked},
                                                {9999, Clicked},
                                                {1012, FocusLost}}) {
        SetRanges(1, 2);
        TypeUnnoticed("17", "-23");
        dialogs.Notify(windows.controlPanel, control, notification);
        EXPECT_EQ(Ranges(), (std::pair{17, -23})) << control;
    }
}

TEST_F(TypedRanges, AreTakenAsTheyAreTyped) {
    Type(1012, "4");
    EXPECT_EQ(Ranges(), (std::pair{4, 10}));
    Type(1015, "5");
    EXPECT_EQ(Ranges(), (std::pair{4, 5}));
}

TEST_F(TypedRanges, AreTakenWhenAStatusTextChanges) {
    TypeUnnoticed("17", "23");
    status.ShowInformation("something");
    EXPECT_EQ(Ranges(), (std::pair{17, 23}));
}

TEST_F(TypedRanges, AreTakenBeforeTheButtonActs) {
    TypeUnnoticed("3", "4");
    Press(1008);
    EXPECT_EQ(arriving.Commands(), (Texts{"M0", "m4800"}));
}

TEST_F(TypedRanges, AreTakenBeforeThePanelCloses) {
    TypeUnnoticed("3", "4");
    Press(2);
    EXPECT_EQ(Ranges(), (std::pair{3, 4}));
}

TEST_F(TypedRanges, StayWhereTheTextIsNoNumber) {
    for (const char* text : {"", " ", "x", "-", "x1", ".5", "99999999999", "+-3"}) {
        SetRanges(6, 7);
        TypeUnnoticed(text, text);
        Press(1032);
        EXPECT_EQ(Ranges(), (std::pair{6, 7})) << text;
    }
    TypeUnnoticed("", "8");
    Press(1032);
    EXPECT_EQ(Ranges(), (std::pair{6, 8})) << "each for itself";
    EXPECT_TRUE(ui.boxes.warnings.empty());
}

TEST_F(TypedRanges, AreWhatTheTextBeginsWith) {
    TypeUnnoticed(" 12 mm", "+3.9");
    Press(1032);
    EXPECT_EQ(Ranges(), (std::pair{12, 3}));
}

TEST_F(TypedRanges, AreReadFromTenCharacters) {
    TypeUnnoticed("00000000012", "0000000034");
    Press(1032);
    EXPECT_EQ(Ranges(), (std::pair{1, 34}));
}

TEST_F(TypedRanges, CanBeNothingAndLessThanNothing) {
    TypeUnnoticed("0", "-5");
    Press(1032);
    EXPECT_EQ(Ranges(), (std::pair{0, -5}));
}

/// Writing X would otherwise make the panel take the Y that it still shows.
TEST_F(TypedRanges, AreNotTakenInTheMiddleOfShowingNewOnes) {
    SetRanges(30, 40);
    panel.ShowRanges();
    EXPECT_EQ(Ranges(), (std::pair{30, 40}));
    EXPECT_EQ(dialog->texts[1012], "30");
    EXPECT_EQ(dialog->texts[1015], "40");
}

TEST_F(TypedRanges, AreNotWhatTheirBoxesCannotTell) {
    const int least = std::numeric_limits<std::int32_t>::min(); // eleven characters
    SetRanges(least, least);
    panel.ShowRanges();
    EXPECT_EQ(Ranges(), (std::pair{least, least}));
    Press(1032);
    EXPECT_EQ(Ranges(), (std::pair{-214748364, -214748364})) << "until something happens";
}

TEST_F(TypedRanges, AreThoseOfTheSettingsWhenThePanelOpensAgain) {
    panel.Close();
    SetRanges(30, 40);
    dialog = &Open();
    EXPECT_EQ(Ranges(), (std::pair{30, 40}));
    EXPECT_EQ(dialog->texts[1012], "30");
    EXPECT_EQ(dialog->texts[1015], "40");
}

TEST_F(TypedRanges, AreNotLookedAtWhileThePanelIsClosed) {
    TypeUnnoticed("3", "4");
    panel.Close();
    status.ShowInformation("something");
    EXPECT_EQ(Ranges(), (std::pair{10, 10}));
}

} // namespace
} // namespace tessaro
