#pragma once

#include "platform/dialogs.h"
#include "platform/fake/resource_controls.h"
#include "platform/whole_characters.h"

#include <algorithm>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace tessaro {

/// Dialogs made of maps, with the controls of the resources. A text that changes is notified, as in a real
/// dialog.
class FakeDialogs : public Dialogs {
public:
    struct Dialog {
        int resource = 0;
        WindowHandle owner = WindowHandle::None;
        DialogProcedure* procedure = nullptr;
        bool shown = false;
        bool ended = false;
        int result = 0;
        std::map<int, std::string> texts;
        std::map<int, bool> checks;
        std::map<int, std::vector<std::string>> choices;
        std::map<int, int> selected;
    };

    WindowHandle CreateModeless(int resource, WindowHandle owner, DialogProcedure& procedure) override {
        if (onCall)
            onCall("dialog " + std::to_string(resource));
        if (noResources || !ResourceControls().contains(resource))
            return WindowHandle::None;
        const auto handle = static_cast<WindowHandle>(firstHandle + m_made++);
        Dialog& dialog = dialogs[handle];
        dialog.resource = resource;
        dialog.owner = owner;
        dialog.procedure = &procedure;
        for (const ResourceControl& control : ResourceControls().at(resource))
            dialog.texts[control.id] = control.label;
        procedure.Initialize(handle);
        return handle;
    }

    void ShowModeless(WindowHandle dialog) override {
        if (dialogs.contains(dialog))
            dialogs[dialog].shown = true;
    }

    void DestroyModeless(WindowHandle dialog) override { dialogs.erase(dialog); }

    int RunModal(int resource, WindowHandle owner, DialogProcedure& procedure) override {
        const WindowHandle handle = CreateModeless(resource, owner, procedure);
        if (handle == WindowHandle::None)
            return -1;
        modalResources.push_back(resource);
        if (whileModal && dialogs.contains(handle) && !dialogs[handle].ended)
            whileModal(handle);
        const bool ended = dialogs.contains(handle) && dialogs[handle].ended;
        const int result = ended ? dialogs[handle].result : 0;
        dialogs.erase(handle);
        return result;
    }

    void EndModal(WindowHandle dialog, int result) override {
        if (!dialogs.contains(dialog))
            return;
        dialogs[dialog].ended = true;
        dialogs[dialog].result = result;
    }

    void SetItemText(WindowHandle dialog, int controlId, const std::string& text) override {
        const ResourceControl* control = Find(dialog, controlId);
        if (control == nullptr || control->kind == ControlKind::ComboBox)
            return;
        std::string& shown = dialogs[dialog].texts[controlId];
        textsSet.emplace_back(controlId, text);
        if (shown == text)
            return;
        shown = text;
        if (control->kind == ControlKind::Edit)
            Notify(dialog, controlId, Notification::TextChanged);
    }

    std::string ItemText(WindowHandle dialog, int controlId, std::size_t maximumBytes) override {
        if (Find(dialog, controlId) == nullptr)
            return {};
        return WholeCharacters(dialogs[dialog].texts[controlId], maximumBytes);
    }

    /// Of radio buttons one is checked at most.
    void SetChecked(WindowHandle dialog, int controlId, bool checked) override {
        const ResourceControl* control = Find(dialog, controlId);
        if (control == nullptr || !CanBeChecked(control->kind))
            return;
        for (const ResourceControl& other : ResourceControls().at(dialogs[dialog].resource)) {
            if (control->kind == ControlKind::RadioButton && other.kind == ControlKind::RadioButton &&
                checked)
                dialogs[dialog].checks[other.id] = false;
        }
        dialogs[dialog].checks[controlId] = checked;
    }

    bool IsChecked(WindowHandle dialog, int controlId) override {
        return dialogs.contains(dialog) && dialogs[dialog].checks[controlId];
    }

    void AddChoice(WindowHandle dialog, int controlId, const std::string& text) override {
        if (IsComboBox(dialog, controlId))
            dialogs[dialog].choices[controlId].push_back(text);
    }

    void SelectChoice(WindowHandle dialog, int controlId, int index) override {
        if (!IsComboBox(dialog, controlId))
            return;
        const auto count = static_cast<int>(dialogs[dialog].choices[controlId].size());
        dialogs[dialog].selected[controlId] = index >= 0 && index < count ? index : -1;
    }

    int SelectedChoice(WindowHandle dialog, int controlId) override {
        const bool known = dialogs.contains(dialog) && dialogs[dialog].selected.contains(controlId);
        return known ? dialogs[dialog].selected[controlId] : -1;
    }

    /// The dialogs of a window that goes.
    void DestroyOwnedBy(WindowHandle owner) {
        std::erase_if(dialogs, [owner](const auto& dialog) { return dialog.second.owner == owner; });
    }

    /// The operator does something with a control.
    void Notify(WindowHandle dialog, int controlId, Notification notification) {
        if (dialogs.contains(dialog))
            dialogs[dialog].procedure->Command(dialog, controlId, notification);
    }

    /// The open dialog of that resource; None when there is none.
    WindowHandle Find(int resource) const {
        for (const auto& [handle, dialog] : dialogs)
            if (dialog.resource == resource)
                return handle;
        return WindowHandle::None;
    }

    /// The texts that one control was given, in order.
    std::vector<std::string> TextsOf(int controlId) const {
        std::vector<std::string> texts;
        for (const auto& [id, text] : textsSet)
            if (id == controlId)
                texts.push_back(text);
        return texts;
    }

    std::map<WindowHandle, Dialog> dialogs;
    std::vector<int> modalResources;                     // shown modal, in order
    std::vector<std::pair<int, std::string>> textsSet;   // control and text of every SetItemText
    std::function<void(WindowHandle dialog)> whileModal; // what the operator does in a modal dialog
    std::function<void(const std::string&)> onCall;      // told which dialogs are made
    bool noResources = false;

private:
    static constexpr std::uint64_t firstHandle = 1000;

    static bool CanBeChecked(ControlKind kind) {
        return kind == ControlKind::CheckBox || kind == ControlKind::RadioButton;
    }

    /// Null when the dialog is gone or has no such control.
    const ResourceControl* Find(WindowHandle dialog, int controlId) const {
        const auto found = dialogs.find(dialog);
        if (found == dialogs.end())
            return nullptr;
        const auto& controls = ResourceControls().at(found->second.resource);
        const auto control = std::find_if(controls.begin(), controls.end(),
                                          [&](const auto& candidate) { return candidate.id == controlId; });
        return control != controls.end() ? &*control : nullptr;
    }

    bool IsComboBox(WindowHandle dialog, int controlId) const {
        const ResourceControl* control = Find(dialog, controlId);
        return control != nullptr && control->kind == ControlKind::ComboBox;
    }

    std::uint64_t m_made = 0;
};

} // namespace tessaro
