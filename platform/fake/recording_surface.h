#pragma once

#include "platform/drawing_surface.h"

#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace tessaro {

/// Keeps every drawing call in order, for tests to look at.
class RecordingSurface : public DrawingSurface {
public:
    struct Pixel {
        int x = 0;
        int y = 0;
        Colour colour;
        friend bool operator==(const Pixel&, const Pixel&) = default;
    };
    struct Frame {
        SurfaceRectangle corners;
        int penWidth = 0;
        Colour colour;
        friend bool operator==(const Frame&, const Frame&) = default;
    };
    struct Text {
        std::string text;
        SurfaceRectangle area;
        TextAlignment alignment = TextAlignment::Centre;
        Colour colour;
        friend bool operator==(const Text&, const Text&) = default;
    };
    using Call = std::variant<Pixel, Frame, Text>;

    void SetPixel(int x, int y, Colour colour) override { calls.emplace_back(Pixel{x, y, colour}); }
    void DrawFrame(const SurfaceRectangle& corners, int penWidth, Colour colour) override {
        calls.emplace_back(Frame{corners, penWidth, colour});
    }
    void DrawText(std::string_view text, const SurfaceRectangle& area, TextAlignment alignment,
                  Colour colour) override {
        calls.emplace_back(Text{std::string(text), area, alignment, colour});
    }

    template<typename Kind>
    std::vector<Kind> All() const {
        std::vector<Kind> found;
        for (const Call& call : calls) {
            if (const Kind* match = std::get_if<Kind>(&call))
                found.push_back(*match);
        }
        return found;
    }

    std::vector<Call> calls;
};

} // namespace tessaro
