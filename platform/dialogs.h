#pragma once

#include "platform/message.h"

#include <cstddef>
#include <string>

namespace tessaro {

/// What has happened to a control of a dialog.
enum class Notification {
    Clicked,
    TextChanged,
    FocusGained,
    FocusLost,
    SelectionChanged,
    ListOpened,
    ListClosed
};

/// Ids that every dialog knows. In a modal dialog the Enter key commands the first and the Escape key the
/// second; the close button of any dialog commands the second.
inline constexpr int commandOk = 1;
inline constexpr int commandCancel = 2;

class DialogProcedure {
public:
    virtual ~DialogProcedure() = default;

    /// Before the dialog is shown.
    virtual void Initialize(WindowHandle dialog) = 0;

    /// Every notification of every control, whether the operator or the program caused it.
    virtual void Command(WindowHandle dialog, int controlId, Notification notification) = 0;
};

/// Dialogs made from the resources by their number, and their items by control id. Calls with a dialog that
/// is gone, or an id that it has not, do nothing and answer empty.
class Dialogs {
public:
    virtual ~Dialogs() = default;

    /// Makes a dialog that lets the other windows live on; hidden at first. None when there is no such
    /// resource.
    virtual WindowHandle CreateModeless(int resource, WindowHandle owner, DialogProcedure& procedure) = 0;
    virtual void ShowModeless(WindowHandle dialog) = 0; // together with its owner where that is hidden
    virtual void DestroyModeless(WindowHandle dialog) = 0;

    /// Shows a dialog, keeps its owner from being used, and dispatches messages until EndModal. Returns what
    /// EndModal was given; 0 when the program is to end, -1 when there is no such resource.
    virtual int RunModal(int resource, WindowHandle owner, DialogProcedure& procedure) = 0;
    virtual void EndModal(WindowHandle dialog, int result) = 0;

    virtual void SetItemText(WindowHandle dialog, int controlId, const std::string& text) = 0;

    /// The first bytes of the item's text, whole characters only.
    virtual std::string ItemText(WindowHandle dialog, int controlId, std::size_t maximumBytes) = 0;

    virtual void SetChecked(WindowHandle dialog, int controlId, bool checked) = 0;
    virtual bool IsChecked(WindowHandle dialog, int controlId) = 0;

    virtual void AddChoice(WindowHandle dialog, int controlId, const std::string& text) = 0;
    virtual void SelectChoice(WindowHandle dialog, int controlId, int index) = 0;
    virtual int SelectedChoice(WindowHandle dialog, int controlId) = 0; // -1 = none
};

} // namespace tessaro
