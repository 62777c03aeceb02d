#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace tessaro {

/// A local socket that takes lines from several clients at a time and answers each with a line. Works within
/// the main loop of the calling thread and never blocks it: a client that sends a line of more than 1000
/// bytes, or does not fetch its answers, is let go, and so is one more than 16.
class ControlSocket {
public:
    /// The line comes without its end, "\n" or "\r\n".
    using Answer = std::function<std::string(std::string_view line)>;

    /// Makes the socket file; one that nobody listens to any more is replaced. Throws std::runtime_error when
    /// it cannot be made, for instance because another process listens there.
    ControlSocket(std::string path, Answer answer);
    ControlSocket(const ControlSocket&) = delete;
    ControlSocket& operator=(const ControlSocket&) = delete;
    ~ControlSocket(); // removes the file and lets all clients go

private:
    class Service;
    std::unique_ptr<Service> m_service;
};

} // namespace tessaro
