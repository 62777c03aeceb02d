#pragma once

namespace tessaro {

/// To be called before any file is opened. Standard streams that the caller closed ("2>&-") are taken up
/// again, by what can neither be read nor written: otherwise the first files opened would get their numbers,
/// and error messages would land in the results.
void OccupyClosedStreams();

} // namespace tessaro
