#include "tests/platform/qt_machine.h"
#include "tests/platform/recording_procedures.h"

#include <QImage>
#include <QScreen>

#include <gtest/gtest.h>

namespace tessaro {
namespace {

/// What the window shows, as a picture of it.
class QtFrameViewTest : public testing::Test {
protected:
    QtFrameViewTest() {
        m_machine.ui.windows.RegisterWindowClass({"main", &m_procedure});
        m_window = m_machine.ui.windows.MakeWindow({"main", "Main", {}, 0, 0, 400, 300});
        m_machine.ui.windows.Show(m_window);
        m_machine.DispatchAll();
    }

    void Fill(const SurfaceRectangle& area, Colour colour) {
        const DeviceContext context = m_machine.ui.drawing.GetWindowContext(m_window);
        m_machine.ui.drawing.FillArea(context, area, colour);
        m_machine.ui.drawing.ReleaseContext(context);
    }

    static QRgb Shown(int x, int y) {
        QWidget* window = QtMachine::TopLevel("Main");
        return window->screen()->grabWindow(window->winId()).toImage().pixel(x, y);
    }

    QtMachine m_machine;
    RecordingWindowProcedure m_procedure;
    WindowHandle m_window = WindowHandle::None;
};

TEST_F(QtFrameViewTest, ShowsWhatWasDrawnOneToOneWithoutAnyMessageDispatched) {
    EXPECT_EQ(Shown(10, 20), qRgb(255, 255, 255)) << "white at first";
    Fill({10, 20, 12, 23}, pureRed);
    EXPECT_EQ(Shown(10, 20), qRgb(255, 0, 0));
    EXPECT_EQ(Shown(11, 22), qRgb(255, 0, 0));
    EXPECT_EQ(Shown(12, 22), qRgb(255, 255, 255));
    EXPECT_EQ(Shown(11, 23), qRgb(255, 255, 255));
    EXPECT_EQ(Shown(9, 20), qRgb(255, 255, 255));
}

TEST_F(QtFrameViewTest, RestoresWhatWasDrawnAfterItWasHidden) {
    Fill({10, 20, 30, 40}, pureBlue);
    m_machine.ui.windows.Hide(m_window);
    m_machine.DispatchAll();
    EXPECT_EQ(QtMachine::TopLevel("Main"), nullptr);
    Fill({100, 100, 110, 110}, pureRed); // while nobody can see it
    m_machine.ui.windows.Show(m_window);
    m_machine.DispatchAll();
    EXPECT_EQ(Shown(15, 25), qRgb(0, 0, 255));
    EXPECT_EQ(Shown(105, 105), qRgb(255, 0, 0));
    EXPECT_EQ(m_procedure.Count(MessageKind::Paint), 1U) << "it restores that by itself";
}

TEST_F(QtFrameViewTest, LosesNothingWhileItIsSmall) {
    Fill({300, 200, 310, 210}, pureBlue);
    QWidget* window = QtMachine::TopLevel("Main");
    const QSize before = window->size();
    window->resize(100, 80);
    m_machine.DispatchAll();
    window->resize(before);
    m_machine.DispatchAll();
    EXPECT_EQ(Shown(305, 205), qRgb(0, 0, 255));
}

TEST_F(QtFrameViewTest, IsWhiteWhereItHasGrown) {
    QtMachine::TopLevel("Main")->resize(600, 500);
    m_machine.DispatchAll();
    EXPECT_EQ(Shown(550, 450), qRgb(255, 255, 255));
    Fill({549, 449, 551, 451}, black);
    EXPECT_EQ(Shown(550, 450), qRgb(0, 0, 0));
}

TEST_F(QtFrameViewTest, ShowsDrawingOfTheSurfaceWhenTheContextIsReleased) {
    const DeviceContext context = m_machine.ui.drawing.GetWindowContext(m_window);
    m_machine.ui.drawing.Surface(context)->DrawFrame({50, 60, 70, 80}, 1, black);
    m_machine.ui.drawing.ReleaseContext(context);
    EXPECT_EQ(Shown(50, 60), qRgb(0, 0, 0));
    EXPECT_EQ(Shown(69, 79), qRgb(0, 0, 0));
    EXPECT_EQ(Shown(60, 70), qRgb(255, 255, 255));
}

} // namespace
} // namespace tessaro
