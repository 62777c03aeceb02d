#include "platform/qt/picture_structure.h"

#include <string>

namespace tessaro {

PictureError CutShort(std::string_view format) {
    return {"the " + std::string(format) + " file is cut short"};
}

PictureError Damaged(std::string_view format) {
    return {"the " + std::string(format) + " data is damaged"};
}

PictureError Unsupported(std::string_view format) {
    return {"the " + std::string(format) + " picture is of a kind that is not supported"};
}

std::optional<PictureError> FindSizeFault(std::int64_t width, std::int64_t height) {
    if (width <= 0 || height <= 0)
        return PictureError{"the picture has no pixels"};
    if (width > maximumPictureSide || height > maximumPictureSide || width * height > maximumPicturePixels) {
        return PictureError{"the picture is too large (" + std::to_string(width) + " x " +
                            std::to_string(height) + " pixels)"};
    }
    return std::nullopt;
}

} // namespace tessaro
