#include "app/main_window.h"

#include "app/live_view.h"
#include "app/menu_commands.h"
#include "app/number_text.h"
#include "camera/camera_session.h"
#include "stage/stage_link.h"

namespace tessaro {
namespace {

constexpr std::uint32_t createWaitMs = 10;
constexpr std::uint32_t destroyWaitMs = 100;
constexpr std::uint32_t keyWaitMs = 10;
constexpr double keyStepZ = 3.0; // um

} // namespace

bool MainWindow::HandleMessage(const Message& message) {
    switch (message.kind) {
    case MessageKind::Create:
        Create(message.window);
        return true;
    case MessageKind::Destroy:
        Destroy();
        return true;
    case MessageKind::Paint:
        Paint();
        return true;
    case MessageKind::KeyDown:
        Key(message.parameter);
        return true;
    case MessageKind::Command:
        RunMenuCommand(m_operations, LowWord(message.parameter));
        return true;
    case MessageKind::Timer:
        Tick(message.parameter);
        return true;
    case MessageKind::MouseMove:
        m_operations.TakeKeyboardFocus();
        return true;
    case MessageKind::LeftButtonPress:
        m_operations.ProbePixel(message.position);
        return true;
    default:
        return false;
    }
}

void MainWindow::Create(WindowHandle window) {
    m_operations.AdoptMainWindow(window);
    m_operations.Wait(createWaitMs);
    m_operations.OpenControlPanel();
}

void MainWindow::Destroy() {
    m_operations.StopLiveTimer();
    m_operations.MoveToScanOrigin();
    m_operations.Wait(destroyWaitMs);
    m_operations.PostQuit(0);
    m_operations.CloseDialogs();
}

/// The first paint starts the live view, which draws the image from then on.
void MainWindow::Paint() {
    if (m_state.firstPaint != 1)
        return;
    m_operations.ControlCamera(camera_mode::openAndAdjust);
    m_state.firstPaint = 0;
    m_operations.SwitchLiveView(1);
    m_operations.UpdateFocusMeasures();
    m_operations.ShowStagePosition();
}

void MainWindow::Tick(std::uint32_t timer) {
    if (m_operations.Scanning() || timer != liveTimerId)
        return;
    m_operations.GrabFrame(1);
    m_operations.ShowFrame();
    m_operations.ComputeFrameStatistics();
    m_operations.UpdateFocusMeasures();
}

void MainWindow::Key(std::uint32_t key) {
    if (m_state.keyBusy != 0)
        return;
    m_state.keyBusy = 1;
    ActOnKey(key);
    RefreshAfterKey();
    m_state.keyBusy = 0;
}

void MainWindow::ActOnKey(std::uint32_t key) {
    const double step = m_state.keyStep;
    switch (key) {
    case key::enter:
        Save();
        break;
    case key::pageUp:
        m_operations.ShowInformation("Page up key press");
        m_operations.MoveAxisBy(axisZ, keyStepZ);
        break;
    case key::pageDown:
        m_operations.ShowInformation("Page down key press");
        m_operations.MoveAxisBy(axisZ, -keyStepZ);
        break;
    case key::left:
        MoveByKey(axisX, -step, "left key pressed");
        break;
    case key::up:
        MoveByKey(axisY, step, "up key pressed");
        break;
    case key::right:
        MoveByKey(axisX, step, "right key pressed");
        break;
    case key::down:
        MoveByKey(axisY, -step, "down key pressed");
        break;
    default:
        break;
    }
}

/// Every Enter saves: the counter is back at 0 before it could reach 2.
void MainWindow::Save() {
    ++m_state.enter_count;
    if (m_state.enter_count >= 2)
        return;
    m_operations.MakeSessionFolders(0);
    m_operations.SavePlainImage();
    m_operations.SaveDetailImage();
    m_operations.ShowInformation("Image saved.");
    m_state.enter_count = 0;
}

void MainWindow::MoveByKey(int axis, double um, const char* text) {
    m_operations.MoveAxisBy(axis, um);
    m_operations.ShowInformation(text);
}

/// Whatever the key: the stage may have moved, and the operator sees where to.
void MainWindow::RefreshAfterKey() {
    m_operations.ShowStagePosition();
    m_operations.GrabFrame(1);
    m_operations.ShowFrame();
    m_operations.ComputeFrameStatistics();
    m_operations.UpdateFocusMeasures();
    m_operations.ShowProgress(Formatted("Noise:%.1f  Focus:%.1f",
                                        static_cast<double>(m_operations.NoiseLevel()),
                                        static_cast<double>(m_operations.FocusValue())));
    m_operations.Wait(keyWaitMs);
}

} // namespace tessaro
