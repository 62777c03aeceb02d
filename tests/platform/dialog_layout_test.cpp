// Every dialog as it is laid out, on small and large desktops: what fits, what the keyboard reaches and how.

#include "tests/platform/dialog_layout.h"
#include "tests/platform/operator_input.h"
#include "tests/platform/qt_machine.h"
#include "tests/platform/recording_procedures.h"
#include "tests/support/contrast_places.h"

#include <QAccessible>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QRadioButton>

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>
#include <tuple>
#include <vector>

namespace tessaro {
namespace {

using namespace dialog_layout;

constexpr int none = 0;

struct Expected {
    int defaultButton = none;
    std::vector<int> tabStops;         // the first has the focus when the dialog opens
    std::map<std::string, int> labels; // the control that each belongs to
};

const std::map<int, Expected> expected = {
    {103, {1, {1}, {}}},
    {129,
     {1,
      {1024, 1034, 1017, 1018, 1019, 1020, 1009, 1010, 1050, 1011, 1016,
       1051, 1027, 1026, 1000, 1007, 1013, 1004, 1028, 1008, 1,    2},
      {{"Background Intensity:", 1003},
       {"Constrast for Zarnik:", 1017},
       {"Red", 1017},
       {"Green", 1018},
       {"Blue", 1019},
       {"Tolerance", 1020},
       {"Size  >", 1000},
       {"Score Threshold", 1007},
       {"Noise Level", 1012},
       {"Focus", 1015}}}},
    {130,
     {1,
      {1007, 1012, 1009, 1008, 1005, 1006, 1014, 1010, 1015, 1011, 1050, 1016, 1000, 1026, 1, 2},
      {{"X:", 1007}, {"Y:", 1012}, {"X", 1005}, {"Y", 1006}}}},
    {137,
     {none,
      {1002, 1021, 1022, 1027, 1042, 1029, 1011, 1012, 1015, 1010,
       1008, 1009, 1026, 1004, 1016, 1024, 1023, 1013, 1014, 1032},
      {{"X: (um)", 1002},
       {"Y: (um)", 1021},
       {"Z: (um)", 1022},
       {"X range (mm)", 1012},
       {"Y range (mm)", 1015},
       {"by Origin", 1019},
       {"by X max", 1017},
       {"by Y max", 1018},
       {"X tilt", 1035},
       {"Y tilt", 1040},
       {"Total found", 1041},
       {"Information:", 1006},
       {"Progress:", 1007},
       {"Laplace S", 1020},
       {"Laplace M", 1001},
       {"Modifed L", 1036},
       {"Deviation", 1037},
       {"Focus", 1038},
       {"EdgeShp", 1039}}}},
    {141, {none, {1000, 1008, 1009, 1, 2}, {{"XYZ-stage COM Port #", 1000}, {"Camera", 1009}}}}};

/// The "&" marks the letter behind it and is not drawn.
int WithoutKeyMark(QString text, const QFontMetrics& letters) {
    return letters.horizontalAdvance(text.remove('&'));
}

/// One dialog with its widest texts in it.
class ShownDialog {
public:
    explicit ShownDialog(int resource, double letters = 1) : m_resource(resource) {
        EnlargeLetters(letters);
        m_procedure.onInitialize = [this](WindowHandle dialog) { Fill(dialog); };
        m_machine.ui.dialogs.ShowModeless(
            m_machine.ui.dialogs.CreateModeless(resource, WindowHandle::None, m_procedure));
        m_widget = QtMachine::TopLevel(TitleOf(resource));
        if (resource == 137)
            m_widget->resize(panelWidth, panelHeight); // so that nothing is scrolled
        m_machine.DispatchAll();
    }

    QtMachine& Machine() { return m_machine; }
    QWidget& Widget() { return *m_widget; }

private:
    void Fill(WindowHandle dialog) {
        for (const auto& [id, texts] : WidestTextsOf(m_resource))
            m_machine.ui.dialogs.SetItemText(dialog, id, texts.front());
        if (m_resource != 129)
            return;
        for (const char* substrate : {"SiO2 (300nm)", "glass", "sapphire"})
            m_machine.ui.dialogs.AddChoice(dialog, 1034, substrate);
        m_machine.ui.dialogs.SelectChoice(dialog, 1034, 0);
        m_machine.ui.dialogs.SetChecked(dialog, 1024, true);
    }

    int m_resource;
    QtMachine m_machine;
    RecordingDialogProcedure m_procedure;
    QWidget* m_widget = nullptr;
};

class DialogLayout : public testing::TestWithParam<int> {
protected:
    ShownDialog shown{GetParam()};
    const Expected& asExpected = expected.at(GetParam());
};

TEST_P(DialogLayout, LeadsTheTabKeyThroughWhatCanBeDoneInTheOrderOfReading) {
    EXPECT_EQ(TabStops(shown.Machine()), asExpected.tabStops);
}

TEST_P(DialogLayout, MarksTheButtonThatEnterPresses) {
    std::vector<int> marked;
    for (const QPushButton* button : shown.Widget().findChildren<QPushButton*>())
        if (button->isDefault())
            marked.push_back(button->property("controlId").toInt());
    EXPECT_EQ(marked,
              asExpected.defaultButton == none ? std::vector<int>() : std::vector{asExpected.defaultButton});
}

TEST_P(DialogLayout, SelectsTheTextThatTheFirstKeysReplace) {
    const auto* edit = qobject_cast<QLineEdit*>(QApplication::focusWidget());
    EXPECT_TRUE(edit == nullptr || edit->selectedText() == edit->text());
}

TEST_P(DialogLayout, TellsWhichControlEachLabelIsAbout) {
    for (const auto& [text, id] : asExpected.labels) {
        const QLabel* label = LabelOf(shown.Widget(), text);
        ASSERT_NE(label, nullptr) << text;
        ASSERT_NE(label->buddy(), nullptr) << text;
        EXPECT_EQ(label->buddy()->property("controlId").toInt(), id) << text;
    }
}

TEST_P(DialogLayout, NamesEveryControlApartForAScreenReader) {
    std::multiset<std::string> names;
    for (QWidget* widget : shown.Widget().findChildren<QWidget*>())
        if (widget->property("controlId").isValid() && !widget->inherits("QAbstractItemView"))
            names.insert(
                QAccessible::queryAccessibleInterface(widget)->text(QAccessible::Name).toStdString());
    EXPECT_EQ(names.count(""), 0U);
    for (const std::string& name : names)
        EXPECT_EQ(names.count(name), 1U) << name;
}

TEST_P(DialogLayout, HasNoKeysOfItsOwnInItsTexts) {
    for (const QLabel* label : shown.Widget().findChildren<QLabel*>())
        EXPECT_FALSE(label->text().contains('&')) << label->text().toStdString();
    for (const QAbstractButton* button : shown.Widget().findChildren<QAbstractButton*>())
        EXPECT_FALSE(button->text().contains('&')) << button->text().toStdString();
    for (const QGroupBox* group : shown.Widget().findChildren<QGroupBox*>())
        EXPECT_FALSE(group->title().contains('&')) << group->title().toStdString();
}

TEST_P(DialogLayout, ShowsReadOnlyEditsAsOutputs) {
    ExpectThatOutputsLookLikeOutputs(shown.Widget());
}

TEST_P(DialogLayout, HasRealLettersForEveryText) {
    for (const QLabel* label : shown.Widget().findChildren<QLabel*>())
        EXPECT_TRUE(HasLettersFor(label->text(), label->font())) << label->text().toStdString();
    for (const QAbstractButton* button : shown.Widget().findChildren<QAbstractButton*>())
        EXPECT_TRUE(HasLettersFor(button->text(), button->font())) << button->text().toStdString();
}

INSTANTIATE_TEST_SUITE_P(Resources, DialogLayout, testing::Values(103, 129, 130, 137, 141));

TEST(ContrastDialogLayout, HasItsControlsWhereTheTestsOfTheProgramClick) {
    ShownDialog shown(129);
    for (const auto& [id, place] : contrastPlaces) {
        const QRect rect = Place(*ControlOf(shown.Widget(), id));
        const bool read = ControlOf(shown.Widget(), id)->inherits("QLineEdit");
        const QRect around = read ? QRect(place.x - contrastTextReach, place.y - contrastTextHalfHeight,
                                          2 * contrastTextReach, 2 * contrastTextHalfHeight)
                                  : QRect(place.x, place.y, 1, 1);
        EXPECT_TRUE(rect.contains(around)) << id << " lies from " << rect.left() << ", " << rect.top()
                                           << " to " << rect.right() << ", " << rect.bottom();
    }
}

/// Whose controls are not plain from their texts alone.
class DialogWithToolTips : public DialogLayout {};

TEST_P(DialogWithToolTips, TellsWhatEachControlIsForUnderThePointer) {
    for (const QWidget* widget : shown.Widget().findChildren<QWidget*>()) {
        if (!widget->property("controlId").isValid() || widget->inherits("QAbstractItemView"))
            continue;
        EXPECT_FALSE(widget->toolTip().isEmpty()) << widget->objectName().toStdString();
    }
}

INSTANTIATE_TEST_SUITE_P(Resources, DialogWithToolTips, testing::Values(129, 130, 137, 141));

TEST(DialogLetters, AreMissedWhereThereAreNone) {
    const QtMachine machine;
    EXPECT_FALSE(HasLettersFor(QString(QChar(0x0378)), QApplication::font())) << "no character at all";
}

TEST(ContrastDialogLayout, MarksTheButtonThatHasTheKeysInsteadOfTheUsualOne) {
    ShownDialog shown(129);
    const auto button = [&](int id) { return QtMachine::Control<QPushButton>(TitleOf(129), id); };
    button(1009)->setFocus();
    EXPECT_TRUE(button(1009)->isDefault());
    EXPECT_FALSE(button(1)->isDefault());
    QtMachine::Control<QWidget>(TitleOf(129), 1017)->setFocus();
    EXPECT_FALSE(button(1009)->isDefault());
    EXPECT_TRUE(button(1)->isDefault());
}

class ContrastDialogRadioButtons : public testing::Test {
protected:
    std::vector<int> Checked() {
        std::vector<int> checked;
        for (const QRadioButton* button : shown.Widget().findChildren<QRadioButton*>())
            if (button->isChecked())
                checked.push_back(button->property("controlId").toInt());
        return checked;
    }

    ShownDialog shown{129};
};

TEST_F(ContrastDialogRadioButtons, KeepTheirChoiceWhileTheFocusComesAndGoes) {
    EXPECT_EQ(Checked(), std::vector{1024});
    TabStops(shown.Machine());
    EXPECT_EQ(Checked(), std::vector{1024});
}

TEST_F(ContrastDialogRadioButtons, AreChosenByTheKeysOfTheArrows) {
    operator_input::Type(*QApplication::focusWidget(), Qt::Key_Right);
    shown.Machine().DispatchAll();
    EXPECT_EQ(Checked(), std::vector{1033});
}

TEST(ContrastDialogWithAnotherMaterial, ChecksNoRadioButtonByGivingItTheFocus) {
    QtMachine machine;
    RecordingDialogProcedure procedure;
    machine.ui.dialogs.ShowModeless(machine.ui.dialogs.CreateModeless(129, WindowHandle::None, procedure));
    machine.DispatchAll();
    const std::vector<int> stops = TabStops(machine);
    EXPECT_EQ(stops.front(), 1023);
    for (const int id : {1023, 1024, 1033})
        EXPECT_FALSE(machine.ui.dialogs.IsChecked(procedure.dialog, id)) << id;
    EXPECT_EQ(procedure.Count(1023, Notification::Clicked), 0U);
}

class DialogLayoutOnADesktop : public testing::TestWithParam<std::tuple<int, Desktop>> {
protected:
    const int resource = std::get<int>(GetParam());
    const Desktop desktop = std::get<Desktop>(GetParam());
    const DesktopScope scope{desktop};
    ShownDialog shown{resource, desktop.letters};
};

TEST_P(DialogLayoutOnADesktop, CutsNothingOff) {
    ExpectThatNothingIsCutOff(shown.Widget(), WidestTextsOf(resource));
}

TEST_P(DialogLayoutOnADesktop, LetsNothingOverlapOrReachBeyondIt) {
    ExpectThatNothingOverlaps(shown.Widget());
}

INSTANTIATE_TEST_SUITE_P(Resources, DialogLayoutOnADesktop,
                         testing::Combine(testing::Values(103, 129, 130, 137, 141),
                                          testing::ValuesIn(desktops)));

/// That are never scrolled.
class SmallDialogOnADesktop : public DialogLayoutOnADesktop {};

TEST_P(SmallDialogOnADesktop, IsNoLargerThanAnOrdinaryScreen) {
    constexpr QSize frame(10, 40);
    const bool isOrdinary = desktop.scale == desktops.front().scale;
    const QSize screen = isOrdinary ? QSize(1366, 768) : QSize(1920, 1200);
    const QSize inPixels = (shown.Widget().size() + frame) * shown.Widget().devicePixelRatioF();
    EXPECT_LE(inPixels.width(), screen.width());
    EXPECT_LE(inPixels.height(), screen.height());
}

INSTANTIATE_TEST_SUITE_P(Resources, SmallDialogOnADesktop,
                         testing::Combine(testing::Values(103, 129, 130, 141), testing::ValuesIn(desktops)));

class MenuOnADesktop : public testing::TestWithParam<Desktop> {
protected:
    MenuOnADesktop() {
        EnlargeLetters(GetParam().letters);
        m_machine.ui.windows.RegisterWindowClass({"main", &m_procedure, 109});
        m_machine.ui.windows.Show(m_machine.ui.windows.MakeWindow({"main", "Main", {}, 0, 0, 1242, 1108}));
        m_machine.DispatchAll();
        bar = QtMachine::TopLevel("Main")->findChild<QMenuBar*>();
    }

    QMenuBar* bar = nullptr;

private:
    const DesktopScope m_scope{GetParam()};
    QtMachine m_machine;
    RecordingWindowProcedure m_procedure;
};

TEST_P(MenuOnADesktop, ShowsEveryMenuInFullAndInOneRow) {
    int end = 0; // of the menu before
    for (QAction* menu : bar->actions()) {
        const QRect place = bar->actionGeometry(menu);
        EXPECT_GE(place.left(), end) << menu->text().toStdString();
        EXPECT_EQ(place.top(), bar->actionGeometry(bar->actions().front()).top());
        EXPECT_GT(place.width(), WithoutKeyMark(menu->text(), bar->fontMetrics()));
        end = place.right();
    }
    EXPECT_LE(end, bar->width());
}

TEST_P(MenuOnADesktop, ShowsEveryEntryInFull) {
    for (const QAction* title : bar->actions()) {
        QMenu& menu = *title->menu();
        menu.popup(QPoint(0, 0));
        for (QAction* entry : menu.actions()) {
            EXPECT_GT(menu.actionGeometry(entry).width(), WithoutKeyMark(entry->text(), menu.fontMetrics()));
            EXPECT_TRUE(menu.rect().contains(menu.actionGeometry(entry))) << entry->text().toStdString();
        }
        menu.hide();
    }
}

TEST_P(MenuOnADesktop, HasRealLettersForEveryText) {
    for (const QAction* title : bar->actions()) {
        EXPECT_TRUE(HasLettersFor(title->text(), bar->font())) << title->text().toStdString();
        for (const QAction* entry : title->menu()->actions())
            EXPECT_TRUE(entry->isSeparator() || HasLettersFor(entry->text(), title->menu()->font()))
                << entry->text().toStdString();
    }
}

INSTANTIATE_TEST_SUITE_P(Menu, MenuOnADesktop, testing::ValuesIn(desktops));

} // namespace
} // namespace tessaro
