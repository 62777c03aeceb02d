#pragma once

#include <cstddef>

namespace tessaro {

/// While it is not 0, blocks of exactly so many bytes are not to be had. A test program that uses it has its
/// operator new replaced.
extern std::size_t refusedBlock;

/// The same for what is asked for without throwing only.
extern std::size_t refusedNothrowBlock;

} // namespace tessaro
