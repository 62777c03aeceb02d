#include "tests/platform/operator_input.h"

#include <QCoreApplication>
#include <QTest>
#include <QTimer>
#include <QWidget>
#include <QWindow>

namespace tessaro::operator_input {
namespace {

QWindow* WindowOf(const QWidget& widget) {
    return widget.window()->windowHandle();
}

/// Handled as soon as Qt looks for events; at once, it would come outside the message loop.
template<typename Input>
void Queue(QWindow* window, Input input) {
    QTimer::singleShot(0, window, [window, input] { input(*window); });
}

void Mouse(const QWidget& widget, QPoint position, Qt::MouseButtons held, Qt::MouseButton button,
           QEvent::Type type) {
    const QPoint inWindow = widget.mapTo(widget.window(), position);
    const QPoint onScreen = widget.mapToGlobal(position);
    const int time = ++QTest::lastMouseTimestamp;
    Queue(WindowOf(widget), [=](QWindow& window) {
        qt_handleMouseEvent(&window, inWindow, onScreen, held, button, type, Qt::NoModifier, time);
    });
}

void Key(const QWidget& widget, QEvent::Type type, int key, Qt::KeyboardModifiers modifiers,
         const QString& text) {
    Queue(WindowOf(widget), [=](QWindow& window) { qt_handleKeyEvent(&window, type, key, modifiers, text); });
}

} // namespace

void Press(const QWidget& widget, QPoint position, Qt::MouseButton button) {
    Mouse(widget, position, button, button, QEvent::MouseButtonPress);
}

void Release(const QWidget& widget, QPoint position, Qt::MouseButton button) {
    Mouse(widget, position, Qt::NoButton, button, QEvent::MouseButtonRelease);
}

void Move(const QWidget& widget, QPoint position, Qt::MouseButtons held) {
    Mouse(widget, position, held, Qt::NoButton, QEvent::MouseMove);
}

/// Late enough to be no double click.
void Click(const QWidget& widget) {
    QTest::lastMouseTimestamp += QTest::mouseDoubleClickInterval;
    Press(widget, widget.rect().center());
    Release(widget, widget.rect().center());
}

void PressKey(const QWidget& widget, int key, Qt::KeyboardModifiers modifiers, const QString& text) {
    Key(widget, QEvent::KeyPress, key, modifiers, text);
}

void ReleaseKey(const QWidget& widget, int key, Qt::KeyboardModifiers modifiers, const QString& text) {
    Key(widget, QEvent::KeyRelease, key, modifiers, text);
}

void Type(const QWidget& widget, int key, Qt::KeyboardModifiers modifiers, const QString& text) {
    PressKey(widget, key, modifiers, text);
    ReleaseKey(widget, key, modifiers, text);
}

} // namespace tessaro::operator_input
