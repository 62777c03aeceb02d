#pragma once

#include <string>
#include <sys/types.h>

namespace tessaro {

/// A simulated camera on 127.0.0.1, in a process of its own. One at a time.
class ServedCamera {
public:
    static constexpr const char* address = "127.0.0.1";

    ServedCamera() { PlugIn(); }
    ~ServedCamera() { Unplug(); }
    ServedCamera(const ServedCamera&) = delete;
    ServedCamera& operator=(const ServedCamera&) = delete;

    /// A command of camera_server_main.cpp, which has been obeyed at the return.
    void Tell(const std::string& command);

    void PlugIn();
    /// From one moment to the next: what it was sending ends in the middle.
    void Unplug();
    void Freeze();
    void Thaw();

private:
    void WaitForLine(const std::string& line);

    pid_t m_process = -1;
    int m_input = -1;
    int m_output = -1;
};

} // namespace tessaro
