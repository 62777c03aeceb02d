#pragma once

#include "platform/window_drawing.h"

#include <memory>

namespace tessaro {

class QtWindowTable;

/// Drawing on the pixels that windows show, and on bitmaps in memory.
class QtWindowDrawing : public WindowDrawing {
public:
    explicit QtWindowDrawing(QtWindowTable& windows);
    ~QtWindowDrawing() override;
    QtWindowDrawing(const QtWindowDrawing&) = delete;
    QtWindowDrawing& operator=(const QtWindowDrawing&) = delete;

    DeviceContext GetWindowContext(WindowHandle window) override;
    void ReleaseContext(DeviceContext context) override;
    BitmapHandle CreateCompatibleBitmap(DeviceContext context, int width, int height) override;
    bool DescribeBitmap(BitmapHandle bitmap, BitmapDescription& description) override;
    void DeleteBitmap(BitmapHandle bitmap) override;
    DeviceContext CreateCompatibleContext(DeviceContext context) override;
    void DeleteContext(DeviceContext context) override;
    BitmapHandle SelectBitmap(DeviceContext context, BitmapHandle bitmap) override;
    int SetBitmapRows(DeviceContext context, BitmapHandle bitmap, const std::uint8_t* pixels,
                      const BitmapHeader& header) override;
    int GetBitmapRows(DeviceContext context, BitmapHandle bitmap, std::uint8_t* pixels,
                      const BitmapHeader& header) override;
    bool CopyPixels(DeviceContext target, int x, int y, int width, int height, DeviceContext source,
                    int sourceX, int sourceY) override;
    void FillArea(DeviceContext context, const SurfaceRectangle& area, Colour colour) override;
    void DrawPicture(DeviceContext context, int x, int y, const Picture& picture) override;
    DrawingSurface* Surface(DeviceContext context) override;
    Picture BitmapPicture(BitmapHandle bitmap) override;

private:
    struct State;
    std::unique_ptr<State> m_state;
};

} // namespace tessaro
