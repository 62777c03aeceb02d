#pragma once

#include "platform/fake/fake_dialogs.h"
#include "platform/fake/fake_file_chooser.h"
#include "platform/fake/fake_message_loop.h"
#include "platform/fake/fake_window_drawing.h"
#include "platform/fake/fake_window_system.h"
#include "platform/fake/memory_folders.h"
#include "platform/fake/memory_picture_files.h"
#include "platform/fake/scripted_message_boxes.h"
#include "platform/fake/virtual_clock.h"
#include "platform/user_interface.h"

#include <string>
#include <vector>

namespace tessaro {

/// A whole machine for the operator's program, in memory and virtual time.
struct FakeUserInterface {
    static constexpr int clientWidth = 1234;
    static constexpr int clientHeight = 1040;

    FakeUserInterface() {
        windows.onMade = [this](WindowHandle window) {
            drawing.windows.emplace(window, Picture(clientWidth, clientHeight));
        };
        windows.onDestroyed = [this](WindowHandle window) {
            dialogs.DestroyOwnedBy(window);
            drawing.windows.erase(window);
        };
        const auto note = [this](const std::string& call) { calls.push_back(call); };
        windows.onCall = note;
        dialogs.onCall = note;
        drawing.onCall = note;
        folders.onCall = note;
    }
    FakeUserInterface(const FakeUserInterface&) = delete;
    FakeUserInterface& operator=(const FakeUserInterface&) = delete;

    VirtualClock clock;
    FakeMessageLoop messages{clock};
    FakeWindowSystem windows{messages};
    FakeDialogs dialogs;
    ScriptedMessageBoxes boxes;
    FakeFileChooser chooser;
    FakeWindowDrawing drawing;
    MemoryFolders folders;
    MemoryPictureFiles pictures;
    std::vector<std::string> calls; // what makes or reads something, of all adapters in order

    UserInterface Adapters() {
        return {clock, messages, windows, dialogs, boxes, chooser, drawing, folders, pictures};
    }
};

} // namespace tessaro
