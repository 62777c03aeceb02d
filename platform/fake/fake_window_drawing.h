#pragma once

#include "platform/fake/recording_surface.h"
#include "platform/window_drawing.h"

#include <algorithm>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace tessaro {

/// Windows and bitmaps as pictures in memory. Pixels are copied for real; frames, text and single pixels are
/// recorded. Each operation fails as often as the test says.
class FakeWindowDrawing : public WindowDrawing {
public:
    static constexpr int forEver = 1'000'000;

    DeviceContext GetWindowContext(WindowHandle window) override {
        if (!windows.contains(window))
            return DeviceContext::None;
        ++contextsHeld;
        const DeviceContext handle = NextContext();
        contexts[handle] = {window, BitmapHandle::None};
        return handle;
    }

    void ReleaseContext(DeviceContext context) override {
        if (contexts.erase(context) > 0)
            --contextsHeld;
    }

    BitmapHandle CreateCompatibleBitmap(DeviceContext context, int width, int height) override {
        if (onCall)
            onCall("bitmap");
        if (Fails(failBitmap) || !contexts.contains(context) || width <= 0 || height <= 0)
            return BitmapHandle::None;
        const auto handle = static_cast<BitmapHandle>(++m_last);
        bitmaps.emplace(handle, Picture(width, height));
        ++bitmapsMade;
        return handle;
    }

    bool DescribeBitmap(BitmapHandle bitmap, BitmapDescription& description) override {
        if (!bitmaps.contains(bitmap))
            return false;
        const Picture& picture = bitmaps.at(bitmap);
        description = {picture.width, picture.height, picture.width * 4, 32};
        return true;
    }

    void DeleteBitmap(BitmapHandle bitmap) override { bitmaps.erase(bitmap); }

    DeviceContext CreateCompatibleContext(DeviceContext context) override {
        if (onCall)
            onCall("memory context");
        if (Fails(failContext) || !contexts.contains(context))
            return DeviceContext::None;
        const DeviceContext handle = NextContext();
        contexts[handle] = {};
        return handle;
    }

    void DeleteContext(DeviceContext context) override { contexts.erase(context); }

    BitmapHandle SelectBitmap(DeviceContext context, BitmapHandle bitmap) override {
        if (!contexts.contains(context))
            return BitmapHandle::None;
        return std::exchange(contexts[context].selected, bitmap);
    }

    int SetBitmapRows(DeviceContext context, BitmapHandle bitmap, const std::uint8_t* pixels,
                      const BitmapHeader& header) override {
        ++setRowsCalls;
        if (Fails(failSetRows) || !contexts.contains(context) || !bitmaps.contains(bitmap))
            return 0;
        Picture& picture = bitmaps.at(bitmap);
        if (!Describes(header, picture))
            return 0;
        for (int y = 0; y < picture.height; ++y)
            std::copy_n(pixels + RowOffset(picture, picture.height - 1 - y), RowOffset(picture, 1),
                        picture.Pixel(0, y));
        return picture.height;
    }

    int GetBitmapRows(DeviceContext context, BitmapHandle bitmap, std::uint8_t* pixels,
                      const BitmapHeader& header) override {
        if (Fails(failGetRows) || !contexts.contains(context) || !bitmaps.contains(bitmap))
            return 0;
        const Picture& picture = bitmaps.at(bitmap);
        if (!Describes(header, picture))
            return 0;
        for (int y = 0; y < picture.height; ++y)
            std::copy_n(picture.Pixel(0, y), RowOffset(picture, 1),
                        pixels + RowOffset(picture, picture.height - 1 - y));
        return picture.height;
    }

    bool CopyPixels(DeviceContext target, int x, int y, int width, int height, DeviceContext source,
                    int sourceX, int sourceY) override {
        ++copyCalls;
        Picture* to = Pixels(target);
        const Picture* from = Pixels(source);
        if (Fails(failCopy) || to == nullptr || from == nullptr)
            return false;
        for (int row = 0; row < height; ++row)
            for (int column = 0; column < width; ++column)
                if (Has(*to, x + column, y + row) && Has(*from, sourceX + column, sourceY + row))
                    std::copy_n(from->Pixel(sourceX + column, sourceY + row), 4,
                                to->Pixel(x + column, y + row));
        return true;
    }

    void FillArea(DeviceContext context, const SurfaceRectangle& area, Colour colour) override {
        filled.push_back(area);
        Picture* picture = Pixels(context);
        for (int y = area.top; picture != nullptr && y < area.bottom; ++y)
            for (int x = area.left; x < area.right; ++x)
                if (Has(*picture, x, y))
                    Store(picture->Pixel(x, y), colour);
    }

    void DrawPicture(DeviceContext context, int x, int y, const Picture& drawn) override {
        Picture* picture = Pixels(context);
        for (int row = 0; picture != nullptr && row < drawn.height; ++row)
            for (int column = 0; column < drawn.width; ++column)
                if (Has(*picture, x + column, y + row))
                    std::copy_n(drawn.Pixel(column, row), 4, picture->Pixel(x + column, y + row));
    }

    DrawingSurface* Surface(DeviceContext context) override {
        if (Pixels(context) == nullptr)
            return nullptr;
        return contexts[context].window != WindowHandle::None ? &windowSurface : &memorySurface;
    }

    Picture BitmapPicture(BitmapHandle bitmap) override {
        return bitmaps.contains(bitmap) ? bitmaps.at(bitmap) : Picture();
    }

    struct Context {
        WindowHandle window = WindowHandle::None;
        BitmapHandle selected = BitmapHandle::None;
    };

    std::map<WindowHandle, Picture> windows; // what they show; a window that is not here is gone
    std::map<DeviceContext, Context> contexts;
    std::map<BitmapHandle, Picture> bitmaps;
    RecordingSurface windowSurface; // drawn on any window
    RecordingSurface memorySurface; // drawn in any memory context
    std::vector<SurfaceRectangle> filled;
    std::function<void(const std::string&)> onCall; // told what is made
    int failBitmap = 0;                             // the next so many calls fail
    int failContext = 0;
    int failSetRows = 0;
    int failGetRows = 0;
    int failCopy = 0;
    int bitmapsMade = 0;
    int setRowsCalls = 0;
    int copyCalls = 0;
    int contextsHeld = 0; // of windows, not released yet

private:
    static bool Fails(int& remaining) {
        if (remaining <= 0)
            return false;
        if (remaining != forEver)
            --remaining;
        return true;
    }

    static std::size_t RowOffset(const Picture& picture, int rows) {
        return static_cast<std::size_t>(picture.width) * 4 * static_cast<std::size_t>(rows);
    }

    static bool Describes(const BitmapHeader& header, const Picture& picture) {
        return header.width == picture.width && header.height == picture.height && header.bitsPerPixel == 32;
    }

    static bool Has(const Picture& picture, int x, int y) {
        return x >= 0 && y >= 0 && x < picture.width && y < picture.height;
    }

    static void Store(std::uint8_t* pixel, Colour colour) {
        pixel[0] = colour.blue;
        pixel[1] = colour.green;
        pixel[2] = colour.red;
        pixel[3] = 255;
    }

    DeviceContext NextContext() { return static_cast<DeviceContext>(++m_last); }

    Picture* Pixels(DeviceContext context) {
        const auto found = contexts.find(context);
        if (found == contexts.end())
            return nullptr;
        if (found->second.window == WindowHandle::None) {
            const auto bitmap = bitmaps.find(found->second.selected);
            return bitmap != bitmaps.end() ? &bitmap->second : nullptr;
        }
        const auto window = windows.find(found->second.window);
        return window != windows.end() ? &window->second : nullptr;
    }

    std::uint64_t m_last = 0;
};

} // namespace tessaro
