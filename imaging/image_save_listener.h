#pragma once

#include <filesystem>
#include <string_view>

namespace tessaro {

/// Told what became of each image that was to be saved.
class ImageSaveListener {
public:
    virtual ~ImageSaveListener() = default;

    virtual void ImageSaved(const std::filesystem::path& file) = 0; // it is on the disk, whole
    virtual void ImageNotSaved(const std::filesystem::path& file, std::string_view reason) = 0;
};

} // namespace tessaro
