#include "platform/posix/standard_streams.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace tessaro {

void OccupyClosedStreams() {
    for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream) {
        // The lowest free number is given out, and those below are taken by now. Opened the wrong way round,
        // so that reading and writing go on failing.
        const int way = stream == STDIN_FILENO ? O_WRONLY : O_RDONLY;
        if (fcntl(stream, F_GETFD) == -1 && open("/dev/null", way) == -1)
            return;
    }
}

std::optional<int> TerminalColumns() {
    constexpr int usual = 80;
    if (isatty(STDOUT_FILENO) != 1)
        return std::nullopt;
    winsize size = {};
    const bool told = ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    return told ? static_cast<int>(size.ws_col) : usual;
}

std::FILE* SetStandardOutputAside() {
    std::fflush(stdout);
    const int aside = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    std::FILE* file = aside != -1 && nowhere != -1 ? fdopen(aside, "w") : nullptr;
    if (file != nullptr && dup2(nowhere, STDOUT_FILENO) == -1) {
        std::fclose(file);
        file = nullptr;
    } else if (file == nullptr && aside != -1) {
        close(aside);
    }
    if (nowhere != -1)
        close(nowhere);
    return file;
}

} // namespace tessaro
