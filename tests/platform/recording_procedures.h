#pragma once

#include "platform/dialogs.h"
#include "platform/window_system.h"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <utility>
#include <vector>

namespace tessaro {

/// Remembers what its windows were told.
class RecordingWindowProcedure : public WindowProcedure {
public:
    bool HandleMessage(const Message& message) override {
        messages.push_back(message);
        return answer ? answer(message) : false;
    }

    std::size_t Count(MessageKind kind) const {
        return static_cast<std::size_t>(
            std::count_if(messages.begin(), messages.end(),
                          [kind](const Message& message) { return message.kind == kind; }));
    }

    std::vector<Message> messages;
    std::function<bool(const Message&)> answer;
};

/// Remembers what a dialog reported, and acts as the test says.
class RecordingDialogProcedure : public DialogProcedure {
public:
    using Reported = std::pair<int, Notification>;

    void Initialize(WindowHandle initialized) override {
        dialog = initialized;
        if (onInitialize)
            onInitialize(initialized);
    }

    void Command(WindowHandle from, int controlId, Notification notification) override {
        if (from != dialog)
            ++fromOthers;
        commands.emplace_back(controlId, notification);
        if (onCommand)
            onCommand(controlId, notification);
    }

    std::size_t Count(int controlId, Notification notification) const {
        return static_cast<std::size_t>(
            std::count(commands.begin(), commands.end(), Reported(controlId, notification)));
    }

    WindowHandle dialog = WindowHandle::None;
    std::vector<Reported> commands;
    std::function<void(WindowHandle)> onInitialize;
    std::function<void(int controlId, Notification)> onCommand;
    int fromOthers = 0; // commands that came with the handle of another dialog
};

} // namespace tessaro
