#include "platform/fake/resource_controls.h"
#include "tests/platform/qt_machine.h"
#include "tests/platform/recording_procedures.h"
#include "tests/support/panel_places.h"

#include <QAbstractItemView>
#include <QCheckBox>
#include <QComboBox>
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
#include <vector>

namespace tessaro {
namespace {

class QtResources : public testing::Test {
protected:
    QWidget* Show(int resource) {
        const WindowHandle dialog =
            m_machine.ui.dialogs.CreateModeless(resource, WindowHandle::None, m_procedure);
        m_machine.ui.dialogs.ShowModeless(dialog);
        for (QWidget* widget : QApplication::topLevelWidgets()) {
            if (!widget->isVisible())
                continue;
            widget->resize(widget->size().expandedTo({panelWidth, panelHeight})); // so that none scrolls
            return widget;
        }
        return nullptr;
    }

    static bool IsOfKind(const QWidget& widget, ControlKind kind) {
        switch (kind) {
        case ControlKind::Edit:
            return qobject_cast<const QLineEdit*>(&widget) != nullptr;
        case ControlKind::Button:
            return qobject_cast<const QPushButton*>(&widget) != nullptr;
        case ControlKind::CheckBox:
            return qobject_cast<const QCheckBox*>(&widget) != nullptr;
        case ControlKind::RadioButton:
            return qobject_cast<const QRadioButton*>(&widget) != nullptr;
        case ControlKind::ComboBox:
            return qobject_cast<const QComboBox*>(&widget) != nullptr;
        }
        return false;
    }

    /// Texts of all labels and group boxes.
    static std::multiset<std::string> Texts(const QWidget& dialog) {
        std::multiset<std::string> texts;
        for (const QLabel* label : dialog.findChildren<QLabel*>())
            texts.insert(label->text().toStdString());
        for (const QGroupBox* group : dialog.findChildren<QGroupBox*>())
            texts.insert(group->title().toStdString());
        return texts;
    }

    QtMachine m_machine;
    RecordingDialogProcedure m_procedure;
};

TEST_F(QtResources, HaveEveryControlOnceWithItsKindAndLabel) {
    for (const auto& [resource, controls] : ResourceControls()) {
        SCOPED_TRACE(resource);
        QWidget* dialog = Show(resource);
        ASSERT_NE(dialog, nullptr);
        std::multimap<int, QWidget*> found;
        for (QWidget* widget : dialog->findChildren<QWidget*>()) {
            if (const QVariant id = widget->property("controlId");
                id.isValid() && qobject_cast<QAbstractItemView*>(widget) == nullptr)
                found.emplace(id.toInt(), widget);
        }
        EXPECT_EQ(found.size(), controls.size());
        for (const ResourceControl& control : controls) {
            SCOPED_TRACE(control.id);
            ASSERT_EQ(found.count(control.id), 1U);
            QWidget* widget = found.find(control.id)->second;
            EXPECT_TRUE(IsOfKind(*widget, control.kind));
            EXPECT_EQ(widget->isEnabled(), control.enabled);
            EXPECT_TRUE(widget->isVisible());
            EXPECT_FALSE(widget->visibleRegion().isEmpty());
            if (const auto* edit = qobject_cast<QLineEdit*>(widget)) {
                EXPECT_EQ(edit->isReadOnly(), control.readOnly);
            }
            if (const auto* button = qobject_cast<QAbstractButton*>(widget)) {
                EXPECT_EQ(button->text().toStdString(), control.label);
            }
        }
        m_machine.ui.dialogs.DestroyModeless(m_procedure.dialog);
    }
}

TEST_F(QtResources, HaveTheTitlesOfTheDialogs) {
    const std::map<int, std::string> titles = {{129, "Color Contrast Configuration"},
                                               {130, "XYZ stage configuration"},
                                               {137, "Control Panel"},
                                               {141, "XYZ stage Configuration"}};
    for (const auto& [resource, title] : titles) {
        const QWidget* dialog = Show(resource);
        ASSERT_NE(dialog, nullptr);
        EXPECT_EQ(dialog->windowTitle().toStdString(), title);
        m_machine.ui.dialogs.DestroyModeless(m_procedure.dialog);
    }
}

TEST_F(QtResources, HaveTheTextsBesideTheControls) {
    const std::map<int, std::vector<std::string>> expected = {
        {103, {"For 2D materials"}},
        {129,
         {"2D material", "Substrate", "Background Intensity:", "Constrast for Zarnik:", "%", "Size  >",
          "um<sup>2</sup>", "Score Threshold", "Noise Level", "Focus"}},
        {130,
         {"Current Position (um)", "X:", "Y:", "Z position (um)", "Scan Area", "X", "Y", "(cm)",
          "Step motion (um)"}},
        {137,
         {"X: (um)",   "Y: (um)",       "Z: (um)",       "X range (mm)", "Y range (mm)",       "by Origin",
          "by X max",  "by Y max",      "X tilt",        "Y tilt",       "Total found",        "Information:",
          "Progress:", "Laplace S",     "Laplace M",     "Modifed L",    "Deviation",          "Focus",
          "EdgeShp",   "> > > > > > >", "< < < < < < <", "^\n^",         "v\nv\nv\nv\nv\nv\nv"}},
        {141, {"XYZ-stage COM Port #", "Camera"}}};
    for (const auto& [resource, texts] : expected) {
        const QWidget* dialog = Show(resource);
        ASSERT_NE(dialog, nullptr);
        const std::multiset<std::string> found = Texts(*dialog);
        for (const std::string& text : texts)
            EXPECT_GE(found.count(text), 1U) << resource << ": " << text;
        if (resource == 129) {
            EXPECT_EQ(found.count("%"), 4U) << "three contrasts and the tolerance";
        }
        m_machine.ui.dialogs.DestroyModeless(m_procedure.dialog);
    }
}

TEST_F(QtResources, HaveTheWholeMenu) {
    using Entries = std::vector<std::pair<std::string, int>>;
    const std::vector<std::pair<std::string, Entries>> expected = {
        {"파일(&F)",
         {{"Import Image", 32816}, {"Save Image", 32804}, {"Control Panel", 32814}, {"Exit (&X)", 105}}},
        {"Devices",
         {{"XY Stage Configuration", 32810},
          {"Auto Contrast Once", 32809},
          {"Auto focusing", 32811},
          {"Capture", 32780},
          {"Stop/Start Grabbing", 32817}}},
        {"image conversion",
         {{"", 0},
          {"Red image", 32776},
          {"Green Image", 32783},
          {"Blue image", 32777},
          {"Original image", 32807},
          {"Show BackGround", 32818},
          {"BackGround fitting", 32820}}},
        {"Analysis",
         {{"Configuration", 32788},
          {"Find Single Layers", 32794},
          {"Noise Rejection", 32791},
          {"Grouping", 32806},
          {"Discern Contrast", 32787}}},
        {"Scanning",
         {{"Setting XY stage", 32801}, {"Start", 32800}, {"Pause/Resume", 32812}, {"Stop", 32802}}},
        {"Help(&H)", {{"Information(&A)...", 104}}}};
    RecordingWindowProcedure procedure;
    m_machine.ui.windows.RegisterWindowClass({"main", &procedure, 109, 136});
    m_machine.ui.windows.Show(m_machine.ui.windows.MakeWindow({"main", "Main", {}, 0, 0, 1242, 1108}));
    const QWidget* window = QtMachine::TopLevel("Main");
    ASSERT_NE(window, nullptr);
    EXPECT_FALSE(window->windowIcon().isNull());
    const auto* bar = window->findChild<QMenuBar*>();
    ASSERT_NE(bar, nullptr);
    std::vector<std::pair<std::string, Entries>> found;
    for (const QAction* menu : bar->actions()) {
        found.emplace_back(menu->text().toStdString(), Entries());
        for (const QAction* entry : menu->menu()->actions()) {
            found.back().second.emplace_back(entry->text().toStdString(),
                                             entry->property("commandId").toInt());
            EXPECT_EQ(entry->isSeparator(), entry->text().isEmpty());
            EXPECT_TRUE(entry->isEnabled());
            EXPECT_TRUE(entry->shortcuts().isEmpty());
        }
    }
    EXPECT_EQ(found, expected);
}

} // namespace
} // namespace tessaro
