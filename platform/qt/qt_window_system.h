#pragma once

#include "platform/window_system.h"

#include <memory>

namespace tessaro {

class QtMessageLoop;
class QtWindowTable;

/// Top-level windows as widgets; a menu comes from the resources and posts its commands.
class QtWindowSystem : public WindowSystem {
public:
    QtWindowSystem(QtWindowTable& windows, QtMessageLoop& messages);
    ~QtWindowSystem() override;
    QtWindowSystem(const QtWindowSystem&) = delete;
    QtWindowSystem& operator=(const QtWindowSystem&) = delete;

    bool RegisterWindowClass(const WindowClass& windowClass) override;
    WindowHandle MakeWindow(const WindowDescription& description) override;
    void Show(WindowHandle window) override;
    void Hide(WindowHandle window) override;
    void Update(WindowHandle window) override;
    void Destroy(WindowHandle window) override;
    WindowHandle MakeChild(WindowHandle parent, const ChildDescription& description) override;
    void SetChildText(WindowHandle child, const std::string& text) override;
    std::string ChildText(WindowHandle child, std::size_t maximumBytes) override;
    void SetTitle(WindowHandle window, const std::string& title) override;
    void SetKeyboardFocus(WindowHandle window) override;
    bool IsLeftButtonHeld() const override;
    bool LoadAccelerators(int resource) override;

private:
    struct State;
    std::unique_ptr<State> m_state;
};

} // namespace tessaro
