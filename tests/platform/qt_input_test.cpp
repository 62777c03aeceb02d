#include "tests/platform/operator_input.h"
#include "tests/platform/qt_machine.h"
#include "tests/platform/recording_procedures.h"

#include <QElapsedTimer>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace tessaro {
namespace {

/// A main window with the menu, shown, and the control panel beside it.
class QtInput : public testing::Test {
protected:
    QtInput() {
        m_machine.ui.windows.RegisterWindowClass({"main", &m_procedure, 109, 136});
        m_window = m_machine.ui.windows.MakeWindow({"main", "Main", {}, 0, 0, 700, 500});
        m_machine.ui.windows.Show(m_window);
        m_machine.ui.windows.SetKeyboardFocus(m_window);
        m_machine.DispatchAll();
        m_widget = QtMachine::TopLevel("Main");
        m_view = m_widget->findChild<QMenuBar*>() != nullptr ? m_widget->childAt(m_widget->rect().center())
                                                             : nullptr;
        m_procedure.messages.clear();
    }

    void OpenPanel() {
        m_panel = m_machine.ui.dialogs.CreateModeless(137, m_window, m_panelProcedure);
        m_machine.ui.dialogs.ShowModeless(m_panel);
        m_machine.DispatchAll();
        m_panelProcedure.commands.clear();
    }

    template<typename Widget = QPushButton>
    Widget& PanelControl(int controlId) {
        return *QtMachine::Control<Widget>("Control Panel", controlId);
    }

    /// All messages that wait, dispatched.
    std::vector<Message> TakeAll() {
        std::vector<Message> taken;
        Message message;
        while (m_machine.ui.messages.TakeMessage(message, 0)) {
            taken.push_back(message);
            m_machine.ui.messages.Dispatch(message);
        }
        return taken;
    }

    /// Quick enough for a double click; no hand is so quick that both presses have the same time.
    void ClickTwice() {
        for (int i = 0; i < 2; ++i) {
            operator_input::Press(*m_view, {50, 60});
            operator_input::Release(*m_view, {50, 60});
            QElapsedTimer between;
            between.start();
            while (!between.hasExpired(2)) {
            }
        }
    }

    /// As the program does when nothing else runs. A timer's messages let it look now and then.
    template<typename Condition>
    void DispatchByWaitingUntil(Condition holds) {
        m_machine.ui.messages.SetTimer(m_window, 1, 5);
        QElapsedTimer waited;
        waited.start();
        Message message;
        while (!holds() && waited.elapsed() < 5000 && m_machine.ui.messages.WaitMessage(message))
            m_machine.ui.messages.Dispatch(message);
        m_machine.ui.messages.KillTimer(m_window, 1);
    }

    static std::vector<Message> OfKind(const std::vector<Message>& messages, MessageKind kind) {
        std::vector<Message> found;
        for (const Message& message : messages) {
            if (message.kind == kind)
                found.push_back(message);
        }
        return found;
    }

    /// The menu of the bar by its number from the left.
    QMenu& MenuAt(int index) { return *m_widget->findChild<QMenuBar*>()->actions().at(index)->menu(); }

    void ClickMenuBar(int index) {
        auto& bar = *m_widget->findChild<QMenuBar*>();
        const QPoint position = bar.actionGeometry(bar.actions().at(index)).center();
        operator_input::Press(bar, position);
        operator_input::Release(bar, position);
    }

    QtMachine m_machine;
    RecordingWindowProcedure m_procedure;
    RecordingDialogProcedure m_panelProcedure;
    WindowHandle m_window = WindowHandle::None;
    WindowHandle m_panel = WindowHandle::None;
    QWidget* m_widget = nullptr;
    QWidget* m_view = nullptr; // the client area
};

TEST_F(QtInput, ShowsAPressOnAButtonBeforeTheButtonReacts) {
    OpenPanel();
    auto& button = PanelControl(1032);
    operator_input::Press(button, {5, 5});
    Message message;
    ASSERT_TRUE(m_machine.TakeNext(MessageKind::LeftButtonPress, message));
    EXPECT_EQ(message.window, m_panel);
    EXPECT_FALSE(button.isDown()) << "it has not been dispatched yet";
    m_machine.ui.messages.Dispatch(message);
    EXPECT_TRUE(button.isDown());
    operator_input::Release(button, {5, 5});
    TakeAll();
    EXPECT_EQ(m_panelProcedure.Count(1032, Notification::Clicked), 1U);
}

TEST_F(QtInput, KeepsAPressFromAButtonWhenItIsNotDispatched) {
    OpenPanel();
    auto& button = PanelControl(1013);
    operator_input::Press(button, {5, 5});
    Message message;
    ASSERT_TRUE(m_machine.TakeNext(MessageKind::LeftButtonPress, message));
    operator_input::Release(button, {5, 5});
    TakeAll();
    EXPECT_FALSE(button.isDown());
    EXPECT_EQ(m_panelProcedure.Count(1013, Notification::Clicked), 0U);
    // The next one is the button's again.
    operator_input::Click(button);
    TakeAll();
    EXPECT_EQ(m_panelProcedure.Count(1013, Notification::Clicked), 1U);
}

TEST_F(QtInput, KeepsADoubleClickFromAButtonWhenNeitherPressIsDispatched) {
    OpenPanel();
    auto& button = PanelControl(1013);
    for (int i = 0; i < 2; ++i) {
        operator_input::Press(button, {5, 5});
        operator_input::Release(button, {5, 5});
    }
    Message message;
    int presses = 0;
    while (m_machine.ui.messages.TakeMessage(message, 0)) {
        if (message.kind == MessageKind::LeftButtonPress)
            ++presses;
        else
            m_machine.ui.messages.Dispatch(message);
    }
    EXPECT_EQ(presses, 2);
    EXPECT_EQ(m_panelProcedure.Count(1013, Notification::Clicked), 0U);
}

TEST_F(QtInput, FiresAButtonTwiceByADoubleClick) {
    OpenPanel();
    auto& button = PanelControl(1042);
    for (int i = 0; i < 2; ++i) {
        operator_input::Press(button, {5, 5});
        operator_input::Release(button, {5, 5});
    }
    EXPECT_EQ(OfKind(TakeAll(), MessageKind::LeftButtonPress).size(), 2U);
    EXPECT_EQ(m_panelProcedure.Count(1042, Notification::Clicked), 2U);
}

TEST_F(QtInput, TellsTheClientPositionOfAPress) {
    operator_input::Press(*m_view, {123, 45});
    operator_input::Release(*m_view, {130, 50});
    const std::vector<Message> taken = TakeAll();
    ASSERT_EQ(OfKind(taken, MessageKind::LeftButtonPress).size(), 1U);
    const Message press = OfKind(taken, MessageKind::LeftButtonPress)[0];
    EXPECT_EQ(press.window, m_window);
    EXPECT_EQ(PositionX(press.position), 123);
    EXPECT_EQ(PositionY(press.position), 45);
    ASSERT_EQ(m_procedure.Count(MessageKind::LeftButtonPress), 1U);
    ASSERT_EQ(m_procedure.Count(MessageKind::LeftButtonRelease), 1U);
    const Message told = OfKind(m_procedure.messages, MessageKind::LeftButtonPress)[0];
    EXPECT_EQ(told.position, PackPosition(123, 45));
    const Message released = OfKind(m_procedure.messages, MessageKind::LeftButtonRelease)[0];
    EXPECT_EQ(released.position, PackPosition(130, 50));
}

TEST_F(QtInput, TellsPositionsBesideTheWindowWhileAButtonIsHeld) {
    operator_input::Press(*m_view, {3, 4});
    operator_input::Move(*m_view, {-20, -7}, Qt::LeftButton);
    operator_input::Release(*m_view, {-20, -7});
    TakeAll();
    const std::vector<Message> moves = OfKind(m_procedure.messages, MessageKind::MouseMove);
    ASSERT_FALSE(moves.empty());
    EXPECT_EQ(PositionX(moves.back().position), -20);
    EXPECT_EQ(PositionY(moves.back().position), -7);
    const std::vector<Message> releases = OfKind(m_procedure.messages, MessageKind::LeftButtonRelease);
    ASSERT_EQ(releases.size(), 1U);
    EXPECT_EQ(releases[0].position, PackPosition(-20, -7));
}

TEST_F(QtInput, TellsOfMovesWithoutAButton) {
    operator_input::Move(*m_view, {200, 100});
    TakeAll();
    const std::vector<Message> moves = OfKind(m_procedure.messages, MessageKind::MouseMove);
    ASSERT_EQ(moves.size(), 1U);
    EXPECT_EQ(moves[0].position, PackPosition(200, 100));
}

TEST_F(QtInput, CountsADoubleClickAsTwoPresses) {
    ClickTwice();
    EXPECT_EQ(OfKind(TakeAll(), MessageKind::LeftButtonPress).size(), 2U);
    EXPECT_EQ(m_procedure.Count(MessageKind::LeftButtonPress), 2U);
    EXPECT_EQ(m_procedure.Count(MessageKind::LeftButtonRelease), 2U);
}

/// As where a press opens a question or moves the stage: the release is handled before the press has ended.
TEST_F(QtInput, CountsADoubleClickAsTwoPressesWhosePressesHandleWhatFollows) {
    m_procedure.answer = [this](const Message& message) {
        if (message.kind == MessageKind::LeftButtonPress)
            TakeAll();
        return true;
    };
    ClickTwice();
    TakeAll();
    EXPECT_EQ(m_procedure.Count(MessageKind::LeftButtonPress), 2U);
    EXPECT_EQ(m_procedure.Count(MessageKind::LeftButtonRelease), 2U);
}

/// Nobody takes input out of Qt's hands then, which tells a window of the second press by a double click
/// alone.
TEST_F(QtInput, CountsADoubleClickAsTwoPressesWhileTheProgramOnlyWaits) {
    ClickTwice();
    DispatchByWaitingUntil([&] { return m_procedure.Count(MessageKind::LeftButtonRelease) == 2; });
    EXPECT_EQ(m_procedure.Count(MessageKind::LeftButtonPress), 2U);
    EXPECT_EQ(m_procedure.Count(MessageKind::LeftButtonRelease), 2U);
}

TEST_F(QtInput, TakesOtherButtonsForNoPress) {
    for (const Qt::MouseButton button : {Qt::RightButton, Qt::MiddleButton}) {
        operator_input::Press(*m_view, {50, 60}, button);
        operator_input::Release(*m_view, {50, 60}, button);
    }
    EXPECT_TRUE(OfKind(TakeAll(), MessageKind::LeftButtonPress).empty());
    EXPECT_EQ(m_procedure.Count(MessageKind::LeftButtonPress), 0U);
    EXPECT_EQ(m_procedure.Count(MessageKind::LeftButtonRelease), 0U);
}

TEST_F(QtInput, TakesNoPressOnTheMenuBarOrAnOpenMenuForAPressInTheWindow) {
    ClickMenuBar(4);
    EXPECT_TRUE(OfKind(TakeAll(), MessageKind::LeftButtonPress).empty());
    QMenu& menu = MenuAt(4);
    ASSERT_TRUE(menu.isVisible());
    const QPoint entry = menu.actionGeometry(menu.actions().at(3)).center();
    operator_input::Press(menu, entry);
    operator_input::Release(menu, entry);
    const std::vector<Message> taken = TakeAll();
    EXPECT_TRUE(OfKind(taken, MessageKind::LeftButtonPress).empty());
    ASSERT_EQ(OfKind(taken, MessageKind::Command).size(), 1U);
    EXPECT_EQ(OfKind(taken, MessageKind::Command)[0].parameter, 32802U);
    EXPECT_FALSE(menu.isVisible());
}

TEST_F(QtInput, TakesNoPressThatClosesAMenuForAPressInTheWindow) {
    ClickMenuBar(0);
    TakeAll();
    ASSERT_TRUE(MenuAt(0).isVisible());
    operator_input::Press(*m_view, {400, 300});
    EXPECT_TRUE(OfKind(TakeAll(), MessageKind::LeftButtonPress).empty());
    operator_input::Release(*m_view, {400, 300});
    TakeAll();
    EXPECT_FALSE(MenuAt(0).isVisible());
}

TEST_F(QtInput, SendsEveryMenuEntryAsACommandThroughTheQueue) {
    for (int index = 0; index < 6; ++index) {
        const QList<QAction*> entries = MenuAt(index).actions();
        for (QAction* entry : entries) {
            if (entry->isSeparator())
                continue;
            ClickMenuBar(index);
            TakeAll();
            QMenu& menu = MenuAt(index);
            ASSERT_TRUE(menu.isVisible()) << index;
            m_procedure.messages.clear();
            const QPoint position = menu.actionGeometry(entry).center();
            operator_input::Press(menu, position);
            operator_input::Release(menu, position);
            Message message;
            ASSERT_TRUE(m_machine.TakeNext(MessageKind::Command, message)) << entry->text().toStdString();
            EXPECT_EQ(message.window, m_window);
            EXPECT_EQ(LowWord(message.parameter), entry->property("commandId").toUInt());
            EXPECT_EQ(m_procedure.Count(MessageKind::Command), 0U) << "before it is dispatched";
            m_machine.ui.messages.Dispatch(message);
            ASSERT_EQ(m_procedure.Count(MessageKind::Command), 1U);
        }
    }
}

TEST_F(QtInput, ReachesTheMenuByTheKeysThatItsTextsMark) {
    struct Way {
        int menu;
        Qt::Key menuKey;
        Qt::Key entryKey;
        std::uint32_t command;
    };
    for (const Way& way : {Way{0, Qt::Key_F, Qt::Key_X, 105}, Way{5, Qt::Key_H, Qt::Key_A, 104}}) {
        operator_input::Type(*m_view, way.menuKey, Qt::AltModifier, QString(QChar(way.menuKey)).toLower());
        TakeAll();
        ASSERT_TRUE(MenuAt(way.menu).isVisible());
        operator_input::Type(MenuAt(way.menu), way.entryKey, Qt::NoModifier,
                             QString(QChar(way.entryKey)).toLower());
        const std::vector<Message> commands = OfKind(TakeAll(), MessageKind::Command);
        ASSERT_EQ(commands.size(), 1U);
        EXPECT_EQ(commands[0].parameter, way.command);
    }
    EXPECT_EQ(m_procedure.Count(MessageKind::KeyDown), 0U);
}

TEST_F(QtInput, OpensAMenuByKeyNotBeforeTheKeyIsDispatched) {
    operator_input::Type(*m_view, Qt::Key_Left);
    operator_input::Type(*m_view, Qt::Key_F, Qt::AltModifier, QStringLiteral("f"));
    Message message;
    ASSERT_TRUE(m_machine.TakeNext(MessageKind::KeyDown, message));
    m_machine.ui.messages.Dispatch(message);
    ASSERT_TRUE(m_machine.TakeNext(MessageKind::KeyDown, message));
    EXPECT_EQ(m_procedure.Count(MessageKind::KeyDown), 1U) << "the arrow's";
    EXPECT_FALSE(MenuAt(0).isVisible());
    m_machine.ui.messages.Dispatch(message);
    EXPECT_TRUE(MenuAt(0).isVisible());
    EXPECT_EQ(m_procedure.Count(MessageKind::KeyDown), 1U) << "the other is the menu's alone";
}

TEST_F(QtInput, SendsVirtualKeyCodesToTheWindow) {
    const std::vector<std::pair<int, std::uint32_t>> codes = {
        {Qt::Key_Return, 13}, {Qt::Key_Enter, 13}, {Qt::Key_PageUp, 33}, {Qt::Key_PageDown, 34},
        {Qt::Key_Left, 37},   {Qt::Key_Up, 38},    {Qt::Key_Right, 39},  {Qt::Key_Down, 40},
        {Qt::Key_A, 65},      {Qt::Key_Z, 90},     {Qt::Key_0, 48},      {Qt::Key_9, 57}};
    for (const auto& [qtKey, code] : codes) {
        m_procedure.messages.clear();
        operator_input::Type(*m_view, qtKey);
        const std::vector<Message> taken = OfKind(TakeAll(), MessageKind::KeyDown);
        ASSERT_EQ(taken.size(), 1U) << code;
        EXPECT_EQ(taken[0].parameter, code);
        EXPECT_EQ(taken[0].window, m_window);
        ASSERT_EQ(m_procedure.Count(MessageKind::KeyDown), 1U) << code;
        EXPECT_EQ(OfKind(m_procedure.messages, MessageKind::KeyDown)[0].parameter, code);
    }
}

TEST_F(QtInput, SendsTheSameCodesFromTheKeypad) {
    for (const auto& [qtKey, code] : {std::pair<int, std::uint32_t>{Qt::Key_Enter, 13},
                                      {Qt::Key_PageUp, 33},
                                      {Qt::Key_Left, 37},
                                      {Qt::Key_Down, 40}}) {
        m_procedure.messages.clear();
        operator_input::Type(*m_view, qtKey, Qt::KeypadModifier);
        TakeAll();
        ASSERT_EQ(m_procedure.Count(MessageKind::KeyDown), 1U) << code;
        EXPECT_EQ(OfKind(m_procedure.messages, MessageKind::KeyDown)[0].parameter, code);
    }
}

TEST_F(QtInput, KeepsTheLatestOfManyMoves) {
    for (int x = 100; x <= 150; ++x)
        operator_input::Move(*m_view, {x, 100});
    TakeAll();
    ASSERT_EQ(m_procedure.Count(MessageKind::MouseMove), 1U);
    EXPECT_EQ(m_procedure.messages.back().position, PackPosition(150, 100));
}

TEST_F(QtInput, KeepsTheLengthOfAWaitWhileQtHasWorkToDo) {
    qint64 shortest = 1'000'000;
    // Others share the machine: one of several waits is on time.
    for (int i = 0; i < 10; ++i) {
        m_widget->update(); // painted in the middle of the wait, which is no message
        QElapsedTimer waited;
        waited.start();
        Message none;
        EXPECT_FALSE(m_machine.ui.messages.TakeMessage(none, 30));
        shortest = std::min(shortest, waited.nsecsElapsed() / 1000);
    }
    EXPECT_GE(shortest, 29'000);
    EXPECT_LE(shortest, 35'000);
}

TEST_F(QtInput, SendsOtherKeysWithOtherCodes) {
    for (const int qtKey : {Qt::Key_Tab, Qt::Key_Escape, Qt::Key_Space, Qt::Key_F5, Qt::Key_Shift,
                            Qt::Key_Percent, Qt::Key_Ampersand, Qt::Key_ParenLeft, Qt::Key_Apostrophe}) {
        m_procedure.messages.clear();
        operator_input::Type(*m_view, qtKey);
        TakeAll();
        ASSERT_EQ(m_procedure.Count(MessageKind::KeyDown), 1U) << qtKey;
        const std::uint32_t code = OfKind(m_procedure.messages, MessageKind::KeyDown)[0].parameter;
        EXPECT_TRUE(code != 13 && (code < 33 || code > 40)) << qtKey << " became " << code;
    }
}

TEST_F(QtInput, KeepsKeysWithAltFromTheWindow) {
    for (const int qtKey : {Qt::Key_Return, Qt::Key_Left, Qt::Key_PageUp, Qt::Key_Q}) {
        operator_input::Type(*m_view, qtKey, Qt::AltModifier);
        TakeAll();
    }
    EXPECT_EQ(m_procedure.Count(MessageKind::KeyDown), 0U);
}

TEST_F(QtInput, DoesNothingByTheAccelerators) {
    ASSERT_TRUE(m_machine.ui.windows.LoadAccelerators(109));
    operator_input::Type(*m_view, Qt::Key_Question, Qt::AltModifier | Qt::ShiftModifier, QStringLiteral("?"));
    operator_input::Type(*m_view, Qt::Key_Slash, Qt::AltModifier, QStringLiteral("/"));
    EXPECT_TRUE(OfKind(TakeAll(), MessageKind::Command).empty());
    EXPECT_TRUE(m_procedure.messages.empty());
}

TEST_F(QtInput, RepeatsAKeyThatIsHeld) {
    for (int i = 0; i < 3; ++i)
        operator_input::PressKey(*m_view, Qt::Key_Left);
    operator_input::ReleaseKey(*m_view, Qt::Key_Left);
    TakeAll();
    EXPECT_EQ(m_procedure.Count(MessageKind::KeyDown), 3U);
}

TEST_F(QtInput, GivesKeysToTheWindowThatAskedForThem) {
    OpenPanel();
    auto& edit = PanelControl<QLineEdit>(1012);
    operator_input::Click(edit);
    TakeAll();
    EXPECT_TRUE(edit.hasFocus());
    m_machine.ui.windows.SetKeyboardFocus(m_window);
    TakeAll();
    EXPECT_TRUE(m_widget->isActiveWindow());
    operator_input::Type(*m_view, Qt::Key_Up);
    TakeAll();
    EXPECT_EQ(m_procedure.Count(MessageKind::KeyDown), 1U);
}

TEST_F(QtInput, KeepsMouseAndKeysInTheirOrder) {
    operator_input::Press(*m_view, {10, 10});
    operator_input::PressKey(*m_view, Qt::Key_Up);
    operator_input::Release(*m_view, {10, 10});
    operator_input::PressKey(*m_view, Qt::Key_Down);
    std::vector<MessageKind> kinds;
    TakeAll();
    for (const Message& message : m_procedure.messages) {
        if (message.kind != MessageKind::MouseMove)
            kinds.push_back(message.kind);
    }
    EXPECT_EQ(kinds, (std::vector<MessageKind>{MessageKind::LeftButtonPress, MessageKind::KeyDown,
                                               MessageKind::LeftButtonRelease, MessageKind::KeyDown}));
}

TEST_F(QtInput, HasNoInputForAWindowThatWentBeforeItsTurn) {
    operator_input::Press(*m_view, {10, 10});
    Message message;
    ASSERT_TRUE(m_machine.TakeNext(MessageKind::LeftButtonPress, message));
    m_machine.ui.windows.Destroy(m_window);
    m_procedure.messages.clear();
    m_machine.ui.messages.Dispatch(message);
    TakeAll();
    EXPECT_TRUE(m_procedure.messages.empty());
}

} // namespace
} // namespace tessaro
