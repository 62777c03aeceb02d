#pragma once

#include "platform/message.h"

#include <cstddef>
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

enum class ChildKind {
    Label, // a text that the mouse goes through
    Edit   // one line with a border that the operator can type into
};

/// A control on a window that is no dialog; it stays in front of what is drawn there.
struct ChildDescription {
    ChildKind kind = ChildKind::Label;
    std::string text;
    int x = 0; // client pixels of the window, on the screen, whatever the desktop's scale
    int y = 0;
    int width = 0;
    int height = 0;
};

/// Top-level windows of the program, and their controls. Calls with a handle whose window is gone do nothing
/// and answer empty.
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

    /// The window and those that it owns are hidden, and input that still waits for them is no message any
    /// more; Destroy is sent to the procedure, which may still draw on them; then they go.
    virtual void Destroy(WindowHandle window) = 0;

    /// Puts a control on a window; it comes and goes with the window, and not by itself. What the operator
    /// does with it is a message of its own handle, which reaches no procedure. None without such a window.
    virtual WindowHandle MakeChild(WindowHandle parent, const ChildDescription& description) = 0;
    virtual void SetChildText(WindowHandle child, const std::string& text) = 0;

    /// The first bytes of the control's text, whole characters only.
    virtual std::string ChildText(WindowHandle child, std::size_t maximumBytes) = 0;

    virtual void SetTitle(WindowHandle window, const std::string& title) = 0;

    /// Keys that the program gets go to this window from now on; none are taken from other programs.
    virtual void SetKeyboardFocus(WindowHandle window) = 0;

    /// Whether the operator holds the left mouse button down, as far as the program can know, whatever
    /// messages still wait. A release that came while a question was open is no message of any window.
    virtual bool IsLeftButtonHeld() const = 0;

    /// Loads a table of accelerators from the resources; false when there is none of that number. Nothing
    /// translates keys by it.
    virtual bool LoadAccelerators(int resource) = 0;
};

} // namespace tessaro
