// The contrast dialog in the hands of somebody who presses and types anything.

#include "support/contrast_fixture.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <random>

namespace tessaro {
namespace {

class RandomOperator : public ContrastDialogTest, public testing::WithParamInterface<std::uint32_t> {
protected:
    RandomOperator() { Open(); }

    int Below(std::size_t end) { return static_cast<int>(m_random() % end); }
    template<typename List>
    auto OneOf(const List& list) {
        return list[static_cast<std::size_t>(Below(list.size()))];
    }

    std::string RandomText() {
        std::string text;
        for (int pieces = Below(7); pieces > 0; --pieces)
            text += OneOf(m_pieces);
        return text;
    }

    /// Of some of them the dialog learns, of others only when the next command comes.
    void PrepareSomething() {
        Type(OneOf(m_edits), RandomText());
        dialogs.SetItemText(window, OneOf(m_edits), RandomText());
        dialogs.SetChecked(window, 1013, Below(2) == 0);
        if (Below(8) == 0)
            dialogs.SelectChoice(window, 1034, Below(5) - 1); // 3 is none, as -1 is
        if (Below(8) == 0)
            ChooseSubstrate(Below(3));
        if (Below(50) == 0) {
            Close();
            Open();
        }
    }

    void ExpectAllowed() {
        EXPECT_TRUE(settings.material == 4 || (settings.material >= 0 && settings.material <= 2));
        EXPECT_TRUE(choices.substrate >= 0 && choices.substrate <= 2);
        EXPECT_TRUE(choices.smoothing == 0 || choices.smoothing == 1);
        for (const float contrast : settings.targetContrast)
            EXPECT_TRUE(std::isfinite(contrast));
        EXPECT_TRUE(std::isfinite(settings.contrastTolerance));
        EXPECT_TRUE(std::isfinite(settings.scoreThreshold));
    }

    /// Behind "Set".
    void ExpectClamped(const Settings& before) {
        float largest = 0.0F;
        for (std::size_t channel = 0; channel < 3; ++channel) {
            const float contrast = settings.targetContrast[channel];
            EXPECT_TRUE(std::fabs(contrast) <= 100.0F || contrast == before.targetContrast[channel]);
            largest = std::max(largest, std::fabs(contrast));
        }
        const float tolerance = settings.contrastTolerance;
        EXPECT_TRUE((tolerance >= 0.0F && tolerance <= largest) || tolerance == before.contrastTolerance);
    }

    /// What one press did, where no new substrate came first.
    void ExpectOwnWorkOf(int control, const Settings& before) {
        const bool isMaterial = control == 1023 || control == 1024 || control == 1033;
        EXPECT_TRUE(isMaterial || settings.material == before.material);
        EXPECT_TRUE(control == 1 || settings.minimumFlakeArea == before.minimumFlakeArea);
        EXPECT_TRUE(control == 1 || settings.scoreThreshold == before.scoreThreshold);
        if (control == 1)
            ExpectClamped(before);
        const bool isToleranceStep = control == 1027 || control == 1026;
        EXPECT_TRUE(!isToleranceStep ||
                    (settings.contrastTolerance >= 0.0F && settings.contrastTolerance <= 90.0F));
        EXPECT_EQ(field.calls, WorkOf(control));
        EXPECT_EQ(Opened().ended, control == 2);
    }

    Texts WorkOf(int control) const {
        switch (control) {
        case 1009: // the contrasts' and the tolerance's steps
        case 1010:
        case 1050:
        case 1011:
        case 1016:
        case 1051:
        case 1027:
        case 1026:
            return quickly;
        case 1013: // smoothing
        case 1008: // "Test now"
            return inFull;
        case 1028: // "Image refresh"
            return {"statistics", "show"};
        default:
            return {};
        }
    }

    /// Every control, some that have no meaning, and ids of nothing.
    int RandomControl() { return OneOf(m_controls); }

private:
    static constexpr std::array<int, 11> m_edits = {1017, 1018, 1019, 1020, 1000, 1007,
                                                    1003, 1005, 1006, 1012, 1015};
    static constexpr std::array<int, 34> m_controls = {
        1023, 1024, 1033, 1034, 1009, 1010, 1050, 1011, 1016, 1051, 1020, 1027, 1026, 1000, 1007, 1012, 1015,
        1013, 1004, 1028, 1008, 1,    1,    1,    2,    1017, 1018, 1019, 1003, 1005, 1006, 0,    -1,   9999};
    const Texts m_pieces = {
        "0", "7",   "12",  "100", "99999", ".",  ".5", "-",      "-",  "+",
        "e", "E38", "nan", "inf", " ",     "\t", ",",  "%",      "x",  "",
        "",  "",    "0x1", "é",   "µ",     "-3", "--", "(1)nan", "\n", std::string(1, '\0')};
    std::mt19937 m_random{GetParam()};
};

TEST_P(RandomOperator, LeavesNothingThatIsNotAllowed) {
    for (int i = 0; i < 4000 && !HasFailure(); ++i) {
        PrepareSomething();
        const int chosen = dialogs.SelectedChoice(window, 1034);
        const bool newSubstrate = chosen >= 0 && chosen != choices.substrate;
        const Settings before = settings;
        const int control = RandomControl();
        Opened().ended = false;
        field.calls.clear();
        Press(control);
        SCOPED_TRACE(std::to_string(control) + " as command " + std::to_string(i));
        ExpectAllowed();
        if (newSubstrate) {
            EXPECT_TRUE(field.calls.empty() && !Opened().ended && choices.substrate == chosen);
        } else {
            ExpectOwnWorkOf(control, before);
        }
    }
}

/// Commands come while others are carried out, and the dialog goes away under them.
TEST_P(RandomOperator, HarmsNothingInTheMiddleOfCommands) {
    field.onCall = [this](const std::string&) {
        if (Below(6) == 0)
            Press(RandomControl());
        if (Below(30) == 0)
            Close();
    };
    for (int i = 0; i < 4000 && !HasFailure(); ++i) {
        if (!dialogs.dialogs.contains(window))
            Open();
        PrepareSomething();
        field.calls.clear();
        dialogs.textsSet.clear();
        Press(RandomControl());
        ExpectAllowed();
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomOperator, testing::Values(1U, 2U, 3U, 4U, 5U));

} // namespace
} // namespace tessaro
