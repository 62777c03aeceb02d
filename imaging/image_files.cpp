#include "imaging/image_files.h"

#include "app/number_text.h"

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <new>
#include <variant>
#include <vector>

namespace tessaro {
namespace {

constexpr int saveAttempts = 10;
constexpr std::int32_t micrometresPerIndex = 10;
constexpr std::string_view imageType = "image/jpeg";
constexpr std::string_view imageExtension = "jpg";

} // namespace

int EncoderClassId(PictureFiles& pictures, std::string_view mimeType, std::string& id) {
    try {
        const std::vector<std::string> types = pictures.EncoderTypes();
        if (types.empty())
            return -1;
        const auto found = std::find(types.begin(), types.end(), mimeType);
        if (found == types.end())
            return 0;
        id = *found;
        return static_cast<int>(std::distance(types.begin(), found));
    } catch (const std::bad_alloc&) {
        return -1;
    }
}

void ImageFiles::MakeSessionFolders(int newSession) {
    if (newSession != 0 || m_folders.sessionMade == 0) {
        const LocalTime now = m_clock.Now();
        m_folders.sessionName =
            Formatted("%02d%02d%02d_%02d-%02d", now.year - 2000, now.month, now.day, now.hour, now.minute);
    }
    m_folders.plainSession = m_folders.working / m_folders.sessionName;
    m_files.CreateFolder(m_folders.plainSession);
    m_folders.detailRoot = m_folders.desktop / "Image_Detail";
    m_files.CreateFolder(m_folders.detailRoot);
    m_folders.detailSession = m_folders.detailRoot / m_folders.sessionName;
    m_files.CreateFolder(m_folders.detailSession);
    m_folders.sessionMade = 1;
}

int ImageFiles::SavePlainImage(const FrameBuffer& frame, const GrainFindings& findings) {
    if (!FillScreenBitmap(frame)) {
        if (m_listener != nullptr)
            m_listener->ImageNotSaved(NextFile(m_folders.plainSession, ""), "its pixels could not be set");
        return 0;
    }
    ScreenView& view = m_screen.View();
    view.previousBitmap = m_drawing.SelectBitmap(view.memoryContext, view.screenBitmap);
    FrameSingleLayers(findings);
    m_screen.DrawScaleBar(view.memoryContext);
    SaveScreenBitmap(m_folders.plainSession, "");
    m_drawing.ReleaseContext(view.windowContext);
    return 1;
}

/// True: the frame is in the bitmap, and the window's context is still held.
bool ImageFiles::FillScreenBitmap(const FrameBuffer& frame) {
    ScreenView& view = m_screen.View();
    view.errorCounter = 0;
    for (int attempt = 0; attempt < saveAttempts; ++attempt) {
        view.windowContext = m_drawing.GetWindowContext(m_windows.main);
        if (m_screen.SetScreenRows(frame.Data()))
            return true;
        m_status.ShowInformation(
            Formatted("SetDIBits has failed in SaveImage, error count: %d", view.errorCounter));
        ++view.errorCounter;
        m_screen.WaitToTryAgain();
        m_drawing.ReleaseContext(view.windowContext);
    }
    m_drawing.ReleaseContext(view.windowContext); // once more than it was got, without harm
    return false;
}

void ImageFiles::FrameSingleLayers(const GrainFindings& findings) {
    DrawingSurface* surface = m_drawing.Surface(m_screen.View().memoryContext);
    if (surface == nullptr)
        return;
    const GrainEdges& edges = findings.edges;
    for (std::size_t g = 0; g < static_cast<std::size_t>(findings.groupCount); ++g) {
        if (findings.singleLayer[g] == 1)
            surface->DrawFrame({edges.EdgeLeft[g].x, WindowRow(edges.EdgeMinRow[g].y), edges.EdgeRight[g].x,
                                WindowRow(edges.EdgeMaxRow[g].y)},
                               1, pureRed);
    }
}

int ImageFiles::SaveDetailImage() {
    ScreenView& view = m_screen.View();
    view.windowContext = m_drawing.GetWindowContext(m_windows.main);
    view.previousBitmap = m_drawing.SelectBitmap(view.memoryContext, view.screenBitmap);
    m_drawing.CopyPixels(view.memoryContext, 0, 0, frameWidth, frameHeight, view.windowContext, 0, 0);
    m_drawing.ReleaseContext(view.windowContext);
    SaveScreenBitmap(m_folders.detailSession, "detail");
    m_drawing.SelectBitmap(view.memoryContext, view.previousBitmap);
    return 1;
}

/// Whether the file could be saved is not looked at by those who ask for it: a scan goes on without its
/// images.
void ImageFiles::SaveScreenBitmap(const std::filesystem::path& folder, std::string_view ending) {
    ScreenView& view = m_screen.View();
    EncoderClassId(m_pictures, imageType, view.encoderId);
    view.lastFileName = NextFile(folder, ending);

    const auto encoded = m_pictures.Encode(m_drawing.BitmapPicture(view.screenBitmap), view.encoderId);
    std::string reason;
    if (const PictureError* encodeError = std::get_if<PictureError>(&encoded))
        reason = encodeError->reason;
    else if (const auto error =
                 m_files.Create(view.lastFileName, std::get<std::vector<std::uint8_t>>(encoded)))
        reason = error->reason;
    if (!reason.empty())
        std::fprintf(stderr, "%s: %s\n", view.lastFileName.string().c_str(), reason.c_str());
    Tell(view.lastFileName, reason);
}

/// No reason: it was saved.
void ImageFiles::Tell(const std::filesystem::path& file, const std::string& reason) {
    if (m_listener == nullptr)
        return;
    if (reason.empty())
        m_listener->ImageSaved(file);
    else
        m_listener->ImageNotSaved(file, reason);
}

std::filesystem::path ImageFiles::NextFile(const std::filesystem::path& folder, std::string_view ending) {
    return UniqueFileName(folder / (PositionName() + std::string(ending)), imageExtension);
}

/// Positions in tens of um, both divisions toward zero.
std::string ImageFiles::PositionName() const {
    return Formatted("(%d,%d)", TruncatedToInt32(m_stage.position[0]) / micrometresPerIndex,
                     TruncatedToInt32(m_stage.position[1]) / micrometresPerIndex);
}

std::filesystem::path ImageFiles::UniqueFileName(const std::filesystem::path& base,
                                                 std::string_view extension) {
    const auto named = [&](const std::string& suffix) {
        std::filesystem::path name = base;
        name += suffix + "." + std::string(extension);
        return name;
    };
    std::filesystem::path candidate = named("");
    for (int counter = 0; FileExists(candidate); ++counter)
        candidate = named(Formatted("_%d", counter));
    return candidate;
}

bool ImageFiles::FileExists(const std::filesystem::path& file) {
    return m_files.CanRead(file);
}

} // namespace tessaro
