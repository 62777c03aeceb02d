#pragma once

#include <cstdint>
#include <string_view>

namespace tessaro {

struct Colour {
    std::uint8_t red = 0;
    std::uint8_t green = 0;
    std::uint8_t blue = 0;

    friend bool operator==(const Colour&, const Colour&) = default;
};

inline constexpr Colour black{0, 0, 0};
inline constexpr Colour white{255, 255, 255};
inline constexpr Colour pureRed{255, 0, 0};
inline constexpr Colour pureBlue{0, 0, 255};

/// Corners in surface pixels; (0, 0) is the top left of the surface, rows count downwards.
struct SurfaceRectangle {
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;

    friend bool operator==(const SurfaceRectangle&, const SurfaceRectangle&) = default;
};

enum class TextAlignment { Centre, Right, CentredBothWays };

/// What the analysis draws on: the operator's window, or a picture that is going to be saved.
///
/// Nothing here fails and nothing is read back: what lies outside the surface is clipped, so that a result
/// never depends on whether, or where, it is drawn.
class DrawingSurface {
public:
    virtual ~DrawingSurface() = default;

    virtual void SetPixel(int x, int y, Colour colour) = 0;

    /// The outline of a rectangle, its inside untouched. The corners may be given in any order; the outline's
    /// pixels are those of the sorted corners, right column and bottom row excluded. A pen of two pixels adds
    /// the pixels just above and just left of each pixel of that outline.
    virtual void DrawFrame(const SurfaceRectangle& corners, int penWidth, Colour colour) = 0;

    /// One line of UTF-8 text without background, its top at area.top. Right: it ends at area.right; Centre:
    /// its middle lies in the middle between left and right; CentredBothWays: besides, in the middle between
    /// top and bottom. The area places the text and never clips it.
    virtual void DrawText(std::string_view text, const SurfaceRectangle& area, TextAlignment alignment,
                          Colour colour) = 0;
};

} // namespace tessaro
