#pragma once

#include "app/number_text.h"
#include "platform/dialogs.h"

#include <cstddef>
#include <cstdint>
#include <optional>

namespace tessaro {

/// How much of a typed number is looked at.
inline constexpr std::size_t numberBytes = 10;
inline constexpr std::size_t longNumberBytes = 50;

/// What is typed into an item, as "%d"; nothing where that is no number.
inline std::optional<std::int32_t> TypedInteger(Dialogs& dialogs, WindowHandle dialog, int controlId,
                                                std::size_t bytes = numberBytes) {
    return ParsedInteger(dialogs.ItemText(dialog, controlId, bytes));
}

/// As "%f".
inline std::optional<float> TypedFloat(Dialogs& dialogs, WindowHandle dialog, int controlId) {
    return ParsedFloat(dialogs.ItemText(dialog, controlId, numberBytes));
}

inline void ShowInteger(Dialogs& dialogs, WindowHandle dialog, int controlId, std::int32_t value) {
    dialogs.SetItemText(dialog, controlId, Formatted("%d", value));
}

} // namespace tessaro
