#pragma once

#include "platform/message.h"
#include "platform/picture.h"

#include <QWidget>

#include <functional>
#include <optional>

namespace tessaro {

/// The client area of a window: pixels that are drawn on from outside and shown one to one, and the mouse and
/// keys of that area as messages.
class QtFrameView : public QWidget {
public:
    QtFrameView(QWidget* parent,
                std::function<void(MessageKind, std::uint32_t parameter, std::uint32_t position)> send);

    Picture& Pixels() { return m_pixels; }

    /// Makes room to draw on, whether it can be seen or not; what is there stays.
    void GrowTo(int width, int height);

    /// The first time that any of it becomes visible.
    std::function<void()> onFirstPaint;

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    bool focusNextPrevChild(bool next) override;

private:
    void SendMouse(MessageKind kind, const QMouseEvent& event);

    std::function<void(MessageKind, std::uint32_t, std::uint32_t)> m_send;
    Picture m_pixels;
    std::optional<quint64> m_lastPressTime; // of the left mouse button, as Qt tells it
};

/// The virtual key code of a key of Qt's.
std::uint32_t VirtualKey(int qtKey);

} // namespace tessaro
