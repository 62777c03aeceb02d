#include "tests/platform/operator_input.h"
#include "tests/platform/qt_machine.h"
#include "tests/platform/recording_procedures.h"

#include <QImage>
#include <QMainWindow>

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace tessaro {
namespace {

constexpr int imageWidth = 1232;
constexpr int imageHeight = 1028;

/// What a copy of the window gets, from its upper left corner on.
std::vector<std::uint8_t> PixelsOf(const UserInterface& ui, WindowHandle window, int width, int height) {
    std::vector<std::uint8_t> pixels(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4);
    const DeviceContext context = ui.drawing.GetWindowContext(window);
    const BitmapHandle bitmap = ui.drawing.CreateCompatibleBitmap(context, width, height);
    const DeviceContext memory = ui.drawing.CreateCompatibleContext(context);
    ui.drawing.SelectBitmap(memory, bitmap);
    ui.drawing.CopyPixels(memory, 0, 0, width, height, context, 0, 0);
    BitmapHeader header;
    header.width = width;
    header.height = height;
    header.bitsPerPixel = 32;
    ui.drawing.GetBitmapRows(memory, bitmap, pixels.data(), header);
    ui.drawing.DeleteContext(memory);
    ui.drawing.DeleteBitmap(bitmap);
    ui.drawing.ReleaseContext(context);
    return pixels;
}

TEST(QtWindows, CanBeDrawnOnEverywhereHoweverSmallTheyAreShown) {
    QtMachine machine;
    RecordingWindowProcedure procedure;
    machine.ui.windows.RegisterWindowClass({"main", &procedure, 109});
    const WindowHandle window = machine.ui.windows.MakeWindow({"main", "Main", {}, 0, 0, 1242, 1108});
    const DeviceContext context = machine.ui.drawing.GetWindowContext(window);
    machine.ui.drawing.FillArea(context, {0, 0, imageWidth, imageHeight}, pureRed);
    machine.ui.drawing.ReleaseContext(context);
    const std::vector<std::uint8_t> pixels = PixelsOf(machine.ui, window, imageWidth, imageHeight);
    for (std::size_t i = 0; i < pixels.size(); i += 4)
        ASSERT_EQ(pixels[i + 2], 255) << "pixel " << i / 4;
}

TEST(QtWindows, AreHiddenButCanBeDrawnOnWhileTheyAreDestroyed) {
    QtMachine machine;
    RecordingWindowProcedure procedure;
    machine.ui.windows.RegisterWindowClass({"main", &procedure});
    const WindowHandle window = machine.ui.windows.MakeWindow({"main", "Main", {}, 0, 0, 400, 300});
    machine.ui.windows.Show(window);
    RecordingDialogProcedure dialogProcedure;
    machine.ui.dialogs.ShowModeless(machine.ui.dialogs.CreateModeless(137, window, dialogProcedure));
    machine.DispatchAll();
    EXPECT_NE(QtMachine::TopLevel("Control Panel"), nullptr);
    bool shown = true;
    std::vector<std::uint8_t> drawn;
    procedure.answer = [&](const Message& message) {
        if (message.kind != MessageKind::Destroy)
            return false;
        machine.DispatchAll();
        shown = QtMachine::TopLevel("Main") != nullptr || QtMachine::TopLevel("Control Panel") != nullptr;
        const DeviceContext context = machine.ui.drawing.GetWindowContext(window);
        machine.ui.drawing.FillArea(context, {0, 0, 1, 1}, pureRed);
        machine.ui.drawing.ReleaseContext(context);
        drawn = PixelsOf(machine.ui, window, 1, 1);
        return false;
    };
    machine.ui.windows.Destroy(window);
    EXPECT_FALSE(shown);
    ASSERT_EQ(drawn.size(), 4U);
    EXPECT_EQ(drawn[2], 255);
    EXPECT_EQ(drawn[1], 0);
}

/// A desktop by the environment that says how large everything is to be shown there.
class QtWindowsOnADesktop : public testing::TestWithParam<std::pair<std::string, std::string>> {
protected:
    QtWindowsOnADesktop() { qputenv(GetParam().first.c_str(), QByteArray::fromStdString(GetParam().second)); }
    ~QtWindowsOnADesktop() override { qunsetenv(GetParam().first.c_str()); }
};

TEST_P(QtWindowsOnADesktop, ShowTheWholeImageInPixelsOfTheScreen) {
    QtMachine machine;
    RecordingWindowProcedure procedure;
    machine.ui.windows.RegisterWindowClass({"main", &procedure, 109});
    const WindowHandle window = machine.ui.windows.MakeWindow({"main", "Main", {}, 60, 90, 1242, 1108});
    machine.ui.windows.Show(window);
    machine.DispatchAll();
    auto* widget = static_cast<QMainWindow*>(QtMachine::TopLevel("Main"));
    ASSERT_NE(widget, nullptr);
    QWidget* view = widget->centralWidget();
    const double ratio = widget->devicePixelRatioF();
    EXPECT_GE(view->width() * ratio, imageWidth);
    EXPECT_GE(view->height() * ratio, imageHeight);
    EXPECT_NEAR(view->width() * ratio, 1234, 2) << "no larger than described either";
    EXPECT_LT(view->height() * ratio, 1108 - 39 + 2);
    EXPECT_NEAR(widget->x() * ratio, 60, ratio);
    EXPECT_NEAR(widget->y() * ratio, 90, ratio);

    const DeviceContext context = machine.ui.drawing.GetWindowContext(window);
    machine.ui.drawing.FillArea(context, {0, 0, imageWidth, imageHeight}, pureRed);
    machine.ui.drawing.ReleaseContext(context);
    const QImage shown = view->grab().toImage();
    EXPECT_EQ(shown.pixel(imageWidth - 1, imageHeight - 1), qRgb(255, 0, 0));
    EXPECT_EQ(shown.pixel(imageWidth, 100), qRgb(255, 255, 255));

    procedure.messages.clear();
    operator_input::Press(*view, QPoint(imageWidth - 1, imageHeight - 1) / ratio);
    machine.DispatchAll();
    ASSERT_EQ(procedure.Count(MessageKind::LeftButtonPress), 1U);
    EXPECT_NEAR(PositionX(procedure.messages.back().position), imageWidth - 1, ratio);
    EXPECT_NEAR(PositionY(procedure.messages.back().position), imageHeight - 1, ratio);
}

INSTANTIATE_TEST_SUITE_P(
    Scales, QtWindowsOnADesktop,
    testing::Values(std::pair("QT_SCALE_FACTOR", "1"), std::pair("QT_SCALE_FACTOR", "1.25"),
                    std::pair("QT_SCALE_FACTOR", "1.5"), std::pair("QT_SCALE_FACTOR", "2"),
                    std::pair("QT_SCREEN_SCALE_FACTORS", "2"), std::pair("QT_FONT_DPI", "288")));

} // namespace
} // namespace tessaro
