#pragma once

#include <cstdio>
#include <string>

namespace tessaro {

/// To be called before any file is opened. Standard streams that the caller closed ("2>&-") are taken up
/// again, by what can neither be read nor written: otherwise the first files opened would get their numbers,
/// and error messages would land in the results.
void OccupyClosedStreams();

/// Whether standard output goes to a terminal on which a line can be written over.
bool OutputIsTerminal();

/// The columns of the terminal that the file is, as many as are usual where it does not tell.
int TerminalColumns(std::FILE* file);

/// Whether what is written to this file comes out where standard output does, and comes out at all.
bool IsStandardOutput(const std::string& file);

/// Where standard output goes to from here on; what is written to standard output itself is lost. Null when
/// the system does not let it: then nothing has changed.
std::FILE* SetStandardOutputAside();

} // namespace tessaro
