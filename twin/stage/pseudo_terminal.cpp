#include "twin/stage/pseudo_terminal.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <stdexcept>
#include <sys/epoll.h>
#include <termios.h>
#include <unistd.h>

namespace tessaro {
namespace {

bool MakeRaw(int terminal) {
    termios settings = {};
    if (tcgetattr(terminal, &settings) != 0)
        return false;
    cfmakeraw(&settings);
    settings.c_cflag |= CREAD | CLOCAL;
    return cfsetspeed(&settings, B9600) == 0 && tcsetattr(terminal, TCSANOW, &settings) == 0;
}

} // namespace

PseudoTerminal::PseudoTerminal() {
    Open();
    if (m_events != -1 && Renew())
        return;
    const std::string reason = std::strerror(errno);
    Close();
    throw std::runtime_error("cannot make a line for the stage: " + reason);
}

PseudoTerminal::~PseudoTerminal() {
    Close();
}

void PseudoTerminal::Open() {
    m_master = posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (m_master == -1 || grantpt(m_master) != 0 || unlockpt(m_master) != 0)
        return;
    m_name = ptsname(m_master);
    // Edges only: as long as nobody has the line open, its state is "hung up" all the time.
    m_events = epoll_create1(EPOLL_CLOEXEC);
    epoll_event event = {};
    event.events = EPOLLIN | EPOLLET;
    if (m_events != -1 && epoll_ctl(m_events, EPOLL_CTL_ADD, m_master, &event) != 0) {
        close(m_events);
        m_events = -1;
    }
}

void PseudoTerminal::Close() {
    for (const int file : {m_events, m_master})
        if (file != -1)
            close(file);
}

bool PseudoTerminal::TakeEvent() const {
    epoll_event event = {};
    return epoll_wait(m_events, &event, 1, 0) == 1;
}

bool PseudoTerminal::IsOpened() const {
    pollfd state = {.fd = m_master, .events = 0, .revents = 0};
    return poll(&state, 1, 0) == 0 || (state.revents & POLLHUP) == 0;
}

std::string PseudoTerminal::Read(std::size_t most) const {
    std::string bytes(most, '\0');
    const ssize_t count = read(m_master, bytes.data(), bytes.size());
    bytes.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
    return bytes;
}

std::string PseudoTerminal::ReadAll() const {
    constexpr std::size_t atATime = 4096;
    std::string all;
    for (std::string bytes = Read(atATime); !bytes.empty(); bytes = Read(atATime))
        all += bytes;
    return all;
}

void PseudoTerminal::Write(std::string_view bytes) const {
    while (!bytes.empty() && IsOpened()) {
        const ssize_t count = write(m_master, bytes.data(), bytes.size());
        if (count <= 0)
            return;
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
}

bool PseudoTerminal::Renew() const {
    const int terminal = open(m_name.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (terminal == -1)
        return false;
    const bool done = tcflush(terminal, TCIFLUSH) == 0 && MakeRaw(terminal);
    close(terminal);
    return done;
}

} // namespace tessaro
