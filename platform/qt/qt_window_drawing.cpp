#include "platform/qt/qt_window_drawing.h"

#include "platform/qt/qt_drawing_surface.h"
#include "platform/qt/qt_window_table.h"

#include <QWidget>

#include <algorithm>
#include <map>
#include <new>

namespace tessaro {
namespace {

constexpr std::size_t bytesInPixel = 4;

/// Passes drawing on, and remembers that there was any.
class WatchedSurface : public DrawingSurface {
public:
    WatchedSurface(Picture& picture, bool& drawn) : m_surface(picture), m_drawn(drawn) {}

    void SetPixel(int x, int y, Colour colour) override {
        m_drawn = true;
        m_surface.SetPixel(x, y, colour);
    }
    void DrawFrame(const SurfaceRectangle& corners, int penWidth, Colour colour) override {
        m_drawn = true;
        m_surface.DrawFrame(corners, penWidth, colour);
    }
    void DrawText(std::string_view text, const SurfaceRectangle& area, TextAlignment alignment,
                  Colour colour) override {
        m_drawn = true;
        m_surface.DrawText(text, area, alignment, colour);
    }

private:
    QtDrawingSurface m_surface;
    bool& m_drawn;
};

struct Context {
    WindowHandle window = WindowHandle::None; // None: in memory
    BitmapHandle selected = BitmapHandle::None;
    std::unique_ptr<WatchedSurface> surface;
    bool drawn = false;
};

bool Describes(const BitmapHeader& header, const Picture& picture) {
    return header.width == picture.width && header.height == picture.height && header.bitsPerPixel == 32;
}

} // namespace

struct QtWindowDrawing::State {
    explicit State(QtWindowTable& table) : windows(table) {}

    Context* Find(DeviceContext handle) {
        const auto found = contexts.find(handle);
        return found != contexts.end() ? &found->second : nullptr;
    }

    Picture* Find(BitmapHandle handle) {
        const auto found = bitmaps.find(handle);
        return found != bitmaps.end() ? &found->second : nullptr;
    }

    /// What the context draws on; null when its window is gone, or nothing is selected into it.
    Picture* Pixels(const Context* context) {
        if (context == nullptr)
            return nullptr;
        if (context->window == WindowHandle::None)
            return Find(context->selected);
        const QtWindowTable::Entry* entry = windows.Find(context->window);
        return entry != nullptr ? entry->pixels : nullptr;
    }

    DeviceContext Add(Context context) {
        const auto handle = static_cast<DeviceContext>(++last);
        contexts.emplace(handle, std::move(context));
        return handle;
    }

    QtWindowTable& windows;
    std::map<DeviceContext, Context> contexts;
    std::map<BitmapHandle, Picture> bitmaps;
    std::uint64_t last = 0;
};

QtWindowDrawing::QtWindowDrawing(QtWindowTable& windows) : m_state(std::make_unique<State>(windows)) {}

QtWindowDrawing::~QtWindowDrawing() = default;

DeviceContext QtWindowDrawing::GetWindowContext(WindowHandle window) {
    const QtWindowTable::Entry* entry = m_state->windows.Find(window);
    if (entry == nullptr || entry->pixels == nullptr)
        return DeviceContext::None;
    Context context;
    context.window = window;
    return m_state->Add(std::move(context));
}

/// What was drawn shows now, even while no message is dispatched.
void QtWindowDrawing::ReleaseContext(DeviceContext context) {
    const auto found = m_state->contexts.find(context);
    if (found == m_state->contexts.end() || found->second.window == WindowHandle::None)
        return;
    const QtWindowTable::Entry* entry = m_state->windows.Find(found->second.window);
    const bool drawn = found->second.drawn;
    m_state->contexts.erase(found);
    if (drawn && entry != nullptr)
        entry->client->repaint();
}

BitmapHandle QtWindowDrawing::CreateCompatibleBitmap(DeviceContext context, int width, int height) {
    if (m_state->Find(context) == nullptr || width <= 0 || height <= 0)
        return BitmapHandle::None;
    const auto handle = static_cast<BitmapHandle>(++m_state->last);
    try {
        m_state->bitmaps.emplace(handle, Picture(width, height));
    } catch (const std::bad_alloc&) {
        return BitmapHandle::None;
    }
    return handle;
}

bool QtWindowDrawing::DescribeBitmap(BitmapHandle bitmap, BitmapDescription& description) {
    const Picture* picture = m_state->Find(bitmap);
    if (picture == nullptr)
        return false;
    description = {picture->width, picture->height, picture->width * static_cast<std::int32_t>(bytesInPixel),
                   32};
    return true;
}

void QtWindowDrawing::DeleteBitmap(BitmapHandle bitmap) {
    m_state->bitmaps.erase(bitmap);
}

DeviceContext QtWindowDrawing::CreateCompatibleContext(DeviceContext context) {
    return m_state->Find(context) != nullptr ? m_state->Add({}) : DeviceContext::None;
}

void QtWindowDrawing::DeleteContext(DeviceContext context) {
    m_state->contexts.erase(context);
}

BitmapHandle QtWindowDrawing::SelectBitmap(DeviceContext context, BitmapHandle bitmap) {
    Context* found = m_state->Find(context);
    if (found == nullptr)
        return BitmapHandle::None;
    found->surface.reset();
    return std::exchange(found->selected, bitmap);
}

int QtWindowDrawing::SetBitmapRows(DeviceContext context, BitmapHandle bitmap, const std::uint8_t* pixels,
                                   const BitmapHeader& header) {
    Picture* picture = m_state->Find(bitmap);
    if (m_state->Find(context) == nullptr || picture == nullptr || !Describes(header, *picture))
        return 0;
    const std::size_t rowBytes = static_cast<std::size_t>(picture->width) * bytesInPixel;
    for (int y = 0; y < picture->height; ++y)
        std::copy_n(pixels + static_cast<std::size_t>(picture->height - 1 - y) * rowBytes, rowBytes,
                    picture->Pixel(0, y));
    return picture->height;
}

int QtWindowDrawing::GetBitmapRows(DeviceContext context, BitmapHandle bitmap, std::uint8_t* pixels,
                                   const BitmapHeader& header) {
    const Picture* picture = m_state->Find(bitmap);
    if (m_state->Find(context) == nullptr || picture == nullptr || !Describes(header, *picture))
        return 0;
    const std::size_t rowBytes = static_cast<std::size_t>(picture->width) * bytesInPixel;
    for (int y = 0; y < picture->height; ++y)
        std::copy_n(picture->Pixel(0, y), rowBytes,
                    pixels + static_cast<std::size_t>(picture->height - 1 - y) * rowBytes);
    return picture->height;
}

bool QtWindowDrawing::CopyPixels(DeviceContext target, int x, int y, int width, int height,
                                 DeviceContext source, int sourceX, int sourceY) {
    Context* targetContext = m_state->Find(target);
    Picture* to = m_state->Pixels(targetContext);
    const Picture* from = m_state->Pixels(m_state->Find(source));
    if (to == nullptr || from == nullptr)
        return false;
    // The area that both have.
    const int skipX = std::max({0, -x, -sourceX});
    const int skipY = std::max({0, -y, -sourceY});
    const int copied = std::min({width, to->width - x, from->width - sourceX}) - skipX;
    const int rows = std::min({height, to->height - y, from->height - sourceY});
    for (int row = skipY; copied > 0 && row < rows; ++row)
        std::copy_n(from->Pixel(sourceX + skipX, sourceY + row),
                    static_cast<std::size_t>(copied) * bytesInPixel, to->Pixel(x + skipX, y + row));
    targetContext->drawn = true;
    return true;
}

void QtWindowDrawing::FillArea(DeviceContext context, const SurfaceRectangle& area, Colour colour) {
    Context* found = m_state->Find(context);
    Picture* picture = m_state->Pixels(found);
    if (picture == nullptr)
        return;
    const int right = std::min(area.right, picture->width);
    const int bottom = std::min(area.bottom, picture->height);
    QtDrawingSurface surface(*picture);
    for (int y = std::max(area.top, 0); y < bottom; ++y)
        for (int x = std::max(area.left, 0); x < right; ++x)
            surface.SetPixel(x, y, colour);
    found->drawn = true;
}

void QtWindowDrawing::DrawPicture(DeviceContext context, int x, int y, const Picture& picture) {
    Context* found = m_state->Find(context);
    Picture* target = m_state->Pixels(found);
    if (target == nullptr)
        return;
    const int left = std::max(0, -x);
    const int columns = std::min(picture.width, target->width - x) - left;
    const int rows = std::min(picture.height, target->height - y);
    for (int row = std::max(0, -y); columns > 0 && row < rows; ++row)
        std::copy_n(picture.Pixel(left, row), static_cast<std::size_t>(columns) * bytesInPixel,
                    target->Pixel(x + left, y + row));
    found->drawn = true;
}

DrawingSurface* QtWindowDrawing::Surface(DeviceContext context) {
    Context* found = m_state->Find(context);
    Picture* picture = m_state->Pixels(found);
    if (picture == nullptr)
        return nullptr;
    if (found->surface == nullptr)
        found->surface = std::make_unique<WatchedSurface>(*picture, found->drawn);
    return found->surface.get();
}

Picture QtWindowDrawing::BitmapPicture(BitmapHandle bitmap) {
    const Picture* picture = m_state->Find(bitmap);
    return picture != nullptr ? *picture : Picture();
}

} // namespace tessaro
