#pragma once

#include "platform/dialogs.h"

#include <memory>

namespace tessaro {

class QtMessageLoop;
class QtWindowTable;

/// Dialogs from the resources; whatever a control reports becomes a command with its id.
class QtDialogs : public Dialogs {
public:
    QtDialogs(QtWindowTable& windows, QtMessageLoop& messages);
    ~QtDialogs() override;
    QtDialogs(const QtDialogs&) = delete;
    QtDialogs& operator=(const QtDialogs&) = delete;

    WindowHandle CreateModeless(int resource, WindowHandle owner, DialogProcedure& procedure) override;
    void ShowModeless(WindowHandle dialog) override;
    void DestroyModeless(WindowHandle dialog) override;
    int RunModal(int resource, WindowHandle owner, DialogProcedure& procedure) override;
    void EndModal(WindowHandle dialog, int result) override;
    void SetItemText(WindowHandle dialog, int controlId, const std::string& text) override;
    std::string ItemText(WindowHandle dialog, int controlId, std::size_t maximumBytes) override;
    void SetChecked(WindowHandle dialog, int controlId, bool checked) override;
    bool IsChecked(WindowHandle dialog, int controlId) override;
    void AddChoice(WindowHandle dialog, int controlId, const std::string& text) override;
    void SelectChoice(WindowHandle dialog, int controlId, int index) override;
    int SelectedChoice(WindowHandle dialog, int controlId) override;

private:
    struct State;
    std::unique_ptr<State> m_state;
};

} // namespace tessaro
