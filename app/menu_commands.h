#pragma once

#include "app/operations.h"

#include <cstdint>

namespace tessaro {

/// Runs the sequence of operations behind a menu entry. Ids that no entry has do nothing; nor do
/// "Pause/Resume" and "Stop", which only the message pump acts on.
void RunMenuCommand(Operations& operations, std::uint32_t commandId);

} // namespace tessaro
