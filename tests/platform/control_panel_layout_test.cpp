// The control panel as it is laid out: what stands where, what fits, and how the keyboard gets around.

#include "tests/platform/dialog_layout.h"
#include "tests/platform/operator_input.h"
#include "tests/platform/qt_machine.h"
#include "tests/platform/recording_procedures.h"
#include "tests/support/panel_places.h"

#include <QDialog>
#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>
#include <vector>

namespace tessaro {
namespace {

using namespace dialog_layout;

constexpr const char* panelTitle = "Control Panel";

class ControlPanelLayout : public testing::Test {
protected:
    /// With the size that it has on an ordinary screen, or another height.
    void Show(int height = panelHeight) {
        m_handle = m_machine.ui.dialogs.CreateModeless(137, WindowHandle::None, m_procedure);
        m_machine.ui.dialogs.ShowModeless(m_handle);
        m_panel = QtMachine::TopLevel(panelTitle);
        ASSERT_NE(m_panel, nullptr);
        m_panel->resize(panelWidth, height);
        m_machine.DispatchAll();
        m_procedure.commands.clear();
    }

    template<typename Widget = QWidget>
    Widget* Control(int id) const {
        return QtMachine::Control<Widget>(panelTitle, id);
    }

    std::string GroupOf(int id) const {
        for (const QWidget* widget = Control(id); widget != nullptr; widget = widget->parentWidget())
            if (const auto* group = qobject_cast<const QGroupBox*>(widget))
                return group->title().toStdString();
        return {};
    }

    void ExpectThatEverythingFits() {
        ExpectThatNothingIsCutOff(*m_panel, WidestTextsOf(137));
        ExpectThatNothingOverlaps(*m_panel);
    }

    QtMachine m_machine;
    RecordingDialogProcedure m_procedure;
    WindowHandle m_handle = WindowHandle::None;
    QWidget* m_panel = nullptr;
};

TEST_F(ControlPanelLayout, HasTheControlsInTheirGroups) {
    Show();
    const std::map<std::string, std::vector<int>> groups = {
        {"Position", {1000, 1003, 1005, 1002, 1021, 1022, 1027, 1042, 1029}},
        {"Scan area", {1011, 1012, 1015, 1010, 1008, 1009}},
        {"Focus depths and tilt", {1019, 1017, 1018, 1026, 1035, 1040, 1004}},
        {"Focus figures", {1001, 1020, 1036, 1037, 1038, 1039, 1016, 1024, 1023}},
        {"Scan", {1013, 1014, 1032, 1041}},
        {"Status", {1006, 1007}}};
    int above = 0;
    for (const char* title :
         {"Position", "Scan area", "Focus depths and tilt", "Focus figures", "Scan", "Status"}) {
        for (const int id : groups.at(title)) {
            EXPECT_EQ(GroupOf(id), title) << id;
            EXPECT_GT(Place(*Control(id)).top(), above) << id;
        }
        above = Place(*Control(groups.at(title).back())).bottom();
    }
}

TEST_F(ControlPanelLayout, HasTheLabelBesideEachEdit) {
    Show();
    const std::map<std::string, std::vector<int>> leftOf = {
        {"X: (um)", {1000, 1002}}, {"Y: (um)", {1003, 1021}}, {"Z: (um)", {1005, 1022}},
        {"X range (mm)", {1012}},  {"Y range (mm)", {1015}},  {"Z depth (um)", {1019, 1017, 1018}},
        {"X tilt", {1035}},        {"Y tilt", {1040}},        {"Total found", {1041}},
        {"Information:", {1006}},  {"Progress:", {1007}},     {"Laplace S", {1020}},
        {"Laplace M", {1001}},     {"Modifed L", {1036}},     {"Deviation", {1037}},
        {"Focus", {1038}},         {"EdgeShp", {1039}}};
    for (const auto& [text, ids] : leftOf) {
        const QLabel* label = LabelOf(*m_panel, text);
        ASSERT_NE(label, nullptr) << text;
        for (const int id : ids) {
            EXPECT_NEAR(Place(*label).center().y(), Place(*Control(id)).center().y(), 2) << text;
            EXPECT_LT(Place(*label).right(), Place(*Control(id)).left()) << text;
        }
        EXPECT_LE(Place(*Control(ids.front())).left() - Place(*label).right(), 20) << text;
    }
    const std::map<std::string, std::vector<int>> above = {{"Current", {1000, 1003, 1005}},
                                                           {"Target", {1002, 1021, 1022}},
                                                           {"by Origin", {1019}},
                                                           {"by X max", {1017}},
                                                           {"by Y max", {1018}}};
    for (const auto& [text, ids] : above) {
        const QLabel* label = LabelOf(*m_panel, text);
        ASSERT_NE(label, nullptr) << text;
        for (const int id : ids) {
            EXPECT_NEAR(Place(*label).center().x(), Place(*Control(id)).center().x(), 2) << text;
            EXPECT_LT(Place(*label).bottom(), Place(*Control(id)).top()) << text;
        }
    }
}

TEST_F(ControlPanelLayout, DrawsThePathFromTheOriginUpInRowsAndBack) {
    Show();
    const QRect origin = Place(*Control(1010));
    const QRect farX = Place(*Control(1008));
    const QRect farY = Place(*Control(1009));
    std::map<int, std::string, std::greater<>> upwards; // the labels by the middle of their height
    for (const QLabel* label : m_panel->findChildren<QLabel*>()) {
        const std::string text = label->text().toStdString();
        if (text.find_first_not_of("<>^ \n") != std::string::npos)
            continue;
        EXPECT_GT(Place(*label).left(), origin.right()) << text;
        EXPECT_LT(Place(*label).right(), farX.left()) << text;
        upwards[Place(*label).center().y()] = text;
    }
    std::vector<std::string> path;
    for (const auto& [height, text] : upwards)
        path.push_back(text);
    EXPECT_EQ(path, (std::vector<std::string>{"> > > > > > >", "^\n^", "< < < < < < <", "^\n^",
                                              "> > > > > > >", "^\n^", "< < < < < < <"}));
    EXPECT_NEAR(upwards.begin()->first, origin.center().y(), 2);
    EXPECT_NEAR(upwards.begin()->first, farX.center().y(), 2);
    EXPECT_NEAR(upwards.rbegin()->first, farY.center().y(), 2);
    const QLabel* back = LabelOf(*m_panel, "v\nv\nv\nv\nv\nv\nv");
    ASSERT_NE(back, nullptr);
    EXPECT_NEAR(Place(*back).center().x(), origin.center().x(), 2);
    EXPECT_LT(Place(*back).bottom(), origin.top());
    EXPECT_GT(Place(*back).top(), farY.bottom());
}

TEST_F(ControlPanelLayout, CutsNothingOffInLargeLetters) {
    EnlargeLetters(1.25);
    Show();
    EXPECT_LE(m_panel->width(), 800);
    ExpectThatEverythingFits();
}

TEST_F(ControlPanelLayout, FitsBesideTheMainWindow) {
    Show();
    constexpr int screenWidth = 1920;
    constexpr int screenHeight = 1080;
    constexpr int mainWindowWidth = 1242;
    constexpr int frame = 40;
    EXPECT_EQ(m_panel->size(), QSize(panelWidth, panelHeight)) << "its contents ask for no more";
    EXPECT_LE(m_panel->width(), screenWidth - mainWindowWidth);
    EXPECT_LE(m_panel->height(), screenHeight - frame);
    EXPECT_EQ(m_panel->findChild<QScrollArea*>()->verticalScrollBar()->maximum(), 0)
        << "nothing is to be scrolled";
}

TEST_F(ControlPanelLayout, KeepsWithinALowScreenAndReachesEverythingByScrolling) {
    Show(540);
    EXPECT_EQ(m_panel->height(), 540);
    auto* area = m_panel->findChild<QScrollArea*>();
    EXPECT_GT(area->verticalScrollBar()->maximum(), 0);
    EXPECT_EQ(area->horizontalScrollBar()->maximum(), 0);
    ExpectThatEverythingFits();
    for (const int id : {1013, 1032, 1006, 1007})
        EXPECT_TRUE(m_panel->rect().contains(Place(*Control(id)))) << id << " is always in sight";
    auto* last = Control<QPushButton>(1023);
    last->setFocus(Qt::TabFocusReason);
    area->ensureWidgetVisible(last);
    operator_input::Click(*last);
    m_machine.DispatchAll();
    EXPECT_EQ(m_procedure.Count(1023, Notification::Clicked), 1U);
}

TEST_F(ControlPanelLayout, IsNoHigherThanTheScreenWhenItOpens) {
    m_handle = m_machine.ui.dialogs.CreateModeless(137, WindowHandle::None, m_procedure);
    m_machine.ui.dialogs.ShowModeless(m_handle);
    m_machine.DispatchAll();
    const QWidget* panel = QtMachine::TopLevel(panelTitle);
    ASSERT_NE(panel, nullptr);
    EXPECT_EQ(panel->width(), panelWidth);
    EXPECT_LE(panel->height(), panel->screen()->availableSize().height());
    EXPECT_GT(panel->height(), panel->screen()->availableSize().height() - 60) << "but makes use of it";
}

TEST_F(ControlPanelLayout, IsNarrowerWhereThatKeepsTheMainWindowUncovered) {
    constexpr int ownerWidth = 250;
    RecordingWindowProcedure ownerProcedure;
    m_machine.ui.windows.RegisterWindowClass({"main", &ownerProcedure});
    const WindowHandle owner = m_machine.ui.windows.MakeWindow({"main", "Main", {}, 0, 0, ownerWidth, 400});
    m_machine.ui.windows.Show(owner);
    m_machine.DispatchAll();
    m_handle = m_machine.ui.dialogs.CreateModeless(137, owner, m_procedure);
    m_machine.ui.dialogs.ShowModeless(m_handle);
    m_machine.DispatchAll();
    m_panel = QtMachine::TopLevel(panelTitle);
    ASSERT_NE(m_panel, nullptr);
    const QRect screen = m_panel->screen()->availableGeometry();
    ASSERT_LT(screen.width(), ownerWidth + panelWidth);
    EXPECT_LT(m_panel->width(), panelWidth);
    EXPECT_FALSE(m_panel->frameGeometry().intersects(QtMachine::TopLevel("Main")->frameGeometry()));
    EXPECT_TRUE(screen.contains(m_panel->frameGeometry()));
    ExpectThatEverythingFits();
    m_machine.ui.dialogs.DestroyModeless(m_handle);
    m_machine.ui.windows.Destroy(owner);
    m_machine.DispatchAll();
}

TEST_F(ControlPanelLayout, LetsWhatTheProgramWritesBeSelectedByTheMouse) {
    Show();
    for (const int id : {1000, 1019, 1035, 1041, 1006, 1001}) {
        operator_input::Click(*Control(id));
        m_machine.DispatchAll();
        EXPECT_TRUE(Control(id)->hasFocus()) << id;
    }
}

TEST_F(ControlPanelLayout, TellsWhatItsButtonsAreForApart) {
    Show();
    std::set<std::string> different;
    for (const QAbstractButton* button : m_panel->findChildren<QAbstractButton*>())
        different.insert(button->toolTip().toStdString());
    EXPECT_EQ(different.size(), 15U) << "every button, and the box, says something of its own";
}

TEST_F(ControlPanelLayout, HasItsControlsWhereTheTestsOfTheProgramClick) {
    Show();
    for (const auto& [id, place] : panelPlaces)
        EXPECT_TRUE(Place(*Control(id)).contains(place.x, place.y)) << id;
    for (const int read : {1000, 1003, 1005, 1006, 1007}) {
        constexpr int frame = 2;
        const PanelPlace place = panelPlaces.at(read);
        EXPECT_TRUE(Place(*Control(read))
                        .adjusted(frame, frame, -frame, -frame)
                        .contains(QRect(place.x - panelTextReach, place.y - panelTextHalfHeight,
                                        2 * panelTextReach, 2 * panelTextHalfHeight)))
            << read;
    }
    const QWidget* caption = m_panel->childAt(panelCaption.x, panelCaption.y);
    ASSERT_NE(caption, nullptr);
    EXPECT_FALSE(caption->property("controlId").isValid());
}

} // namespace
} // namespace tessaro
