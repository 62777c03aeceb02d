#pragma once

#include "platform/drawing_surface.h"
#include "platform/message.h"
#include "platform/picture.h"

#include <cstdint>

namespace tessaro {

/// Something that can be drawn on: a window while an operation runs, or a memory context with a bitmap in it.
enum class DeviceContext : std::uint64_t { None = 0 };
enum class BitmapHandle : std::uint64_t { None = 0 };

/// What a bitmap tells of itself.
struct BitmapDescription {
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::int32_t bytesPerRow = 0;
    std::int32_t bitsPerPixel = 0;
};

/// How rows of pixels lie in memory; the fields of a device-independent bitmap's header.
struct BitmapHeader {
    std::uint32_t size = 0;
    std::int32_t width = 0;
    std::int32_t height = 0; // positive: from the bottom up
    std::uint16_t planes = 0;
    std::uint16_t bitsPerPixel = 0;
    std::uint32_t compression = 0;
    std::uint32_t imageSize = 0;
    std::int32_t horizontalResolution = 0;
    std::int32_t verticalResolution = 0;
    std::uint32_t coloursUsed = 0;
    std::uint32_t coloursImportant = 0;
};

/// Drawing on windows and bitmaps. Whatever can fail on a real screen says so here. Pixels in memory are four
/// bytes: blue, green, red, unused. What is drawn on a window shows at the latest when its context is
/// released, and stays: the window restores it by itself.
class WindowDrawing {
public:
    virtual ~WindowDrawing() = default;

    virtual DeviceContext GetWindowContext(WindowHandle window) = 0; // None: no such window
    virtual void ReleaseContext(DeviceContext context) = 0;

    virtual BitmapHandle CreateCompatibleBitmap(DeviceContext context, int width, int height) = 0;
    virtual bool DescribeBitmap(BitmapHandle bitmap, BitmapDescription& description) = 0;
    virtual void DeleteBitmap(BitmapHandle bitmap) = 0;

    virtual DeviceContext CreateCompatibleContext(DeviceContext context) = 0; // in memory
    virtual void DeleteContext(DeviceContext context) = 0;

    /// Puts a bitmap into a memory context, or with None takes it out; returns what was in it.
    virtual BitmapHandle SelectBitmap(DeviceContext context, BitmapHandle bitmap) = 0;

    /// All rows of the bitmap from or to memory laid out as the header says. Returns the rows moved; 0 on
    /// failure, and then no row was.
    virtual int SetBitmapRows(DeviceContext context, BitmapHandle bitmap, const std::uint8_t* pixels,
                              const BitmapHeader& header) = 0;
    virtual int GetBitmapRows(DeviceContext context, BitmapHandle bitmap, std::uint8_t* pixels,
                              const BitmapHeader& header) = 0;

    /// Copies pixels as they are to (x, y) of the target. False on failure.
    virtual bool CopyPixels(DeviceContext target, int x, int y, int width, int height, DeviceContext source,
                            int sourceX, int sourceY) = 0;

    /// Fills left .. right - 1, top .. bottom - 1.
    virtual void FillArea(DeviceContext context, const SurfaceRectangle& area, Colour colour) = 0;

    /// The picture at (x, y), pixel by pixel.
    virtual void DrawPicture(DeviceContext context, int x, int y, const Picture& picture) = 0;

    /// Draws on the context until it is released or deleted, or another bitmap is selected into it. Null:
    /// nothing to draw on.
    virtual DrawingSurface* Surface(DeviceContext context) = 0;

    /// What is on a bitmap, top row first, for saving; empty without such a bitmap.
    virtual Picture BitmapPicture(BitmapHandle bitmap) = 0;
};

} // namespace tessaro
