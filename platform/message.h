#pragma once

#include <cstdint>

namespace tessaro {

/// A window or dialog of the program. A handle is never used again after its window is gone.
enum class WindowHandle : std::uint64_t { None = 0 };

enum class MessageKind {
    Create,            // sent while the window is being made
    Close,             // the operator wants to close the window; by itself the platform destroys it
    Destroy,           // sent when the window goes away, before its dialogs do
    Paint,             // the window has become visible; it restores by itself what was drawn on it
    KeyDown,           // parameter: virtual key code; a key that is held comes again and again
    Command,           // parameter: menu or control id in the low 16 bits
    Timer,             // parameter: timer id
    MouseMove,         // position
    LeftButtonPress,   // position; in the client area, which buttons belong to and menus and frames do not
    LeftButtonRelease, // position
    Other              // something that only the platform understands
};

/// What the operator or a timer wants of a window. Between being taken and being dispatched it can be looked
/// at, and kept from its window by not dispatching it.
struct Message {
    WindowHandle window = WindowHandle::None;
    MessageKind kind = MessageKind::Other;
    std::uint32_t parameter = 0;
    std::uint32_t position = 0; // client pixels: x in the low, y in the high 16 bits, both signed
    std::uint64_t token = 0;    // the platform's own
};

constexpr std::uint32_t LowWord(std::uint32_t value) {
    return value & 0xFFFFU;
}

constexpr std::uint32_t PackPosition(int x, int y) {
    return (static_cast<std::uint32_t>(x) & 0xFFFFU) | (static_cast<std::uint32_t>(y) << 16U);
}

constexpr int PositionX(std::uint32_t position) {
    return static_cast<std::int16_t>(position & 0xFFFFU);
}

constexpr int PositionY(std::uint32_t position) {
    return static_cast<std::int16_t>(position >> 16U);
}

/// Virtual key codes of KeyDown; other keys have other codes.
namespace key {
inline constexpr std::uint32_t enter = 13;
inline constexpr std::uint32_t pageUp = 33;
inline constexpr std::uint32_t pageDown = 34;
inline constexpr std::uint32_t left = 37;
inline constexpr std::uint32_t up = 38;
inline constexpr std::uint32_t right = 39;
inline constexpr std::uint32_t down = 40;
} // namespace key

} // namespace tessaro
