#include "tests/platform/operator_input.h"
#include "tests/platform/qt_machine.h"
#include "tests/platform/recording_procedures.h"

#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QTimer>

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <utility>

namespace tessaro {
namespace {

/// A popup with a label and an edit beside a main window.
class QtChildControls : public testing::Test {
protected:
    QtChildControls() {
        WindowSystem& windows = m_machine.ui.windows;
        windows.RegisterWindowClass({"main", &m_mainProcedure});
        windows.RegisterWindowClass({"popup", &m_popupProcedure});
        m_main = windows.MakeWindow({"main", "Main", WindowStyle::Overlapped, 0, 0, 500, 400});
        m_popup = windows.MakeWindow({"popup", "Popup", WindowStyle::ToolPopup, 600, 0, 400, 400, m_main});
        m_label = windows.MakeChild(m_popup, {ChildKind::Label, "Step", 5, 275, 40, 20});
        m_edit = windows.MakeChild(m_popup, {ChildKind::Edit, "100", 55, 275, 40, 20});
        for (const WindowHandle window : {m_main, m_popup})
            windows.Show(window);
        m_machine.DispatchAll();
        m_popupProcedure.messages.clear();
    }

    static QWidget& View(const std::string& title) {
        return *static_cast<QMainWindow*>(QtMachine::TopLevel(title))->centralWidget();
    }
    static QLineEdit& Edit() { return *View("Popup").findChild<QLineEdit*>(); }
    static QLabel& Label() { return *View("Popup").findChild<QLabel*>(); }

    void TypeInto(const QWidget& widget, const std::string& digits) {
        for (const char digit : digits)
            operator_input::Type(widget, digit, Qt::NoModifier, QString(QLatin1Char(digit)));
        m_machine.DispatchAll();
    }

    QtMachine m_machine;
    RecordingWindowProcedure m_mainProcedure;
    RecordingWindowProcedure m_popupProcedure;
    WindowHandle m_main = WindowHandle::None;
    WindowHandle m_popup = WindowHandle::None;
    WindowHandle m_label = WindowHandle::None;
    WindowHandle m_edit = WindowHandle::None;
};

TEST_F(QtChildControls, SendPressesOnAnEditUnderItsOwnHandleAndToNoProcedure) {
    operator_input::Press(Edit(), {3, 4});
    operator_input::Release(Edit(), {3, 4});
    Message press;
    ASSERT_TRUE(m_machine.TakeNext(MessageKind::LeftButtonPress, press));
    EXPECT_EQ(press.window, m_edit);
    EXPECT_EQ(PositionX(press.position), 3);
    EXPECT_EQ(PositionY(press.position), 4);
    m_machine.ui.messages.Dispatch(press);
    m_machine.DispatchAll();
    EXPECT_EQ(m_popupProcedure.Count(MessageKind::LeftButtonPress), 0U);
    EXPECT_EQ(m_popupProcedure.Count(MessageKind::LeftButtonRelease), 0U);
}

TEST_F(QtChildControls, LetThePressOnALabelThroughToTheWindow) {
    operator_input::Press(Label(), {3, 4});
    operator_input::Release(Label(), {3, 4});
    Message press;
    ASSERT_TRUE(m_machine.TakeNext(MessageKind::LeftButtonPress, press));
    EXPECT_EQ(press.window, m_popup);
    m_machine.ui.messages.Dispatch(press);
    m_machine.DispatchAll();
    ASSERT_EQ(m_popupProcedure.Count(MessageKind::LeftButtonPress), 1U);
    EXPECT_EQ(press.position, PackPosition(8, 279));
}

TEST_F(QtChildControls, LeaveTheReleaseToTheWindowThatWasPressed) {
    operator_input::Press(View("Popup"), {10, 10});
    m_machine.DispatchAll();
    operator_input::Move(Edit(), {2, 3}, Qt::LeftButton);
    Message move;
    ASSERT_TRUE(m_machine.TakeNext(MessageKind::MouseMove, move));
    EXPECT_EQ(move.window, m_popup);
    m_machine.ui.messages.Dispatch(move);
    operator_input::Release(Edit(), {3, 4});
    Message release;
    ASSERT_TRUE(m_machine.TakeNext(MessageKind::LeftButtonRelease, release));
    EXPECT_EQ(release.window, m_popup);
    EXPECT_EQ(release.position, PackPosition(58, 279));
    m_machine.ui.messages.Dispatch(release);
    EXPECT_EQ(m_popupProcedure.Count(MessageKind::LeftButtonRelease), 1U);
    operator_input::Move(Edit(), {4, 5});
    ASSERT_TRUE(m_machine.TakeNext(MessageKind::MouseMove, move));
    EXPECT_EQ(move.window, m_edit) << "nothing is held any more";
}

TEST_F(QtChildControls, KeepTheReleaseOfAPressOnThemOverTheWindow) {
    operator_input::Press(Edit(), {3, 4});
    m_machine.DispatchAll();
    operator_input::Release(View("Popup"), {10, 10});
    Message release;
    ASSERT_TRUE(m_machine.TakeNext(MessageKind::LeftButtonRelease, release));
    EXPECT_EQ(release.window, m_edit);
    m_machine.ui.messages.Dispatch(release);
    EXPECT_EQ(m_popupProcedure.Count(MessageKind::LeftButtonRelease), 0U);
}

TEST_F(QtChildControls, TakeWhatIsTypedOnceTheyWereClicked) {
    operator_input::Click(Edit());
    m_machine.DispatchAll();
    Edit().selectAll();
    TypeInto(Edit(), "250");
    EXPECT_EQ(m_machine.ui.windows.ChildText(m_edit, 10), "250");
    EXPECT_EQ(m_popupProcedure.Count(MessageKind::KeyDown), 0U);
}

TEST_F(QtChildControls, SendKeysUnderTheirOwnHandle) {
    operator_input::Click(Edit());
    m_machine.DispatchAll();
    operator_input::PressKey(Edit(), Qt::Key_7, Qt::NoModifier, QStringLiteral("7"));
    Message key;
    ASSERT_TRUE(m_machine.TakeNext(MessageKind::KeyDown, key));
    EXPECT_EQ(key.window, m_edit);
}

TEST_F(QtChildControls, GiveTheKeysAwayWhenAWindowTakesTheFocus) {
    operator_input::Click(Edit());
    m_machine.DispatchAll();
    EXPECT_TRUE(Edit().hasFocus());
    m_machine.ui.windows.SetKeyboardFocus(m_main);
    m_machine.DispatchAll();
    operator_input::Type(View("Main"), Qt::Key_Up);
    m_machine.DispatchAll();
    EXPECT_EQ(m_mainProcedure.Count(MessageKind::KeyDown), 1U);
    EXPECT_EQ(m_machine.ui.windows.ChildText(m_edit, 10), "100");
}

TEST_F(QtChildControls, StayInFrontOfWhatIsDrawn) {
    const DeviceContext context = m_machine.ui.drawing.GetWindowContext(m_popup);
    m_machine.ui.drawing.FillArea(context, {0, 0, 400, 400}, pureRed);
    m_machine.ui.drawing.ReleaseContext(context);
    const QImage shown = View("Popup").grab().toImage();
    EXPECT_EQ(shown.pixel(57, 277), qRgb(255, 255, 255)) << "the edit";
    EXPECT_EQ(shown.pixel(97, 277), qRgb(255, 0, 0));
}

TEST_F(QtChildControls, ShowTheLongestStepWhole) {
    m_machine.ui.windows.SetChildText(m_edit, "-1250");
    const QImage text = Edit().grab().toImage();
    int left = text.width();
    int right = 0;
    for (int y = 3; y < text.height() - 3; ++y) {
        for (int x = 1; x < text.width() - 1; ++x) {
            if (qGray(text.pixel(x, y)) < 128) {
                left = std::min(left, x);
                right = std::max(right, x);
            }
        }
    }
    EXPECT_GE(left, 2);
    EXPECT_LE(right, text.width() - 3);
    EXPECT_LE(Edit().fontMetrics().height(), Edit().height() - 2);
}

TEST_F(QtChildControls, KnowWhetherTheLeftButtonIsHeldBeforeItsMessageIsTaken) {
    QWidget& view = View("Popup");
    EXPECT_FALSE(m_machine.ui.windows.IsLeftButtonHeld());
    operator_input::Press(view, {10, 10});
    m_machine.DispatchAll();
    EXPECT_TRUE(m_machine.ui.windows.IsLeftButtonHeld());
    operator_input::Release(view, {10, 10});
    Message release;
    ASSERT_TRUE(m_machine.TakeNext(MessageKind::LeftButtonRelease, release));
    EXPECT_FALSE(m_machine.ui.windows.IsLeftButtonHeld());
}

TEST_F(QtChildControls, KnowThatTheButtonWasLetGoWhileAQuestionKeepsTheWindowFromHearing) {
    QWidget& view = View("Popup");
    operator_input::Press(view, {10, 10});
    m_machine.DispatchAll();
    operator_input::Release(view, {10, 10});
    RecordingDialogProcedure about;
    about.onCommand = [&](int, Notification) { m_machine.ui.dialogs.EndModal(about.dialog, 1); };
    about.onInitialize = [&](WindowHandle) {
        QTimer::singleShot(50, &view,
                           [&] { operator_input::Click(*QtMachine::Control("About Tessaro", 1)); });
    };
    m_machine.ui.dialogs.RunModal(103, m_main, about);
    m_machine.DispatchAll();
    EXPECT_FALSE(m_machine.ui.windows.IsLeftButtonHeld());
}

/// A desktop by the environment that says how large everything is to be shown there.
class QtChildControlsOnADesktop : public testing::TestWithParam<std::pair<std::string, std::string>> {
protected:
    QtChildControlsOnADesktop() {
        qputenv(GetParam().first.c_str(), QByteArray::fromStdString(GetParam().second));
    }
    ~QtChildControlsOnADesktop() override { qunsetenv(GetParam().first.c_str()); }
};

TEST_P(QtChildControlsOnADesktop, StandWhereTheyWerePutInPixelsOfTheScreen) {
    QtMachine machine;
    RecordingWindowProcedure procedure;
    machine.ui.windows.RegisterWindowClass({"popup", &procedure});
    const WindowHandle popup =
        machine.ui.windows.MakeWindow({"popup", "Popup", WindowStyle::ToolPopup, 0, 0, 400, 400});
    machine.ui.windows.MakeChild(popup, {ChildKind::Edit, "-1250", 55, 275, 40, 20});
    machine.ui.windows.Show(popup);
    machine.DispatchAll();
    const auto* edit = QtMachine::TopLevel("Popup")->findChild<QLineEdit*>();
    ASSERT_NE(edit, nullptr);
    const double ratio = edit->devicePixelRatioF();
    EXPECT_NEAR(edit->x() * ratio, 55, ratio / 2);
    EXPECT_NEAR(edit->y() * ratio, 275, ratio / 2);
    EXPECT_NEAR(edit->width() * ratio, 40, ratio / 2);
    EXPECT_NEAR(edit->height() * ratio, 20, ratio / 2);
    EXPECT_LE(edit->fontMetrics().height(), edit->height() - 2);
}

INSTANTIATE_TEST_SUITE_P(Scales, QtChildControlsOnADesktop,
                         testing::Values(std::pair("QT_SCALE_FACTOR", "1"),
                                         std::pair("QT_SCALE_FACTOR", "1.5"),
                                         std::pair("QT_SCALE_FACTOR", "2"), std::pair("QT_FONT_DPI", "288")));

} // namespace
} // namespace tessaro
