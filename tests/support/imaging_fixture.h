#pragma once

#include "imaging/image_files.h"
#include "imaging/screen_view.h"
#include "support/shell_fixture.h"

#include <array>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace tessaro {

/// The shell with a screen, folders and image files.
class ImagingFixture : public ShellFixture {
protected:
    using Bytes = std::array<std::uint8_t, 4>;
    static constexpr Bytes whiteBytes = {255, 255, 255, 255};

    static Bytes BytesAt(const Picture& picture, int x, int y) {
        const std::uint8_t* pixel = picture.Pixel(x, y);
        return {pixel[0], pixel[1], pixel[2], pixel[3]};
    }
    static Bytes BytesAt(const FrameBuffer& buffer, int x, int y) {
        const std::uint8_t* pixel = buffer.Data() + PixelOffset(x, y);
        return {pixel[0], pixel[1], pixel[2], pixel[3]};
    }

    const Picture& Window() const { return ui.drawing.windows.at(windows.main); }
    std::string Title() const { return ui.windows.windows.at(windows.main).title; }

    /// Rows that tell themselves apart: row y of the buffer has the bytes y mod 251, 1, 2, 3.
    static void NumberRows(FrameBuffer& buffer) {
        for (int y = 0; y < frameHeight; ++y) {
            for (int x = 0; x < frameWidth; ++x) {
                std::uint8_t* pixel = buffer.Data() + PixelOffset(x, y);
                pixel[0] = static_cast<std::uint8_t>(y % 251);
                pixel[1] = 1;
                pixel[2] = 2;
                pixel[3] = 3;
            }
        }
    }

    /// A file that the picture decoder knows.
    void PutPicture(const std::filesystem::path& file, const Picture& picture) {
        ui.folders.files[file] =
            std::get<std::vector<std::uint8_t>>(ui.pictures.Encode(picture, "image/png"));
    }
    Picture SavedPicture(const std::filesystem::path& file) {
        const auto decoded = ui.pictures.Decode(ui.folders.files[file]);
        return std::holds_alternative<Picture>(decoded) ? std::get<Picture>(decoded) : Picture();
    }

    ScreenView view;
    Screen screen{view, ui.drawing, ui.windows, windows, status, pump};
    FrameBuffer frame;
    ImageFolders folders{ui.folders};
    ImageFiles images{folders, ui.folders, ui.pictures, ui.clock, screen, ui.drawing, windows, status, stage};
};

} // namespace tessaro
