#pragma once

#include "app/message_pump.h"
#include "app/program_windows.h"
#include "app/status_lines.h"
#include "imaging/frame_buffer.h"
#include "platform/folders.h"
#include "platform/picture_files.h"
#include "platform/window_drawing.h"
#include "platform/window_system.h"
#include "scan/scan_state.h"

#include <array>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>

namespace tessaro {

/// The screen's side of the image.
struct ScreenView {
    DeviceContext memoryContext = DeviceContext::None;
    BitmapHandle screenBitmap = BitmapHandle::None;
    BitmapHandle previousBitmap = BitmapHandle::None; // in the memory context before the screen bitmap
    BitmapDescription description;
    std::int32_t lastResult = 0; // of the last rows set or pixels copied
    std::array<char, 100> messageText = {};
    std::int32_t errorCounter = 0; // failures in the current operation
    BitmapHeader header;
    DeviceContext windowContext = DeviceContext::None; // while an operation runs
    std::filesystem::path lastFileName;                // the last image saved
    std::string encoderId;                             // of the JPEG encoder, once one was found
    std::unique_ptr<std::uint8_t[]> screenCopy;        // FrameBuffer layout; holds the background views
};

/// Puts images on the main window, one screen pixel an image pixel, in the top left of its client area.
class Screen {
public:
    Screen(ScreenView& view, WindowDrawing& drawing, WindowSystem& windows, const ProgramWindows& handles,
           StatusLines& status, MessagePump& pump)
        : m_view(view), m_drawing(drawing), m_windows(windows), m_handles(handles), m_status(status),
          m_pump(pump) {}

    /// Makes bitmap and memory context. Tries for ever to make the bitmap, and 20 times to make the context.
    void SetUp();

    /// Shows pixels of the FrameBuffer layout. 1 = they have reached the window, 0 = given up.
    int ShowBuffer(const std::uint8_t* pixels);

    /// Draws the picture file stretched into the image area and takes into the frame what the screen then
    /// shows. A file that cannot be read or decoded leaves the area white, and a window that cannot be read
    /// back leaves the frame as it was; the reason goes to standard error. Returns 0.
    int LoadPictureFile(const std::filesystem::path& file, const SurfaceRectangle& imageArea,
                        Folders& folders, PictureFiles& pictures, FrameBuffer& frame);

    void ClearRectangle(const SurfaceRectangle& area); // to white

    /// A bar with its label, always in the same place. Takes the screen bitmap out of the context.
    void DrawScaleBar(DeviceContext context);

    /// Writes the frame's rows into the screen bitmap; the result is kept in lastResult.
    bool SetScreenRows(const std::uint8_t* pixels);

    /// Dispatches messages for 100 ms before another try. Images that are shown or saved meanwhile leave the
    /// context and the counter of the operation that waits alone.
    void WaitToTryAgain();

    ScreenView& View() { return m_view; }

private:
    enum class SetUpStep { Again, Done };

    SetUpStep MakeBitmapAndContext();
    bool CopyToWindow();
    void RecreateBitmap();
    void ShowError(const char* format);
    const char* ReadBack(DeviceContext window, int left, int top, FrameBuffer& frame);
    const char* CopyThroughBitmap(DeviceContext window, DeviceContext memory, int left, int top,
                                  FrameBuffer& frame);

    ScreenView& m_view;
    WindowDrawing& m_drawing;
    WindowSystem& m_windows;
    const ProgramWindows& m_handles;
    StatusLines& m_status;
    MessagePump& m_pump;
};

} // namespace tessaro
