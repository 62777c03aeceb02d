#pragma once

#include "platform/message.h"

#include <string>

namespace tessaro {

/// Who answers for the windows of a class.
class WindowProcedure {
public:
    virtual ~WindowProcedure() = default;

    /// False leaves the message to the platform's own behaviour.
    virtual bool HandleMessage(const Message& message) = 0;
};

struct WindowClass {
    std::string name;
    WindowProcedure* procedure = nullptr; // outlives every window of the class
    int menuResource = 0;                 // 0 = without a menu
    int iconResource = 0;
};

enum class WindowStyle {
    Overlapped, // title, frame that can be dragged, minimise, maximise and close buttons
    ToolPopup   // a small titled window that stays above its owner and has no button in the task bar
};

struct WindowDescription {
    std::string className;
    std::string title;
    WindowStyle style = WindowStyle::Overlapped;
    int x = 0; // position and size in screen pixels whatever the desktop's scale, title and frame included
    int y = 0;
    int width = 0;
    int height = 0;
    WindowHandle owner = WindowHandle::None; // an owned window goes away with its owner
};

/// Top-level windows of the program. Calls with a handle whose window is gone do nothing.
class WindowSystem {
public:
    virtual ~WindowSystem() = default;

    /// False when a class of this name is there already; the first stays.
    virtual bool RegisterWindowClass(const WindowClass& windowClass) = 0;

    /// Makes the window, still hidden; its procedure gets Create first. None when it cannot be made.
    virtual WindowHandle MakeWindow(const WindowDescription& description) = 0;

    virtual void Show(WindowHandle window) = 0;
    virtual void Hide(WindowHandle window) = 0;

    /// Sends the Paint message of a window that was shown and has not been painted yet.
    virtual void Update(WindowHandle window) = 0;

    /// The window and those that it owns are hidden; Destroy is sent to the procedure, which may still draw
    /// on them; then they go.
    virtual void Destroy(WindowHandle window) = 0;

    virtual void SetTitle(WindowHandle window, const std::string& title) = 0;

    /// Keys that the program gets go to this window from now on; none are taken from other programs.
    virtual void SetKeyboardFocus(WindowHandle window) = 0;

    /// Loads a table of accelerators from the resources; false when there is none of that number. Nothing
    /// translates keys by it.
    virtual bool LoadAccelerators(int resource) = 0;
};

} // namespace tessaro
