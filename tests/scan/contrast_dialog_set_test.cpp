// What "Set" takes from the contrast dialog, and which texts are numbers.

#include "support/contrast_fixture.h"

#include <string>
#include <tuple>
#include <utility>

namespace tessaro {
namespace {

class ContrastsSet : public ContrastDialogTest {
protected:
    ContrastsSet() { Open(); }
};

TEST_F(ContrastsSet, AreTakenWithAreaThresholdAndTolerance) {
    Type(1000, "250");
    Type(1007, "55.5");
    TypeContrasts("-21.25", "17", "3.5");
    Type(1020, "9.75");
    Press(1);
    EXPECT_EQ(settings.minimumFlakeArea, 250);
    EXPECT_EQ(settings.scoreThreshold, 55.5F);
    EXPECT_EQ(settings.targetContrast, (Contrasts{-21.25F, 17.0F, 3.5F}));
    EXPECT_EQ(settings.contrastTolerance, 9.75F);
    EXPECT_TRUE(field.calls.empty()) << "nothing is looked for";
    EXPECT_FALSE(Opened().ended);
}

TEST_F(ContrastsSet, AreShownAgainInTheirOrderAndAreaAndThresholdAreNot) {
    Type(1000, "+250x");
    Type(1007, "55.55");
    TypeContrasts("-21.25", "17", "3.5");
    Type(1020, "9.75");
    Press(1);
    EXPECT_EQ(dialogs.textsSet, (std::vector<std::pair<int, std::string>>{
                                    {1017, "-21.2"}, {1018, "17.0"}, {1019, "3.5"}, {1020, "9.8"}}));
    EXPECT_EQ(Opened().texts[1000], "+250x");
    EXPECT_EQ(Opened().texts[1007], "55.55");
}

TEST_F(ContrastsSet, AreBroughtBetweenMinus100And100EachForItself) {
    TypeContrasts("100.1", "-100.1", "1e30");
    Press(1);
    EXPECT_EQ(settings.targetContrast, (Contrasts{100.0F, -100.0F, 100.0F}));
    EXPECT_EQ(ContrastTexts(), (Texts{"100.0", "-100.0", "100.0", "6.0"}));
    TypeContrasts("-1e30", "100", "-100");
    Press(1);
    EXPECT_EQ(settings.targetContrast, (Contrasts{-100.0F, 100.0F, -100.0F}));
    TypeContrasts("-99.9", "99.9", "0");
    Press(1);
    EXPECT_EQ(settings.targetContrast, (Contrasts{-99.9F, 99.9F, 0.0F}));
}

TEST_F(ContrastsSet, AreShownAnewWhereTheTextIsNoNumber) {
    TypeContrasts("", "x", "-");
    Press(1);
    EXPECT_EQ(settings.targetContrast, (Contrasts{-12.0F, -8.0F, -2.0F}));
    EXPECT_EQ(ContrastTexts(), (Texts{"-12.0", "-8.0", "-2.0", "6.0"}));
}

/// Only what is typed is clamped.
TEST_F(ContrastsSet, BeyondTheirBoundsStayWhereTheTextIsNoNumber) {
    SetContrasts({130.0F, -140.0F, 150.0F}, 6.0F);
    TypeContrasts("", "x", "120");
    Press(1);
    EXPECT_EQ(settings.targetContrast, (Contrasts{130.0F, -140.0F, 100.0F}));
    EXPECT_EQ(ContrastTexts(), (Texts{"130.0", "-140.0", "100.0", "6.0"}));
}

TEST_F(ContrastsSet, LeaveAreaAndThresholdWhereTheyAreNoNumbersAndTakeAnyOther) {
    Type(1000, "");
    Type(1007, ".");
    Press(1);
    EXPECT_EQ(settings.minimumFlakeArea, 100);
    EXPECT_EQ(settings.scoreThreshold, 70.0F);
    Type(1000, "-5.9");
    Type(1007, "-1000");
    Press(1);
    EXPECT_EQ(settings.minimumFlakeArea, -5);
    EXPECT_EQ(settings.scoreThreshold, -1000.0F);
}

/// The first contrast is written while the others still have to be read.
TEST_F(ContrastsSet, AreAllTakenAsTheyWereTyped) {
    settings.material = 0;
    TypeContrasts("1", "2", "3");
    Press(1);
    EXPECT_EQ(settings.targetContrast, (Contrasts{1.0F, 2.0F, 3.0F}));
    EXPECT_EQ(settings.material, 0) << "a material keeps its name with other contrasts";
}

TEST_F(ContrastsSet, RoundedByTheirShowingAreWhatIsTakenNext) {
    TypeContrasts("-21.26", "17", "3");
    Press(1);
    EXPECT_EQ(settings.targetContrast[0], -21.26F);
    Press(1);
    EXPECT_EQ(settings.targetContrast[0], -21.3F);
}

class ToleranceSet : public ContrastsSet {
protected:
    float Set(const std::string& text) {
        Type(1020, text);
        Press(1);
        return settings.contrastTolerance;
    }
};

TEST_F(ToleranceSet, To20WithContrastsOfMinus12Minus8AndMinus2Is12) {
    EXPECT_EQ(Set("20"), 12.0F);
    EXPECT_EQ(Opened().texts[1020], "12.0");
}

TEST_F(ToleranceSet, IsAtMostTheLargestOfTheThreeWhicheverItIs) {
    for (const auto& [red, green, blue, largest] : {std::tuple{"30", "-8", "-2", 30.0F},
                                                    {"-1", "31", "-2", 31.0F},
                                                    {"-1", "-32", "2", 32.0F},
                                                    {"5", "6", "33", 33.0F},
                                                    {"5", "6", "-34", 34.0F}}) {
        TypeContrasts(red, green, blue);
        EXPECT_EQ(Set("50"), largest);
    }
}

TEST_F(ToleranceSet, IsBoundByTheNewContrastsAsTheyAreClamped) {
    TypeContrasts("4", "3", "-2");
    EXPECT_EQ(Set("6"), 4.0F) << "not by the old -12";
    TypeContrasts("500", "3", "-2");
    EXPECT_EQ(Set("300"), 100.0F);
}

TEST_F(ToleranceSet, MayBeMoreThan90) {
    TypeContrasts("99", "3", "-2");
    EXPECT_EQ(Set("95"), 95.0F) << "which its button would not reach";
}

TEST_F(ToleranceSet, IsAtLeast0) {
    EXPECT_EQ(Set("-3"), 0.0F);
    EXPECT_EQ(Opened().texts[1020], "0.0");
    TypeContrasts("0", "0", "0");
    EXPECT_EQ(Set("3"), 0.0F) << "and nothing more without a contrast";
}

TEST_F(ToleranceSet, ThatIsEmptyStaysAndIsNotShownAgain) {
    settings.contrastTolerance = 50.0F;
    EXPECT_EQ(Set(""), 50.0F);
    EXPECT_EQ(Opened().texts[1020], "");
    EXPECT_TRUE(dialogs.TextsOf(1020).empty());
    EXPECT_EQ(dialogs.TextsOf(1019), Texts{"-2.0"}) << "the contrasts are";
}

TEST_F(ToleranceSet, ThatIsNoNumberStaysBeyondItsBoundsAndIsShownAgain) {
    settings.contrastTolerance = 50.0F;
    for (const char* text : {"x", " ", "-"}) {
        EXPECT_EQ(Set(text), 50.0F) << text;
        EXPECT_EQ(Opened().texts[1020], "50.0") << text;
    }
}

/// Hands everything on, and takes the dialog away when green is shown.
class LeavingAtGreen : public DialogProcedure {
public:
    LeavingAtGreen(DialogProcedure& dialog, FakeDialogs& dialogs) : m_dialog(dialog), m_dialogs(dialogs) {}

    void Initialize(WindowHandle window) override { m_dialog.Initialize(window); }
    void Command(WindowHandle window, int controlId, Notification notification) override {
        m_dialog.Command(window, controlId, notification);
        if (controlId == 1018)
            m_dialogs.DestroyModeless(window);
    }

private:
    DialogProcedure& m_dialog;
    FakeDialogs& m_dialogs;
};

TEST_F(ToleranceSet, StaysWithBlueWhereTheDialogGoesAwayInTheMiddle) {
    LeavingAtGreen leaving(dialog, dialogs);
    Opened().procedure = &leaving;
    TypeContrasts("1", "2", "3");
    Type(1020, "0.5");
    Press(1);
    EXPECT_FALSE(dialogs.dialogs.contains(window));
    EXPECT_EQ(settings.targetContrast, (Contrasts{1.0F, 2.0F, -2.0F}));
    EXPECT_EQ(settings.contrastTolerance, 6.0F);
}

struct TypedText {
    const char* name;
    std::string text;
    float expected; // 4711 where it is no number
};

constexpr float noNumber = 4711.0F;

class TypedContrast : public ContrastDialogTest, public testing::WithParamInterface<TypedText> {
protected:
    TypedContrast() {
        SetContrasts({noNumber, noNumber, noNumber}, noNumber);
        settings.scoreThreshold = noNumber;
        Open();
    }
};

TEST_P(TypedContrast, IsTestedAsTheNumberThatItBeginsWith) {
    const std::string& text = GetParam().text;
    TypeContrasts(text, text, text);
    Type(1020, text);
    Press(1008);
    const float expected = GetParam().expected;
    EXPECT_EQ(settings.targetContrast, (Contrasts{expected, expected, expected}));
    EXPECT_EQ(settings.contrastTolerance, expected);
}

TEST_P(TypedContrast, IsSetAlikeAsAThreshold) {
    Type(1007, GetParam().text);
    Press(1);
    EXPECT_EQ(settings.scoreThreshold, GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Numbers, TypedContrast,
    testing::Values(TypedText{"Plain", "5", 5.0F}, TypedText{"Fraction", "-5.25", -5.25F},
                    TypedText{"PointFirst", ".5", 0.5F}, TypedText{"PointLast", "5.", 5.0F},
                    TypedText{"BlankBefore", " 5", 5.0F}, TypedText{"TabBefore", "\t5", 5.0F},
                    TypedText{"Plus", "+7", 7.0F}, TypedText{"UnitBehind", "-12.5%", -12.5F},
                    TypedText{"Exponent", "1.5e2", 150.0F}, TypedText{"UnfinishedExponent", "7e", 7.0F},
                    TypedText{"Hexadecimal", "0x10", 0.0F}, TypedText{"DecimalComma", "3,7", 3.0F},
                    TypedText{"TwoPoints", "1.2.3", 1.2F},
                    TypedText{"TenCharacters", "12.3456789", 12.3456789F},
                    TypedText{"EleventhCharacter", "00000000123", 12.0F},
                    TypedText{"ExponentBehindTen", "1.00000000e2", 1.0F},
                    TypedText{"CutCharacter", "123456789\u00e9", 123456789.0F},
                    TypedText{"Largest", "3.402e38", 3.402e38F}),
    [](const auto& text) { return std::string(text.param.name); });

INSTANTIATE_TEST_SUITE_P(
    NoNumbers, TypedContrast,
    testing::Values(
        TypedText{"Empty", "", noNumber}, TypedText{"Blank", " ", noNumber},
        TypedText{"TenBlanksBefore", "          5", noNumber}, TypedText{"Letter", "x5", noNumber},
        TypedText{"MinusAlone", "-", noNumber}, TypedText{"PlusAlone", "+", noNumber},
        TypedText{"PointAlone", ".", noNumber}, TypedText{"CommaFirst", ",5", noNumber},
        TypedText{"TwoSigns", "+-5", noNumber}, TypedText{"BlankBehindSign", "- 5", noNumber},
        TypedText{"TrueMinusSign", "\u22125", noNumber}, TypedText{"TooLarge", "1e99", noNumber},
        TypedText{"TooSmall", "-1e99", noNumber}, TypedText{"TooClose", "1e-99", noNumber},
        TypedText{"NotANumber", "nan", noNumber}, TypedText{"NegativeNotANumber", "-NaN", noNumber},
        TypedText{"NotANumberInBrackets", "nan(1)", noNumber}, TypedText{"Infinite", "inf", noNumber},
        TypedText{"MinusInfinite", "-INFINITY", noNumber}),
    [](const auto& text) { return std::string(text.param.name); });

struct TypedArea {
    const char* name;
    std::string text;
    std::int32_t expected; // 4711 where it is no number
};

class TypedFlakeArea : public ContrastDialogTest, public testing::WithParamInterface<TypedArea> {};

TEST_P(TypedFlakeArea, IsSetAsTheWholeNumberThatItBeginsWith) {
    settings.minimumFlakeArea = 4711;
    Open();
    Type(1000, GetParam().text);
    Press(1);
    EXPECT_EQ(settings.minimumFlakeArea, GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Texts, TypedFlakeArea,
    testing::Values(TypedArea{"Plain", "250", 250}, TypedArea{"Zero", "0", 0},
                    TypedArea{"Negative", "-3", -3}, TypedArea{"Plus", "+7", 7},
                    TypedArea{"BlankBefore", " 5", 5}, TypedArea{"Fraction", "12.9", 12},
                    TypedArea{"DecimalComma", "12,9", 12}, TypedArea{"Exponent", "1e3", 1},
                    TypedArea{"Hexadecimal", "0x10", 0}, TypedArea{"UnitBehind", "80 um2", 80},
                    TypedArea{"TenCharacters", "2147483647", 2147483647},
                    TypedArea{"EleventhCharacter", "00000000123", 12},
                    TypedArea{"TooLarge", "2147483648", 4711}, TypedArea{"Empty", "", 4711},
                    TypedArea{"Letter", "x", 4711}, TypedArea{"MinusAlone", "-", 4711},
                    TypedArea{"PointFirst", ".5", 4711}, TypedArea{"NotANumber", "nan", 4711}),
    [](const auto& text) { return std::string(text.param.name); });

} // namespace
} // namespace tessaro
