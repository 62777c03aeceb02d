#include "platform/posix/standard_streams.h"

#include <cstdlib>
#include <fcntl.h>
#include <string_view>
#include <sys/ioctl.h>
#include <sys/stat.h>
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

bool OutputIsTerminal() {
    const char* const kind = std::getenv("TERM");
    return isatty(STDOUT_FILENO) == 1 && (kind == nullptr || std::string_view(kind) != "dumb");
}

int TerminalColumns(std::FILE* file) {
    constexpr int usual = 80;
    winsize size = {};
    const bool told = ioctl(fileno(file), TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    return told ? static_cast<int>(size.ws_col) : usual;
}

bool IsStandardOutput(const std::string& file) {
    struct stat output = {};
    struct stat other = {};
    struct stat nowhere = {};
    if (fstat(STDOUT_FILENO, &output) != 0 || stat(file.c_str(), &other) != 0 ||
        output.st_dev != other.st_dev || output.st_ino != other.st_ino)
        return false;
    return stat("/dev/null", &nowhere) != 0 || output.st_rdev != nowhere.st_rdev || !S_ISCHR(output.st_mode);
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
