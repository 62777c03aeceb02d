#pragma once

#include "analysis/grain.h"
#include "imaging/image_folders.h"
#include "imaging/image_save_listener.h"
#include "imaging/screen_view.h"
#include "platform/clock.h"
#include "platform/folders.h"
#include "platform/picture_files.h"
#include "stage/stage_link.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

namespace tessaro {

/// Index of the encoder whose MIME type is exactly this one, and its id; 0 when there is none, with `id` as
/// it was; -1 when there are no encoders at all.
int EncoderClassId(PictureFiles& pictures, std::string_view mimeType, std::string& id);

/// Saves images named after the stage position, in a pair of folders named after the minute in which the
/// session began. Nothing is ever overwritten. A save that fails leaves no file and says why on standard
/// error.
class ImageFiles {
public:
    ImageFiles(ImageFolders& folders, Folders& files, PictureFiles& pictures, Clock& clock, Screen& screen,
               WindowDrawing& drawing, const ProgramWindows& windows, StatusLines& status,
               const StageLink& stage, ImageSaveListener* listener = nullptr)
        : m_folders(folders), m_files(files), m_pictures(pictures), m_clock(clock), m_screen(screen),
          m_drawing(drawing), m_windows(windows), m_status(status), m_stage(stage), m_listener(listener) {}

    /// Makes the session's folders. Non-zero, or the first call, begins a new session.
    void MakeSessionFolders(int newSession);

    /// The frame with its single layers framed, and a scale bar. 1 = done, 0 = given up.
    int SavePlainImage(const FrameBuffer& frame, const GrainFindings& findings);

    /// What the main window shows. Returns 1.
    int SaveDetailImage();

    /// base.extension, or the first of base_0.extension, base_1.extension, ... that does not exist.
    std::filesystem::path UniqueFileName(const std::filesystem::path& base, std::string_view extension);

    bool FileExists(const std::filesystem::path& file); // it can be opened for reading

private:
    bool FillScreenBitmap(const FrameBuffer& frame);
    void FrameSingleLayers(const GrainFindings& findings);
    void SaveScreenBitmap(const std::filesystem::path& folder, std::string_view ending);
    std::filesystem::path NextFile(const std::filesystem::path& folder, std::string_view ending);
    void Tell(const std::filesystem::path& file, const std::string& reason);
    std::string PositionName() const;

    ImageFolders& m_folders;
    Folders& m_files;
    PictureFiles& m_pictures;
    Clock& m_clock;
    Screen& m_screen;
    WindowDrawing& m_drawing;
    const ProgramWindows& m_windows;
    StatusLines& m_status;
    const StageLink& m_stage;
    ImageSaveListener* m_listener; // null: nobody wants to know
};

} // namespace tessaro
