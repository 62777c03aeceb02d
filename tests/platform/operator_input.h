#pragma once

#include <QPoint>
#include <QString>

class QWidget;

namespace tessaro::operator_input {

// What the window system reports when the operator uses mouse and keyboard: it waits in Qt's own queue until
// Qt looks for events. Positions are those of the widget.

void Press(const QWidget& widget, QPoint position, Qt::MouseButton button = Qt::LeftButton);
void Release(const QWidget& widget, QPoint position, Qt::MouseButton button = Qt::LeftButton);
void Move(const QWidget& widget, QPoint position, Qt::MouseButtons held = Qt::NoButton);
void Click(const QWidget& widget); // in its middle
void PressKey(const QWidget& widget, int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier,
              const QString& text = {});
void ReleaseKey(const QWidget& widget, int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier,
                const QString& text = {});
void Type(const QWidget& widget, int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier,
          const QString& text = {}); // pressed and released

} // namespace tessaro::operator_input
