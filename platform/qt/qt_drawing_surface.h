#pragma once

#include "platform/drawing_surface.h"
#include "platform/picture.h"

#include <cstdint>

namespace tessaro {

/// Draws straight into a picture, which must outlive it and keep its size. Text needs a QtRuntime, or the
/// application object of a program with windows. Several threads may draw at once, each on a picture of its
/// own.
class QtDrawingSurface : public DrawingSurface {
public:
    explicit QtDrawingSurface(Picture& picture);

    void SetPixel(int x, int y, Colour colour) override;
    void DrawFrame(const SurfaceRectangle& corners, int penWidth, Colour colour) override;
    void DrawText(std::string_view text, const SurfaceRectangle& area, TextAlignment alignment,
                  Colour colour) override;

private:
    struct Area; // left, top, right, bottom in 64 bits, so that no corner of a caller overflows

    void DrawOutline(const Area& area, Colour colour);
    void Fill(const Area& area, Colour colour);

    Picture& m_picture;
};

} // namespace tessaro
