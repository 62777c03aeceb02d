#pragma once

#include <array>
#include <cerrno>
#include <cstddef>
#include <fcntl.h>
#include <poll.h>
#include <string>
#include <unistd.h>

namespace tessaro {

/// A program that has the stage's line open, without any of our own code.
class StageHost {
public:
    explicit StageHost(const std::string& path)
        : m_file(open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC)) {}
    StageHost(const StageHost&) = delete;
    StageHost& operator=(const StageHost&) = delete;
    ~StageHost() { close(m_file); }

    int File() const { return m_file; }

    /// With its NUL.
    bool Send(const std::string& command) const {
        return write(m_file, command.c_str(), command.size() + 1) == static_cast<ssize_t>(command.size() + 1);
    }

    /// All that there is to read now.
    std::string Read() const {
        std::array<char, 5000> bytes = {};
        std::string all;
        for (ssize_t count = read(m_file, bytes.data(), bytes.size()); count > 0;
             count = read(m_file, bytes.data(), bytes.size()))
            all.append(bytes.data(), static_cast<std::size_t>(count));
        return all;
    }

    /// The next reply without its NUL; what came of it when nothing more comes for so long.
    std::string Receive(int limitMs = 20'000) const {
        std::string reply;
        pollfd state = {.fd = m_file, .events = POLLIN, .revents = 0};
        char byte = 0;
        while (poll(&state, 1, limitMs) == 1 && read(m_file, &byte, 1) == 1 && byte != '\0')
            reply += byte;
        return reply;
    }

    /// Reads and forgets what comes, until nothing comes for so long.
    void ReadUntilSilence(int quietMs = 100) const {
        pollfd state = {.fd = m_file, .events = POLLIN, .revents = 0};
        while (poll(&state, 1, quietMs) == 1 && !Read().empty()) {
        }
    }

    std::string Ask(const std::string& command) const { return Send(command) ? Receive() : std::string(); }

    bool IsHungUpOn() const {
        char byte = 0;
        const ssize_t count = read(m_file, &byte, 1);
        return count == 0 || (count == -1 && errno == EIO);
    }

private:
    int m_file;
};

} // namespace tessaro
