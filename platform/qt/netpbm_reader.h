#pragma once

#include "platform/picture_files.h"

#include <cstdint>
#include <span>
#include <variant>

namespace tessaro {

/// Reads PBM, PGM and PPM ("P1" to "P6"); a file of several pictures gives the first one.
///
/// Qt's reader is not used: it refuses plain PBM as the Netpbm programs write it (no space between the
/// pixels) and wraps samples above the file's maximum around instead of refusing them.
std::variant<Picture, PictureError> ReadNetpbm(std::span<const std::uint8_t> file);

} // namespace tessaro
