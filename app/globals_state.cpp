#include "app/globals.h"

namespace tessaro {

Globals::Globals(Folders& platformFolders) : folders(platformFolders) {
    frame.pixels = camera.workingFrame.Data();
}

} // namespace tessaro
