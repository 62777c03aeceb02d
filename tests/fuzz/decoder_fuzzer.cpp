#include "platform/qt/qt_picture_files.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

// A picture file, whatever its bytes, through the decoder alone: many times as often as with the analysis
// behind it.

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tessaro;
    static QtPictureFiles files;
    const auto decoded = files.Decode({data, size});
    const Picture* picture = std::get_if<Picture>(&decoded);
    if (picture == nullptr) {
        if (std::get<PictureError>(decoded).reason.empty())
            std::abort();
        return 0;
    }
    const std::size_t pixels =
        static_cast<std::size_t>(picture->width) * static_cast<std::size_t>(picture->height);
    if (pixels == 0 || picture->pixels.size() != pixels * 4)
        std::abort();
    return 0;
}
