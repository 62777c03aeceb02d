#include "stage/motor_controller.h"

#include "app/number_text.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

namespace tessaro {

/// A button and what it does; edges do not belong to it.
struct JogButton {
    const char* label;
    SurfaceRectangle area; // client pixels
    int axis;
    int direction;
};

namespace {

constexpr std::array<JogButton, 6> jogButtons = {{{"-X", {5, 95, 95, 185}, axisX, -1},
                                                  {"+X", {185, 95, 275, 185}, axisX, 1},
                                                  {"+Y", {95, 5, 185, 95}, axisY, 1},
                                                  {"-Y", {95, 185, 185, 275}, axisY, -1},
                                                  {"+Z", {280, 50, 370, 140}, axisZ, 1},
                                                  {"-Z", {280, 140, 370, 230}, axisZ, -1}}};

constexpr Colour buttonColour{0xC8, 0xC8, 0xC8};
constexpr Colour pressedColour{255, 200, 100};
constexpr std::int32_t longestStep = 1250; // um, either way
constexpr std::size_t stepBytes = 10;      // that are looked at
constexpr std::uint32_t pumpMs = 5;        // after each step

const JogButton* ButtonAt(int x, int y) {
    const auto* const found = std::find_if(jogButtons.begin(), jogButtons.end(), [&](const auto& button) {
        const SurfaceRectangle& area = button.area;
        return area.left < x && x < area.right && area.top < y && y < area.bottom;
    });
    return found != jogButtons.end() ? found : nullptr;
}

/// Draws on a window while it lives.
class ButtonPainter {
public:
    ButtonPainter(WindowDrawing& drawing, WindowHandle window)
        : m_drawing(drawing), m_context(drawing.GetWindowContext(window)),
          m_surface(drawing.Surface(m_context)) {}
    ~ButtonPainter() { m_drawing.ReleaseContext(m_context); }
    ButtonPainter(const ButtonPainter&) = delete;
    ButtonPainter& operator=(const ButtonPainter&) = delete;

    void Draw(const SurfaceRectangle& area, Colour fill, const char* text) {
        if (m_surface == nullptr)
            return;
        m_drawing.FillArea(m_context, area, fill);
        m_surface->DrawFrame(area, 1, black);
        m_surface->DrawText(text, area, TextAlignment::CentredBothWays, black);
    }

private:
    WindowDrawing& m_drawing;
    DeviceContext m_context;
    DrawingSurface* m_surface;
};

} // namespace

bool MotorController::HandleMessage(const Message& message) {
    switch (message.kind) {
    case MessageKind::Create:
        Create(message.window);
        return true;
    case MessageKind::Close:
        Close();
        return true;
    case MessageKind::Destroy:
        Destroy();
        return true;
    case MessageKind::Paint:
        DrawButtons();
        return true;
    case MessageKind::LeftButtonPress:
        Press(message.position);
        return true;
    case MessageKind::LeftButtonRelease:
        Release();
        return true;
    default:
        return false;
    }
}

void MotorController::Create(WindowHandle window) {
    m_window = window;
    m_windows.MakeChild(window, {ChildKind::Label, "Step", 5, 275, 40, 20});
    m_stepEdit = m_windows.MakeChild(window, {ChildKind::Edit, Formatted("%d", m_jogStep), 55, 275, 40, 20});
}

/// A hidden window hears of no button that is let go.
void MotorController::Close() {
    m_windows.Hide(m_window);
    if (m_releaseAwaited)
        Release();
}

/// The program ends, and so does a jog in the middle of which this comes.
void MotorController::Destroy() {
    m_jogReleased = true;
    m_releaseAwaited = false;
    m_window = WindowHandle::None;
    m_stepEdit = WindowHandle::None;
    m_handles.motorController = WindowHandle::None;
}

void MotorController::Press(std::uint32_t position) {
    if (m_jogBusy)
        return;
    m_jogBusy = true;
    m_releaseAwaited = true;
    m_liveViewStopped = m_liveViewStopped || m_liveTimer.on != 0;
    m_liveView.Switch(0);
    TakeTypedStep();
    m_jogReleased = false;
    if (const JogButton* button = ButtonAt(PositionX(position), PositionY(position)))
        MoveWhileHeld(*button);
    m_jogBusy = false;
}

void MotorController::Release() {
    m_jogReleased = true;
    m_releaseAwaited = false;
    DrawButtons();
    if (std::exchange(m_liveViewStopped, false))
        m_liveView.Switch(1);
    m_windows.SetKeyboardFocus(m_handles.main);
}

void MotorController::TakeTypedStep() {
    const auto typed = ParsedInteger(m_windows.ChildText(m_stepEdit, stepBytes));
    if (!typed.has_value())
        return;
    m_jogStep = std::clamp(*typed, -longestStep, longestStep);
    m_windows.SetChildText(m_stepEdit, Formatted("%d", m_jogStep));
}

/// The message that the button was let go is dispatched by the waits of the steps. Where a question took it
/// away, the button itself is asked.
void MotorController::MoveWhileHeld(const JogButton& button) {
    DrawPressed(button);
    const double distance = static_cast<double>(m_jogStep) * button.direction;
    while (!m_jogReleased) {
        m_motion.MoveAxisBy(button.axis, distance);
        if (m_window == WindowHandle::None)
            return;
        m_refreshView();
        m_status.ShowStagePosition();
        m_pump.PumpMessages(pumpMs);
        if (!m_jogReleased && !m_windows.IsLeftButtonHeld())
            Release();
    }
}

void MotorController::DrawButtons() {
    ButtonPainter painter(m_drawing, m_window);
    for (const JogButton& button : jogButtons)
        painter.Draw(button.area, buttonColour, button.label);
}

void MotorController::DrawPressed(const JogButton& button) {
    ButtonPainter(m_drawing, m_window).Draw(button.area, pressedColour, "moving");
}

} // namespace tessaro
