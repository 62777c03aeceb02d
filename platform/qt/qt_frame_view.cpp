#include "platform/qt/qt_frame_view.h"

#include <QImage>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QResizeEvent>

#include <algorithm>
#include <cmath>
#include <utility>

namespace tessaro {
namespace {

constexpr std::uint32_t otherKey = 0xFF;
constexpr std::uint8_t windowColour = 255; // white, as nothing has been drawn yet

} // namespace

std::uint32_t VirtualKey(int qtKey) {
    switch (qtKey) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        return key::enter;
    case Qt::Key_PageUp:
        return key::pageUp;
    case Qt::Key_PageDown:
        return key::pageDown;
    case Qt::Key_Left:
        return key::left;
    case Qt::Key_Up:
        return key::up;
    case Qt::Key_Right:
        return key::right;
    case Qt::Key_Down:
        return key::down;
    default:
        break;
    }
    // Digits and letters are their own codes.
    const bool plain =
        (qtKey >= Qt::Key_0 && qtKey <= Qt::Key_9) || (qtKey >= Qt::Key_A && qtKey <= Qt::Key_Z);
    return plain ? static_cast<std::uint32_t>(qtKey) : otherKey;
}

QtFrameView::QtFrameView(QWidget* parent, std::function<void(MessageKind, std::uint32_t, std::uint32_t)> send)
    : QWidget(parent), m_send(std::move(send)) {
    setAttribute(Qt::WA_OpaquePaintEvent);
    setMouseTracking(true);
    setFocusPolicy(Qt::StrongFocus);
}

/// One pixel of the picture is one pixel of the screen, whatever the desktop's scale.
void QtFrameView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    QImage image(m_pixels.pixels.data(), m_pixels.width, m_pixels.height, qsizetype{4} * m_pixels.width,
                 QImage::Format_RGB32);
    image.setDevicePixelRatio(devicePixelRatioF());
    painter.drawImage(QPoint(0, 0), image);
    if (const auto first = std::exchange(onFirstPaint, nullptr))
        first();
}

void QtFrameView::resizeEvent(QResizeEvent* event) {
    const double ratio = devicePixelRatioF();
    GrowTo(static_cast<int>(std::ceil(event->size().width() * ratio)),
           static_cast<int>(std::ceil(event->size().height() * ratio)));
}

/// It never shrinks, so that nothing drawn is lost while the window is small.
void QtFrameView::GrowTo(int width, int height) {
    Picture grown(std::max(width, m_pixels.width), std::max(height, m_pixels.height));
    if (grown.width == m_pixels.width && grown.height == m_pixels.height)
        return;
    std::fill(grown.pixels.begin(), grown.pixels.end(), windowColour);
    for (int y = 0; y < m_pixels.height; ++y)
        std::copy_n(m_pixels.Pixel(0, y), static_cast<std::size_t>(m_pixels.width) * 4, grown.Pixel(0, y));
    m_pixels = std::move(grown);
}

void QtFrameView::SendMouse(MessageKind kind, const QMouseEvent& event) {
    const QPointF pixels = event.position() * devicePixelRatioF();
    m_send(kind, 0, PackPosition(qRound(pixels.x()), qRound(pixels.y())));
}

void QtFrameView::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton)
        return;
    m_lastPressTime = event->timestamp();
    SendMouse(MessageKind::LeftButtonPress, *event);
}

/// From Qt it comes in place of its second press; from the message loop it follows that press, whose time it
/// has. By then the button may have been let go, if the press has taken its time.
void QtFrameView::mouseDoubleClickEvent(QMouseEvent* event) {
    if (event->timestamp() != m_lastPressTime)
        mousePressEvent(event);
}

void QtFrameView::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton)
        SendMouse(MessageKind::LeftButtonRelease, *event);
}

void QtFrameView::mouseMoveEvent(QMouseEvent* event) {
    SendMouse(MessageKind::MouseMove, *event);
}

/// Keys with Alt belong to the menu.
void QtFrameView::keyPressEvent(QKeyEvent* event) {
    if (!event->modifiers().testFlag(Qt::AltModifier))
        m_send(MessageKind::KeyDown, VirtualKey(event->key()), 0);
}

/// Tab is a key like any other here.
bool QtFrameView::focusNextPrevChild(bool) {
    return false;
}

} // namespace tessaro
