#pragma once

#include "platform/clock.h"
#include "platform/dialogs.h"
#include "platform/file_chooser.h"
#include "platform/folders.h"
#include "platform/message_boxes.h"
#include "platform/message_loop.h"
#include "platform/picture_files.h"
#include "platform/window_drawing.h"
#include "platform/window_system.h"

namespace tessaro {

/// One set of adapters, as main picks it for the operator's program.
struct UserInterface {
    Clock& clock;
    MessageLoop& messages;
    WindowSystem& windows;
    Dialogs& dialogs;
    MessageBoxes& boxes;
    FileChooser& chooser;
    WindowDrawing& drawing;
    Folders& folders;
    PictureFiles& pictures;
};

} // namespace tessaro
