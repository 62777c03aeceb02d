#pragma once

#include <cstddef>

namespace tessaro {

// A test program that uses these has its operator new replaced.

/// Blocks that the whole program has asked for so far, but for those asked for without throwing.
extern std::size_t blocksTaken;

/// While it is not 0, blocks of exactly so many bytes are not to be had.
extern std::size_t refusedBlock;

/// The same for what is asked for without throwing only.
extern std::size_t refusedNothrowBlock;

} // namespace tessaro
