#pragma once

#include "platform/qt/qt_message_loop.h"
#include "platform/qt/qt_user_interface.h"

#include <QAbstractButton>
#include <QApplication>
#include <QElapsedTimer>
#include <QPointer>
#include <QWidget>
#include <QWindow>

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

namespace tessaro {

/// The Qt adapters, and what an operator does to their windows.
struct QtMachine {
    static constexpr bool virtualTime = false;

    QtUserInterface qt;
    UserInterface ui = qt.Adapters();

    void Post(const Message& message) { static_cast<QtMessageLoop&>(ui.messages).Post(message); }

    /// Time goes by, and nobody takes messages; Qt does its work meanwhile.
    static void PassTime(std::uint32_t milliseconds) {
        QElapsedTimer passed;
        passed.start();
        while (passed.elapsed() < static_cast<qint64>(milliseconds))
            QCoreApplication::processEvents(QEventLoop::AllEvents, 1);
    }

    /// The close button of the window's frame.
    static void CloseByOperator(WindowHandle, const std::string& title) {
        QWidget* window = TopLevel(title);
        ASSERT_NE(window, nullptr) << title;
        window->windowHandle()->close();
    }

    /// The visible window of that title; null when there is none.
    static QWidget* TopLevel(const std::string& title) {
        for (QWidget* widget : QApplication::topLevelWidgets()) {
            if (widget->isVisible() && widget->windowTitle().toStdString() == title)
                return widget;
        }
        return nullptr;
    }

    static bool IsShown(WindowHandle, const std::string& title) { return TopLevel(title) != nullptr; }

    /// The control of that id in the window of that title.
    template<typename Widget = QWidget>
    static Widget* Control(const std::string& title, int controlId) {
        QWidget* window = TopLevel(title);
        if (window == nullptr)
            return nullptr;
        for (Widget* widget : window->findChildren<Widget*>()) {
            if (widget->property("controlId").toInt() == controlId)
                return widget;
        }
        return nullptr;
    }

    /// Dispatches what waits until the condition holds; false when it has not for five seconds.
    template<typename Condition>
    bool DispatchUntil(Condition holds) {
        QElapsedTimer waited;
        waited.start();
        while (!holds() && waited.elapsed() < 5000) {
            Message message;
            if (ui.messages.TakeMessage(message, 5))
                ui.messages.Dispatch(message);
        }
        return holds();
    }

    /// Until nothing waits any more.
    void DispatchAll() {
        Message message;
        while (ui.messages.TakeMessage(message, 0))
            ui.messages.Dispatch(message);
    }

    /// The next message of that kind; those before it are dispatched.
    bool TakeNext(MessageKind kind, Message& message) {
        while (ui.messages.TakeMessage(message, 1000)) {
            if (message.kind == kind)
                return true;
            ui.messages.Dispatch(message);
        }
        return false;
    }
};

} // namespace tessaro
