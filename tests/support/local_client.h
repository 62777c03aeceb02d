#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace tessaro {

/// A client of a local socket that speaks in lines.
class LocalClient {
public:
    explicit LocalClient(const std::string& path) : m_socket(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        std::copy_n(path.begin(), std::min(path.size(), sizeof(address.sun_path) - 1), address.sun_path);
        m_connected = connect(m_socket, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0;
    }
    LocalClient(const LocalClient&) = delete;
    LocalClient& operator=(const LocalClient&) = delete;
    ~LocalClient() { close(m_socket); }

    bool IsConnected() const { return m_connected; }

    bool Send(const std::string& bytes) {
        return m_connected &&
               send(m_socket, bytes.data(), bytes.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(bytes.size());
    }

    /// The next line without its end; empty when the other side hung up.
    std::string Receive() {
        std::string line;
        char character = 0;
        while (recv(m_socket, &character, 1, 0) == 1 && character != '\n')
            line += character;
        return line;
    }

    std::string Ask(const std::string& line) { return Send(line + "\n") ? Receive() : std::string(); }

private:
    int m_socket;
    bool m_connected = false;
};

} // namespace tessaro
