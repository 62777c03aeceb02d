#pragma once

#include <cstdio>
#include <optional>

namespace tessaro {

/// To be called before any file is opened. Standard streams that the caller closed ("2>&-") are taken up
/// again, by what can neither be read nor written: otherwise the first files opened would get their numbers,
/// and error messages would land in the results.
void OccupyClosedStreams();

/// The width of the terminal that standard output goes to; nothing where it goes to none.
std::optional<int> TerminalColumns();

/// Where standard output goes to from here on; what is written to standard output itself is lost. Null when
/// the system does not let it: then nothing has changed.
std::FILE* SetStandardOutputAside();

} // namespace tessaro
