#pragma once

namespace tessaro {

/// From here on the first Ctrl-C (SIGINT), termination signal (SIGTERM) or lost terminal (SIGHUP, unless it
/// is ignored already, as by nohup) is only noted. The second one ends the program as usual, at once.
void HearInterrupts();

/// One was noted.
bool Interrupted();

} // namespace tessaro
