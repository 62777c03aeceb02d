#include "imaging/image_folders.h"

namespace tessaro {

ImageFolders::ImageFolders(Folders& folders)
    : desktop(folders.DesktopFolder()), working(desktop / "Image_Data"), settings(working / "Config.txt"),
      map(static_cast<std::size_t>(frameWidth)) {
    folders.CreateFolder(working);
}

} // namespace tessaro
