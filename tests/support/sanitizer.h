#pragma once

namespace tessaro {

/// Whether the build has an AddressSanitizer, which makes everything slower and takes memory and address
/// space of its own. The compilers tell in different ways.
#if defined(__SANITIZE_ADDRESS__)
inline constexpr bool addressSanitizer = true;
#elif defined(__has_feature)
inline constexpr bool addressSanitizer = __has_feature(address_sanitizer);
#else
inline constexpr bool addressSanitizer = false;
#endif

} // namespace tessaro
