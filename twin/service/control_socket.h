#pragma once

#include <functional>
#include <string>
#include <string_view>

// The library's own types.
typedef struct _GSocketService GSocketService;
typedef struct _GSocketConnection GSocketConnection;

namespace tessaro {

/// A local socket that takes lines from any number of clients at a time and answers each with a line. Works
/// within the main loop of the calling thread.
class ControlSocket {
public:
    using Answer = std::function<std::string(std::string_view line)>;

    /// Makes the socket file; one that nobody listens to any more is replaced. Throws std::runtime_error when
    /// it cannot be made, for instance because another process listens there.
    ControlSocket(std::string path, Answer answer);
    ControlSocket(const ControlSocket&) = delete;
    ControlSocket& operator=(const ControlSocket&) = delete;
    ~ControlSocket(); // removes the file

private:
    static int OnClient(GSocketService* service, GSocketConnection* connection, void* source, void* self);

    std::string m_path;
    Answer m_answer;
    GSocketService* m_service;
};

} // namespace tessaro
