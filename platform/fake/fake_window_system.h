#pragma once

#include "platform/fake/fake_message_loop.h"
#include "platform/whole_characters.h"
#include "platform/window_system.h"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace tessaro {

/// Windows without a screen. What is asked of them is kept in order.
class FakeWindowSystem : public WindowSystem {
public:
    explicit FakeWindowSystem(FakeMessageLoop& messages) : m_messages(messages) {
        m_messages.onUnhandled = [this](const Message& message) {
            if (message.kind == MessageKind::Close)
                Destroy(message.window);
        };
    }
    FakeWindowSystem(const FakeWindowSystem&) = delete;
    FakeWindowSystem& operator=(const FakeWindowSystem&) = delete;

    struct Window {
        WindowDescription description;
        WindowClass windowClass;
        std::string title;
        bool shown = false;
        bool painted = false; // or going to be, by a message that waits
    };

    struct Child {
        WindowHandle parent = WindowHandle::None;
        ChildDescription description;
        std::string text; // as the operator may have changed it
    };

    bool RegisterWindowClass(const WindowClass& windowClass) override {
        Note("register " + windowClass.name);
        return classes.emplace(windowClass.name, windowClass).second;
    }

    WindowHandle MakeWindow(const WindowDescription& description) override {
        Note("make " + description.className);
        if (failMaking.contains(description.className) || !classes.contains(description.className))
            return WindowHandle::None;
        const auto handle = static_cast<WindowHandle>(++m_last);
        const WindowClass& windowClass = classes.at(description.className);
        windows[handle] = {description, windowClass, description.title};
        m_messages.procedures[handle] = windowClass.procedure;
        if (onMade)
            onMade(handle);
        windowClass.procedure->HandleMessage({handle, MessageKind::Create});
        return handle;
    }

    void Show(WindowHandle window) override {
        if (!windows.contains(window))
            return;
        windows[window].shown = true;
        Note("show " + windows[window].description.className);
        if (!std::exchange(windows[window].painted, true))
            m_messages.Post({window, MessageKind::Paint});
    }

    void Hide(WindowHandle window) override {
        if (windows.contains(window))
            windows[window].shown = false;
    }

    void Update(WindowHandle window) override {
        if (windows.contains(window) && m_messages.Remove(window, MessageKind::Paint))
            windows[window].windowClass.procedure->HandleMessage({window, MessageKind::Paint});
    }

    void Destroy(WindowHandle window) override {
        if (!windows.contains(window) || !m_beingDestroyed.insert(window).second)
            return;
        HideWithOwned(window);
        windows[window].windowClass.procedure->HandleMessage({window, MessageKind::Destroy});
        m_beingDestroyed.erase(window);
        for (const WindowHandle other : OwnedBy(window))
            Destroy(other);
        m_messages.Forget(window);
        ForgetChildrenOf(window);
        windows.erase(window);
        if (onDestroyed)
            onDestroyed(window);
    }

    WindowHandle MakeChild(WindowHandle parent, const ChildDescription& description) override {
        if (!windows.contains(parent))
            return WindowHandle::None;
        const auto handle = static_cast<WindowHandle>(++m_last);
        children[handle] = {parent, description, description.text};
        return handle;
    }

    void SetChildText(WindowHandle child, const std::string& text) override {
        if (children.contains(child))
            children[child].text = text;
    }

    std::string ChildText(WindowHandle child, std::size_t maximumBytes) override {
        return children.contains(child) ? WholeCharacters(children[child].text, maximumBytes) : std::string();
    }

    void SetTitle(WindowHandle window, const std::string& title) override {
        if (windows.contains(window))
            windows[window].title = title;
    }

    void SetKeyboardFocus(WindowHandle window) override { focused = window; }

    bool IsLeftButtonHeld() const override { return leftButtonHeld; }

    bool LoadAccelerators(int resource) override {
        Note("accelerators " + std::to_string(resource));
        return resource == 109;
    }

    std::map<std::string, WindowClass> classes;
    std::map<WindowHandle, Window> windows;
    std::map<WindowHandle, Child> children;
    bool leftButtonHeld = true;       // until the test says that it was let go without a message
    std::set<std::string> failMaking; // classes whose windows cannot be made
    WindowHandle focused = WindowHandle::None;
    std::function<void(const std::string&)> onCall; // told what is asked
    std::function<void(WindowHandle)> onMade;
    std::function<void(WindowHandle)> onDestroyed;

private:
    std::vector<WindowHandle> OwnedBy(WindowHandle window) const {
        std::vector<WindowHandle> owned;
        for (const auto& [other, candidate] : windows) {
            if (candidate.description.owner == window)
                owned.push_back(other);
        }
        return owned;
    }

    void ForgetChildrenOf(WindowHandle window) {
        for (const auto& [handle, child] : children) {
            if (child.parent == window)
                m_messages.Forget(handle);
        }
        std::erase_if(children, [&](const auto& child) { return child.second.parent == window; });
    }

    void HideWithOwned(WindowHandle window) {
        windows[window].shown = false;
        m_messages.ForgetInput(window);
        for (const WindowHandle other : OwnedBy(window))
            HideWithOwned(other);
    }

    void Note(const std::string& call) {
        if (onCall)
            onCall(call);
    }

    FakeMessageLoop& m_messages;
    std::set<WindowHandle> m_beingDestroyed;
    std::uint64_t m_last = 0;
};

} // namespace tessaro
