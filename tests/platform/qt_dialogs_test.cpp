#include "tests/platform/operator_input.h"
#include "tests/platform/qt_machine.h"
#include "tests/platform/recording_procedures.h"
#include "tests/support/panel_places.h"

#include <QAbstractItemView>
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QScreen>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tessaro {
namespace {

using Reported = RecordingDialogProcedure::Reported;

class QtDialogsTest : public testing::Test {
protected:
    WindowHandle Show(int resource, WindowHandle owner = WindowHandle::None) {
        const WindowHandle dialog = m_machine.ui.dialogs.CreateModeless(resource, owner, m_procedure);
        m_machine.ui.dialogs.ShowModeless(dialog);
        m_machine.DispatchAll();
        m_procedure.commands.clear();
        return dialog;
    }

    WindowHandle MakeOwner() {
        m_machine.ui.windows.RegisterWindowClass({"main", &m_ownerProcedure});
        const WindowHandle owner = m_machine.ui.windows.MakeWindow({"main", "Main", {}, 0, 0, 500, 400});
        m_machine.ui.windows.Show(owner);
        m_machine.DispatchAll();
        m_ownerProcedure.messages.clear();
        return owner;
    }

    /// Where a modal dialog stands, which is ended then.
    QRect PlaceOfModal(int resource, const std::string& title, WindowHandle owner) {
        QRect place;
        m_machine.ui.messages.SetTimer(owner, 1, 10);
        m_ownerProcedure.answer = [&](const Message& message) {
            if (message.kind != MessageKind::Timer)
                return false;
            m_machine.ui.messages.KillTimer(owner, 1);
            place = QtMachine::TopLevel(title)->frameGeometry();
            m_machine.ui.dialogs.EndModal(m_procedure.dialog, 0);
            return true;
        };
        m_machine.ui.dialogs.RunModal(resource, owner, m_procedure);
        m_ownerProcedure.answer = nullptr;
        return place;
    }

    QtMachine m_machine;
    RecordingDialogProcedure m_procedure;
    RecordingWindowProcedure m_ownerProcedure;
    static constexpr const char* panelTitle = "Control Panel";
    static constexpr const char* contrastTitle = "Color Contrast Configuration";
    static constexpr const char* stageTitle = "XYZ stage configuration";
};

TEST_F(QtDialogsTest, NotifiesOfTypingAndFocusInAnEdit) {
    Show(137);
    auto* edit = QtMachine::Control<QLineEdit>(panelTitle, 1012);
    operator_input::Click(*edit);
    m_machine.DispatchAll();
    EXPECT_EQ(m_procedure.Count(1012, Notification::FocusGained), 1U);
    m_procedure.commands.clear();
    operator_input::Type(*edit, Qt::Key_4, Qt::NoModifier, QStringLiteral("4"));
    operator_input::Type(*edit, Qt::Key_2, Qt::NoModifier, QStringLiteral("2"));
    m_machine.DispatchAll();
    EXPECT_EQ(m_procedure.commands, std::vector(2, Reported(1012, Notification::TextChanged)));
    EXPECT_EQ(m_machine.ui.dialogs.ItemText(m_procedure.dialog, 1012, 10), "42");
    m_procedure.commands.clear();
    operator_input::Type(*edit, Qt::Key_Tab, Qt::NoModifier, QStringLiteral("\t"));
    m_machine.DispatchAll();
    EXPECT_EQ(m_procedure.Count(1012, Notification::FocusLost), 1U);
    EXPECT_FALSE(edit->hasFocus());
}

TEST_F(QtDialogsTest, LetsNobodyTypeIntoAReadOnlyEdit) {
    Show(137);
    auto* edit = QtMachine::Control<QLineEdit>(panelTitle, 1019);
    operator_input::Click(*edit);
    operator_input::Type(*edit, Qt::Key_4, Qt::NoModifier, QStringLiteral("4"));
    m_machine.DispatchAll();
    EXPECT_EQ(m_machine.ui.dialogs.ItemText(m_procedure.dialog, 1019, 10), "");
    m_machine.ui.dialogs.SetItemText(m_procedure.dialog, 1019, "7");
    EXPECT_EQ(m_machine.ui.dialogs.ItemText(m_procedure.dialog, 1019, 10), "7");
}

TEST_F(QtDialogsTest, NotifiesOfEveryButtonOfThePanel) {
    Show(137);
    QtMachine::TopLevel(panelTitle)->resize(panelWidth, panelHeight); // nothing has to be scrolled to
    for (const int id :
         {1027, 1042, 1029, 1011, 1010, 1008, 1009, 1026, 1016, 1024, 1023, 1013, 1014, 1032}) {
        m_procedure.commands.clear();
        operator_input::Click(*QtMachine::Control(panelTitle, id));
        m_machine.DispatchAll();
        EXPECT_EQ(m_procedure.Count(id, Notification::Clicked), 1U) << id;
    }
}

TEST_F(QtDialogsTest, NotifiesOfACheckBoxThatTheOperatorClicks) {
    const WindowHandle dialog = Show(137);
    QtMachine::TopLevel(panelTitle)->resize(panelWidth, panelHeight);
    auto* box = QtMachine::Control<QCheckBox>(panelTitle, 1004);
    operator_input::Press(*box, {8, box->height() / 2});
    operator_input::Release(*box, {8, box->height() / 2});
    m_machine.DispatchAll();
    EXPECT_EQ(m_procedure.Count(1004, Notification::Clicked), 1U);
    EXPECT_TRUE(m_machine.ui.dialogs.IsChecked(dialog, 1004)) << "it checks itself";
}

TEST_F(QtDialogsTest, NotifiesOfARadioButtonThatTheOperatorClicks) {
    const WindowHandle dialog = Show(129);
    for (const int id : {1024, 1033, 1023}) {
        auto* button = QtMachine::Control<QRadioButton>(contrastTitle, id);
        operator_input::Press(*button, {8, button->height() / 2});
        operator_input::Release(*button, {8, button->height() / 2});
        m_machine.DispatchAll();
        EXPECT_EQ(m_procedure.Count(id, Notification::Clicked), 1U) << id;
        for (const int other : {1023, 1024, 1033})
            EXPECT_EQ(m_machine.ui.dialogs.IsChecked(dialog, other), other == id);
    }
}

TEST_F(QtDialogsTest, NotifiesOfAComboBox) {
    const WindowHandle dialog = Show(129);
    for (const char* text : {"SiO2 (300nm)", "glass", "sapphire"})
        m_machine.ui.dialogs.AddChoice(dialog, 1034, text);
    m_machine.ui.dialogs.SelectChoice(dialog, 1034, 0);
    auto* combo = QtMachine::Control<QComboBox>(contrastTitle, 1034);
    ASSERT_NE(combo, nullptr);
    m_procedure.commands.clear();
    operator_input::Press(*combo, combo->rect().center());
    operator_input::Release(*combo, combo->rect().center());
    ASSERT_TRUE(m_machine.DispatchUntil([&] { return combo->view()->isVisible(); }));
    m_machine.DispatchAll();
    EXPECT_EQ(m_procedure.Count(1034, Notification::ListOpened), 1U);
    EXPECT_EQ(m_procedure.Count(1034, Notification::SelectionChanged), 0U);
    operator_input::Type(*combo->view(), Qt::Key_Down);
    operator_input::Type(*combo->view(), Qt::Key_Return);
    ASSERT_TRUE(m_machine.DispatchUntil([&] { return !combo->view()->isVisible(); }));
    m_machine.DispatchAll();
    EXPECT_EQ(m_procedure.Count(1034, Notification::ListClosed), 1U);
    EXPECT_GE(m_procedure.Count(1034, Notification::SelectionChanged), 1U); // Enter may count twice
    EXPECT_EQ(m_machine.ui.dialogs.SelectedChoice(dialog, 1034), 1);
    for (const auto& [id, notification] : m_procedure.commands)
        EXPECT_TRUE(id == 1034 || notification == Notification::FocusLost) << id;
}

TEST_F(QtDialogsTest, SelectsByKeysInAComboBoxWithoutItsList) {
    const WindowHandle dialog = Show(129);
    for (const char* text : {"SiO2 (300nm)", "glass", "sapphire"})
        m_machine.ui.dialogs.AddChoice(dialog, 1034, text);
    m_machine.ui.dialogs.SelectChoice(dialog, 1034, 0);
    auto* combo = QtMachine::Control<QComboBox>(contrastTitle, 1034);
    combo->setFocus();
    m_machine.DispatchAll();
    EXPECT_EQ(m_procedure.Count(1034, Notification::FocusGained), 1U);
    operator_input::Type(*combo, Qt::Key_Down);
    m_machine.DispatchAll();
    EXPECT_EQ(m_machine.ui.dialogs.SelectedChoice(dialog, 1034), 1);
    EXPECT_EQ(m_procedure.Count(1034, Notification::SelectionChanged), 1U);
}

TEST_F(QtDialogsTest, CommandsCancelByTheCloseButtonAndInModalDialogsByEscapeAndStays) {
    for (const int resource : {103, 129, 130, 137, 141}) {
        const WindowHandle dialog = Show(resource);
        QWidget* widget = QApplication::activeWindow();
        ASSERT_NE(widget, nullptr);
        operator_input::Type(*widget, Qt::Key_Escape);
        m_machine.DispatchAll();
        EXPECT_EQ(m_procedure.Count(commandCancel, Notification::Clicked), 0U) << resource;
        widget->setWindowModality(Qt::WindowModal);
        operator_input::Type(*widget, Qt::Key_Escape);
        m_machine.DispatchAll();
        EXPECT_EQ(m_procedure.Count(commandCancel, Notification::Clicked), 1U) << resource;
        EXPECT_TRUE(widget->isVisible());
        widget->windowHandle()->close();
        m_machine.DispatchAll();
        EXPECT_EQ(m_procedure.Count(commandCancel, Notification::Clicked), 2U) << resource;
        EXPECT_TRUE(widget->isVisible());
        m_machine.ui.dialogs.DestroyModeless(dialog);
        m_machine.DispatchAll();
    }
}

TEST_F(QtDialogsTest, CommandsOkByEnterOnceInModalDialogsAndStays) {
    for (const int enter : {Qt::Key_Return, Qt::Key_Enter}) {
        for (const auto& [resource, edit] : {std::pair{129, 1017}, {130, 1007}, {137, 1012}, {141, 1000}}) {
            const WindowHandle dialog = Show(resource);
            QWidget* widget = QApplication::activeWindow();
            ASSERT_NE(widget, nullptr);
            auto* control = QtMachine::Control<QLineEdit>(widget->windowTitle().toStdString(), edit);
            control->setFocus();
            m_machine.DispatchAll();
            m_procedure.commands.clear();
            operator_input::Type(*control, enter, Qt::NoModifier, QStringLiteral("\r"));
            m_machine.DispatchAll();
            EXPECT_TRUE(m_procedure.commands.empty()) << resource;
            widget->setWindowModality(Qt::WindowModal);
            operator_input::Type(*control, enter, Qt::NoModifier, QStringLiteral("\r"));
            m_machine.DispatchAll();
            EXPECT_EQ(m_procedure.commands, std::vector{Reported(commandOk, Notification::Clicked)})
                << resource;
            EXPECT_TRUE(widget->isVisible());
            m_machine.ui.dialogs.DestroyModeless(dialog);
            m_machine.DispatchAll();
        }
    }
}

TEST_F(QtDialogsTest, PressesTheButtonThatHasTheFocusBySpaceAndInModalDialogsByEnter) {
    Show(137);
    auto* button = QtMachine::Control<QPushButton>(panelTitle, 1042);
    button->setFocus();
    operator_input::Type(*button, Qt::Key_Return);
    m_machine.DispatchAll();
    EXPECT_EQ(m_procedure.Count(1042, Notification::Clicked), 0U);
    button->window()->setWindowModality(Qt::WindowModal);
    operator_input::Type(*button, Qt::Key_Return);
    m_machine.DispatchAll();
    EXPECT_EQ(m_procedure.Count(1042, Notification::Clicked), 1U);
    operator_input::Type(*button, Qt::Key_Space);
    m_machine.DispatchAll();
    EXPECT_EQ(m_procedure.Count(1042, Notification::Clicked), 2U);
    EXPECT_EQ(m_procedure.Count(commandOk, Notification::Clicked), 0U);
}

TEST_F(QtDialogsTest, ShowsNothingOfADialogUntilItIsShown) {
    const WindowHandle dialog = m_machine.ui.dialogs.CreateModeless(137, WindowHandle::None, m_procedure);
    m_machine.DispatchAll();
    EXPECT_EQ(QtMachine::TopLevel(panelTitle), nullptr);
    m_machine.ui.dialogs.ShowModeless(dialog);
    EXPECT_NE(QtMachine::TopLevel(panelTitle), nullptr);
    m_machine.ui.dialogs.DestroyModeless(dialog);
    EXPECT_EQ(QtMachine::TopLevel(panelTitle), nullptr);
}

TEST_F(QtDialogsTest, ShowsADialogOfAHiddenOwnerTogetherWithIt) {
    m_machine.ui.windows.RegisterWindowClass({"main", &m_ownerProcedure});
    const WindowHandle owner = m_machine.ui.windows.MakeWindow({"main", "Main", {}, 0, 0, 500, 400});
    Show(137, owner);
    EXPECT_EQ(QtMachine::TopLevel(panelTitle), nullptr);
    m_machine.ui.windows.Show(owner);
    m_machine.DispatchAll();
    EXPECT_NE(QtMachine::TopLevel(panelTitle), nullptr);
}

TEST_F(QtDialogsTest, DoesNotShowADialogWithItsOwnerThatWasNotToBeShown) {
    m_machine.ui.windows.RegisterWindowClass({"main", &m_ownerProcedure});
    const WindowHandle owner = m_machine.ui.windows.MakeWindow({"main", "Main", {}, 0, 0, 500, 400});
    m_machine.ui.dialogs.CreateModeless(137, owner, m_procedure);
    m_machine.ui.windows.Show(owner);
    m_machine.DispatchAll();
    EXPECT_EQ(QtMachine::TopLevel(panelTitle), nullptr);
}

TEST_F(QtDialogsTest, CoversNoDialogThatStandsBesideTheOwnerAlready) {
    const WindowHandle owner = MakeOwner();
    Show(103, owner);
    Show(141, owner);
    const QRect first = QtMachine::TopLevel("About Tessaro")->frameGeometry();
    const QRect second = QtMachine::TopLevel("XYZ stage Configuration")->frameGeometry();
    EXPECT_FALSE(first.intersects(second));
    EXPECT_TRUE(QGuiApplication::primaryScreen()->geometry().contains(second));
}

TEST_F(QtDialogsTest, StandsOverItsOwnerWhereTheScreenHasNoRoomBesideAnotherDialog) {
    const WindowHandle owner = MakeOwner();
    Show(137, owner); // as high as the screen
    Show(141, owner);
    const QRect second = QtMachine::TopLevel("XYZ stage Configuration")->frameGeometry();
    const QPoint middle = QtMachine::TopLevel("Main")->frameGeometry().center();
    EXPECT_NEAR(second.center().x(), middle.x(), 2);
    EXPECT_TRUE(QGuiApplication::primaryScreen()->geometry().contains(second));
}

TEST_F(QtDialogsTest, LeavesTheOwnerInSightOfModalDialogsWhoseEffectsItShows) {
    const WindowHandle owner = MakeOwner();
    Show(137, owner); // may be covered
    const QRect screen = QGuiApplication::primaryScreen()->geometry();
    const QRect main = QtMachine::TopLevel("Main")->frameGeometry();
    const QRect contrast = PlaceOfModal(129, contrastTitle, owner);
    EXPECT_EQ(contrast.right(), screen.right());
    EXPECT_EQ(contrast.top(), main.top());
    const QRect stage = PlaceOfModal(130, stageTitle, owner);
    EXPECT_EQ(stage.right(), screen.right());
    EXPECT_EQ(stage.top(), main.top());
    const QRect about = PlaceOfModal(103, "About Tessaro", owner);
    EXPECT_NEAR(about.center().x(), main.center().x(), 5) << "has no effects";
}

TEST_F(QtDialogsTest, KeepsNoMemoryOfADialogThatIsGone) {
    const WindowHandle owner = MakeOwner();
    const WindowHandle dialog = m_machine.ui.dialogs.CreateModeless(137, owner, m_procedure);
    m_machine.ui.dialogs.ShowModeless(dialog);
    const QPointer<QWidget> widget = QtMachine::TopLevel(panelTitle);
    ASSERT_FALSE(widget.isNull());
    m_machine.ui.dialogs.DestroyModeless(dialog);
    m_machine.DispatchAll();
    EXPECT_TRUE(widget.isNull());
}

TEST_F(QtDialogsTest, KeepsNoMemoryOfAWindowThatIsGone) {
    const WindowHandle owner = MakeOwner();
    const QPointer<QWidget> widget = QtMachine::TopLevel("Main");
    m_machine.ui.windows.Destroy(owner);
    m_machine.DispatchAll();
    EXPECT_TRUE(widget.isNull());
}

TEST_F(QtDialogsTest, SurvivesACommandThatDestroysItsDialogAndDispatchesMessages) {
    const WindowHandle dialog = Show(137, MakeOwner());
    m_procedure.onCommand = [&](int controlId, Notification) {
        if (controlId != 1032)
            return;
        m_machine.ui.dialogs.DestroyModeless(dialog);
        m_machine.DispatchAll(); // while the button still is in the middle of its click
    };
    operator_input::Click(*QtMachine::Control(panelTitle, 1032));
    m_machine.DispatchAll();
    EXPECT_EQ(m_procedure.Count(1032, Notification::Clicked), 1U);
    EXPECT_EQ(QtMachine::TopLevel(panelTitle), nullptr);
}

TEST_F(QtDialogsTest, SurvivesATextThatMakesItsDialogGoWhileMessagesAreDispatched) {
    const WindowHandle dialog = Show(137, MakeOwner());
    m_procedure.onCommand = [&](int, Notification) {
        m_machine.ui.dialogs.DestroyModeless(dialog);
        m_machine.DispatchAll(); // while the box still is in the middle of its change
    };
    m_machine.ui.dialogs.SetItemText(dialog, 1006, "text");
    EXPECT_EQ(m_procedure.commands.size(), 1U);
    m_machine.DispatchAll();
    EXPECT_EQ(QtMachine::TopLevel(panelTitle), nullptr);
}

TEST_F(QtDialogsTest, SurvivesFocusThatMakesItsDialogGoWhileMessagesAreDispatched) {
    const WindowHandle owner = MakeOwner();
    const WindowHandle dialog = Show(137, owner);
    QtMachine::Control(panelTitle, 1012)->setFocus();
    m_machine.DispatchAll();
    bool gone = false;
    m_procedure.onCommand = [&](int, Notification notification) {
        if (notification != Notification::FocusLost || std::exchange(gone, true))
            return;
        m_machine.ui.dialogs.DestroyModeless(dialog);
        m_machine.DispatchAll();
    };
    m_machine.ui.windows.SetKeyboardFocus(owner);
    m_machine.DispatchAll();
    EXPECT_TRUE(gone);
    EXPECT_EQ(QtMachine::TopLevel(panelTitle), nullptr);
}

TEST_F(QtDialogsTest, KeepsTheOwnerOfAModalDialogFromBeingUsed) {
    const WindowHandle owner = MakeOwner();
    m_machine.ui.messages.SetTimer(owner, 1, 10);
    m_ownerProcedure.answer = [&](const Message& message) {
        if (message.kind != MessageKind::Timer)
            return false;
        QWidget* main = QtMachine::TopLevel("Main");
        if (m_ownerProcedure.Count(MessageKind::Timer) == 1) {
            operator_input::Click(*main);
            operator_input::Type(*main, Qt::Key_Up);
        } else if (m_ownerProcedure.Count(MessageKind::Timer) == 4) {
            operator_input::Click(*QtMachine::Control(stageTitle, commandCancel));
        }
        return true;
    };
    m_procedure.onCommand = [&](int controlId, Notification notification) {
        if (controlId == commandCancel && notification == Notification::Clicked)
            m_machine.ui.dialogs.EndModal(m_procedure.dialog, 2);
    };
    EXPECT_EQ(m_machine.ui.dialogs.RunModal(130, owner, m_procedure), 2);
    EXPECT_GE(m_ownerProcedure.Count(MessageKind::Timer), 4U) << "its timers go on";
    EXPECT_EQ(m_ownerProcedure.Count(MessageKind::LeftButtonPress), 0U);
    m_machine.ui.messages.KillTimer(owner, 1);
    m_machine.DispatchAll();
    operator_input::Click(*QtMachine::TopLevel("Main"));
    m_machine.DispatchAll();
    EXPECT_EQ(m_ownerProcedure.Count(MessageKind::LeftButtonPress), 1U) << "afterwards it is used again";
}

TEST_F(QtDialogsTest, NestsModalDialogs) {
    const WindowHandle owner = MakeOwner();
    RecordingDialogProcedure inner;
    int innerResult = 0;
    inner.onCommand = [&](int controlId, Notification notification) {
        if (controlId == commandCancel && notification == Notification::Clicked)
            m_machine.ui.dialogs.EndModal(inner.dialog, 22);
    };
    m_procedure.onCommand = [&](int controlId, Notification notification) {
        if (notification != Notification::Clicked)
            return;
        if (controlId == 1009) {
            m_machine.ui.messages.SetTimer(owner, 2, 10);
            innerResult = m_machine.ui.dialogs.RunModal(129, m_procedure.dialog, inner);
            operator_input::Click(*QtMachine::Control(stageTitle, commandCancel));
        } else if (controlId == commandCancel) {
            m_machine.ui.dialogs.EndModal(m_procedure.dialog, 11);
        }
    };
    m_machine.ui.messages.SetTimer(owner, 1, 10);
    m_ownerProcedure.answer = [&](const Message& message) {
        if (message.kind != MessageKind::Timer)
            return false;
        m_machine.ui.messages.KillTimer(owner, message.parameter);
        operator_input::Click(message.parameter == 1 ? *QtMachine::Control(stageTitle, 1009)
                                                     : *QtMachine::Control(contrastTitle, commandCancel));
        return true;
    };
    EXPECT_EQ(m_machine.ui.dialogs.RunModal(130, owner, m_procedure), 11);
    EXPECT_EQ(innerResult, 22);
}

TEST_F(QtDialogsTest, EndsAModalDialogWhenTheProgramQuitsInTheMiddle) {
    const WindowHandle owner = MakeOwner();
    m_machine.ui.messages.SetTimer(owner, 1, 10);
    m_ownerProcedure.answer = [&](const Message& message) {
        if (message.kind != MessageKind::Timer)
            return false;
        m_machine.ui.messages.KillTimer(owner, 1);
        m_machine.ui.messages.PostQuit(6);
        return true;
    };
    EXPECT_EQ(m_machine.ui.dialogs.RunModal(130, owner, m_procedure), 0);
    EXPECT_EQ(QtMachine::TopLevel(stageTitle), nullptr);
}

TEST_F(QtDialogsTest, EndsAModalDialogWhenItsOwnerGoes) {
    const WindowHandle owner = MakeOwner();
    m_machine.ui.messages.SetTimer(owner, 1, 10);
    bool destroyed = false;
    m_ownerProcedure.answer = [&](const Message& message) {
        if (message.kind == MessageKind::Timer && !std::exchange(destroyed, true))
            m_machine.ui.windows.Destroy(owner);
        return true;
    };
    EXPECT_EQ(m_machine.ui.dialogs.RunModal(130, owner, m_procedure), 0);
    EXPECT_TRUE(destroyed);
}

} // namespace
} // namespace tessaro
