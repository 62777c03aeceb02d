#include "imaging/screen_view.h"

#include "app/number_text.h"
#include "imaging/picture_to_frame.h"

#include <algorithm>
#include <cstdio>
#include <new>
#include <variant>
#include <vector>

namespace tessaro {
namespace {

constexpr int setUpAttempts = 20;
constexpr int showAttempts = 20; // rows that could not be set
constexpr int copyAttempts = 10; // copies to the window before the bitmap is made anew
constexpr std::uint32_t retryWaitMs = 100;
constexpr int clearedMargin = 3; // around an imported picture

constexpr int scaleBarLength = frameHeight / 4;
constexpr int scaleBarRight = frameWidth - 100;
constexpr int scaleBarLeft = scaleBarRight - scaleBarLength;
constexpr SurfaceRectangle scaleBar{scaleBarLeft, frameHeight - 50, scaleBarRight, frameHeight - 52};
constexpr SurfaceRectangle scaleBarLabel{scaleBarLeft, frameHeight - 30, scaleBarRight, frameHeight - 32};

std::variant<Picture, PictureError> ReadPicture(const std::filesystem::path& file, Folders& folders,
                                                PictureFiles& pictures) {
    const auto size = folders.Size(file);
    if (const FolderError* error = std::get_if<FolderError>(&size))
        return PictureError{error->reason};
    if (std::get<std::uint64_t>(size) > maximumPictureFileBytes)
        return PictureError{"the file is too large"};
    const auto bytes = folders.Read(file, maximumPictureFileBytes);
    if (const FolderError* error = std::get_if<FolderError>(&bytes))
        return PictureError{error->reason};
    return pictures.Decode(std::get<std::vector<std::uint8_t>>(bytes));
}

/// The file's picture at the size of the frame. A picture may be larger than the memory there is.
std::variant<Picture, PictureError> ReadStretched(const std::filesystem::path& file, Folders& folders,
                                                  PictureFiles& pictures) {
    try {
        auto picture = ReadPicture(file, folders, pictures);
        if (const Picture* decoded = std::get_if<Picture>(&picture))
            return StretchedToFrame(*decoded);
        return picture;
    } catch (const std::bad_alloc&) {
        return PictureError{"not enough memory"};
    }
}

} // namespace

void Screen::SetUp() {
    while (MakeBitmapAndContext() == SetUpStep::Again)
        continue;
    m_view.screenCopy.reset(new (std::nothrow) std::uint8_t[frameByteCount]());
    if (m_view.screenCopy == nullptr)
        m_windows.SetTitle(m_handles.main, "error in HeapAlloc");
}

Screen::SetUpStep Screen::MakeBitmapAndContext() {
    const DeviceContext window = m_drawing.GetWindowContext(m_handles.main);
    if (window == DeviceContext::None)
        return SetUpStep::Done; // the window was closed while the set-up waited to try again
    m_view.screenBitmap = m_drawing.CreateCompatibleBitmap(window, frameWidth, frameHeight);
    if (m_view.screenBitmap == BitmapHandle::None) {
        m_drawing.ReleaseContext(window);
        m_status.ShowInformation("CreateCompatibleBitmap Failed");
        m_pump.PumpMessages(retryWaitMs);
        return SetUpStep::Again;
    }
    m_drawing.DescribeBitmap(m_view.screenBitmap, m_view.description);
    m_view.description.width = frameWidth;
    m_view.description.height = frameHeight;
    m_view.header = {.size = 40,
                     .width = m_view.description.width,
                     .height = m_view.description.height,
                     .planes = 1,
                     .bitsPerPixel = 32};
    m_view.memoryContext = m_drawing.CreateCompatibleContext(window);
    m_drawing.ReleaseContext(window);
    if (m_view.memoryContext != DeviceContext::None)
        return SetUpStep::Done;
    m_status.ShowInformation("CreateCompatibleDC has failed");
    ++m_view.errorCounter;
    if (m_view.errorCounter >= setUpAttempts)
        return SetUpStep::Done;
    m_drawing.DeleteBitmap(m_view.screenBitmap);
    return SetUpStep::Again;
}

int Screen::ShowBuffer(const std::uint8_t* pixels) {
    m_view.errorCounter = 0;
    while (m_view.screenBitmap != BitmapHandle::None) {
        m_view.windowContext = m_drawing.GetWindowContext(m_handles.main);
        if (m_view.windowContext == DeviceContext::None)
            return 0; // the window was closed while this waited to try again
        if (!SetScreenRows(pixels)) {
            ShowError("SetDIBits has failed, error count: %d");
            m_drawing.ReleaseContext(m_view.windowContext);
            ++m_view.errorCounter;
            if (m_view.errorCounter >= showAttempts)
                return 0;
            continue;
        }
        const bool shown = CopyToWindow();
        if (!shown)
            RecreateBitmap();
        m_drawing.ReleaseContext(m_view.windowContext);
        if (shown)
            return 1;
    }
    return 0;
}

bool Screen::SetScreenRows(const std::uint8_t* pixels) {
    m_view.lastResult =
        m_drawing.SetBitmapRows(m_view.windowContext, m_view.screenBitmap, pixels, m_view.header);
    return m_view.lastResult != 0;
}

/// Once, and again while fewer than ten failures have been counted.
bool Screen::CopyToWindow() {
    m_view.previousBitmap = m_drawing.SelectBitmap(m_view.memoryContext, m_view.screenBitmap);
    bool copied = false;
    do {
        copied = m_drawing.CopyPixels(m_view.windowContext, 0, 0, frameWidth, frameHeight,
                                      m_view.memoryContext, 0, 0);
        m_view.lastResult = copied ? 1 : 0;
        if (copied)
            break;
        ShowError("BitBlt to window has failed, error count: %d");
        ++m_view.errorCounter;
    } while (m_view.errorCounter < copyAttempts);
    m_drawing.SelectBitmap(m_view.memoryContext, m_view.previousBitmap);
    return copied;
}

/// The counter goes on: copying is tried for as long as bitmaps can be made.
void Screen::RecreateBitmap() {
    m_drawing.DeleteBitmap(m_view.screenBitmap);
    m_view.screenBitmap = m_drawing.CreateCompatibleBitmap(m_view.windowContext, frameWidth, frameHeight);
    if (m_view.screenBitmap != BitmapHandle::None)
        return;
    ShowError("CreateCompatibleBitmap Failed, error count: %d");
    ++m_view.errorCounter;
}

void Screen::ShowError(const char* format) {
    m_status.ShowInformation(Formatted(format, m_view.errorCounter));
    WaitToTryAgain();
}

void Screen::WaitToTryAgain() {
    const DeviceContext window = m_view.windowContext;
    const BitmapHandle previous = m_view.previousBitmap;
    const std::int32_t errors = m_view.errorCounter;
    m_pump.PumpMessages(retryWaitMs);
    m_view.windowContext = window;
    m_view.previousBitmap = previous;
    m_view.errorCounter = errors;
}

int Screen::LoadPictureFile(const std::filesystem::path& file, const SurfaceRectangle& imageArea,
                            Folders& folders, PictureFiles& pictures, FrameBuffer& frame) {
    const auto picture = ReadStretched(file, folders, pictures);
    ClearRectangle({imageArea.left - clearedMargin, imageArea.top - clearedMargin,
                    imageArea.right + clearedMargin, imageArea.bottom + clearedMargin});

    const DeviceContext window = m_drawing.GetWindowContext(m_handles.main);
    if (const PictureError* error = std::get_if<PictureError>(&picture))
        std::fprintf(stderr, "%s: %s\n", file.string().c_str(), error->reason.c_str());
    else
        m_drawing.DrawPicture(window, imageArea.left, imageArea.top, std::get<Picture>(picture));
    const char* readBackFault = ReadBack(window, std::clamp(imageArea.left, 0, frameWidth / 2),
                                         std::clamp(imageArea.top, 0, frameHeight / 2), frame);
    if (readBackFault != nullptr)
        std::fprintf(stderr, "%s: %s\n", file.string().c_str(), readBackFault);
    m_drawing.ReleaseContext(window);
    return 0;
}

/// The frame takes exactly what the window shows. Returns why it could not and stays as it was, or null.
const char* Screen::ReadBack(DeviceContext window, int left, int top, FrameBuffer& frame) {
    const DeviceContext memory = m_drawing.CreateCompatibleContext(window);
    if (memory == DeviceContext::None)
        return "no memory context to read the window back with";
    const char* fault = CopyThroughBitmap(window, memory, left, top, frame);
    m_drawing.DeleteContext(memory);
    return fault;
}

const char* Screen::CopyThroughBitmap(DeviceContext window, DeviceContext memory, int left, int top,
                                      FrameBuffer& frame) {
    const BitmapHandle bitmap = m_drawing.CreateCompatibleBitmap(window, frameWidth, frameHeight);
    if (bitmap == BitmapHandle::None)
        return "no bitmap to read the window back with";
    const BitmapHandle previous = m_drawing.SelectBitmap(memory, bitmap);
    const bool copied = m_drawing.CopyPixels(memory, 0, 0, frameWidth, frameHeight, window, left, top);
    m_drawing.SelectBitmap(memory, previous);
    const char* fault = nullptr;
    if (!copied)
        fault = "the window's pixels could not be copied";
    else if (m_drawing.GetBitmapRows(window, bitmap, frame.Data(), m_view.header) == 0)
        fault = "the pixels copied from the window could not be read";
    m_drawing.DeleteBitmap(bitmap);
    return fault;
}

void Screen::ClearRectangle(const SurfaceRectangle& area) {
    const DeviceContext window = m_drawing.GetWindowContext(m_handles.main);
    m_drawing.FillArea(window, area, white);
    m_drawing.ReleaseContext(window);
}

void Screen::DrawScaleBar(DeviceContext context) {
    if (DrawingSurface* surface = m_drawing.Surface(context); surface != nullptr) {
        surface->DrawFrame(scaleBar, 1, pureBlue); // two rows high: there is no inside to fill
        surface->DrawText("100 um", scaleBarLabel, TextAlignment::Centre, pureBlue);
    }
    m_drawing.SelectBitmap(context, m_view.previousBitmap);
}

} // namespace tessaro
